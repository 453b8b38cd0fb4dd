#pragma once

#include "card/prompts.h"

class QWidget;

namespace pondar::card {

// The card logic's questions and errors as the component's message boxes, modal to a screen.
class WidgetPrompts final : public CardPrompts {
public:
    explicit WidgetPrompts(QWidget* parent);
    bool ask(const QString& question) override;
    bool askDestructive(const QString& question) override;
    void error(const QString& text, const QString& title) override;
    bool askWithDetail(const QString& question, const QString& detail) override;
    bool supervisorApproves() override;

private:
    QWidget* m_parent;
};

} // namespace pondar::card
