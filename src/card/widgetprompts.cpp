#include "card/widgetprompts.h"

#include "card/passwordscreen.h"
#include "shell/messages.h"

namespace pondar::card {

WidgetPrompts::WidgetPrompts(QWidget* parent)
    : m_parent(parent) {}

bool WidgetPrompts::ask(const QString& question) {
    return askYesNo(m_parent, question);
}

void WidgetPrompts::error(const QString& text, const QString& title) {
    showError(m_parent, text, title);
}

bool WidgetPrompts::askWithDetail(const QString& question, const QString& detail) {
    return askYesNo(m_parent, question, detail);
}

bool WidgetPrompts::supervisorApproves() {
    MESC gate(m_parent);
    return gate.exec() == QDialog::Accepted;
}

} // namespace pondar::card
