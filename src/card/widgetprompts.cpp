#include "card/widgetprompts.h"

#include "card/passwordscreen.h"
#include "shell/messages.h"

namespace pondar::card {

WidgetPrompts::WidgetPrompts(QWidget* parent)
    : m_parent(parent) {}

bool WidgetPrompts::ask(const QString& question) {
    return askYesNo(m_parent, question);
}

bool WidgetPrompts::askDestructive(const QString& question) {
    return askYesNo(m_parent, question, Preferred::No);
}

void WidgetPrompts::error(const QString& text, const QString& title) {
    showError(m_parent, text, title);
}

bool WidgetPrompts::askWithDetail(const QString& question, const QString& detail) {
    // Only asked before another member's value would be overwritten: Enter must not do that.
    return askYesNo(m_parent, question, Preferred::No, detail);
}

bool WidgetPrompts::supervisorApproves() {
    MESC gate(m_parent);
    return gate.exec() == QDialog::Accepted;
}

} // namespace pondar::card
