#include "card/widgetprompts.h"

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

} // namespace pondar::card
