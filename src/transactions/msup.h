#pragma once

#include "card/widgetprompts.h"

#include <QDialog>

#include <array>

class QLineEdit;
class QPushButton;

namespace pondar {

struct SessionSettings;
struct SupervisorResult;

// "Supervisor": the supervisor's card tools, reached only past MESC. Blocking and replacing go by
// the member code typed in TXT(0); a void takes the card on the reader. Each action's outcome
// is reported in a "Message" box and the screen stays for the next.
class MSUP final : public QDialog {
    Q_OBJECT

public:
    explicit MSUP(SessionSettings& session, QWidget* parent = nullptr);

    std::array<QLineEdit*, 2> TXT{};    // member code, remark
    std::array<QPushButton*, 4> CBUT{}; // close, block, replacement, void

private:
    void clicked(int index);
    void report(const SupervisorResult& result);

    SessionSettings& m_session;
    card::WidgetPrompts m_prompts;
};

} // namespace pondar
