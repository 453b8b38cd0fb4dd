#pragma once

#include <QString>

namespace pondar::card {

// How the card logic talks to the operator, so that it needs no widget: screens pass
// WidgetPrompts (card/widgetprompts.h), the balance display a silent one.
class CardPrompts {
public:
    virtual ~CardPrompts();
    // A Yes/No question titled "Question"; true unless the answer was No.
    virtual bool ask(const QString& question) = 0;
    // A question whose Yes destroys something (a card's data): the same box, with No as the
    // answer Enter gives.
    virtual bool askDestructive(const QString& question) { return ask(question); }
    // A critical box with an OK button.
    virtual void error(const QString& text, const QString& title) = 0;
    // The question with particulars shown as the box's detail text.
    virtual bool askWithDetail(const QString& question, const QString& detail) {
        (void)detail;
        return ask(question);
    }
    // The supervisor's password (MESC); with nobody to give it, refused.
    virtual bool supervisorApproves() { return false; }
};

// Shows nothing and consents to nothing: a display that polls the reader must never stop on a
// message box, and with nobody to answer, a question is a No.
class SilentPrompts final : public CardPrompts {
public:
    bool ask(const QString&) override { return false; }
    void error(const QString&, const QString&) override {}
};

} // namespace pondar::card
