#include "shell/mainmenu.h"

#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"

#include <QGroupBox>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

MAINMENU::MAINMENU(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session) {
    setObjectName(u"MAINMENU"_s);
    setWindowTitle(u"Mifare Main Menu"_s);

    // Shown top to bottom in the order a cashier uses them; indexes stay as the handlers know them.
    // The member transaction report has no button of its own on the till's menu; it sits last,
    // after the eight the cashiers know, so their places do not move; the supervisor's tools
    // follow it.
    const std::array<QString, 10> captions = {
        u"Top up"_s, u"Withdraw"_s, u"Adjustment"_s, u"Check Balance"_s, u"Member Details"_s,
        u"Close"_s,  u"Report"_s,   u"Log"_s,        u"Member Report"_s, u"Supervisor"_s};
    auto* frame = new QGroupBox(this);
    frame->setObjectName(u"Frame1"_s);
    auto* column = new QVBoxLayout(frame);
    for (int i = 0; i < int(CBUT.size()); ++i) {
        CBUT[i] = new QPushButton(captions[i], frame);
        CBUT[i]->setObjectName(u"CBUT(%1)"_s.arg(i));
        CBUT[i]->setAutoDefault(false);
        CBUT[i]->setMinimumHeight(36);
        connect(CBUT[i], &QPushButton::clicked, this, [this, i] { clicked(i); });
    }
    for (int i : {0, 1, 2, 3, 4, 6, 7, 8, 9, 5})
        column->addWidget(CBUT[i]);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame);
}

void MAINMENU::clicked(int index) {
    guarded(this, [&] {
        switch (index) {
        case 0:
            // The outcome of a Save started here is not handed back: the menu returns false.
            if (const auto staff = askStaffMember(m_session, this))
                runTransaction(m_session, TransactionMode::TopUp, staff->code, this);
            break;
        case 1:
            runTransaction(m_session, TransactionMode::Withdraw, {}, this);
            break;
        case 2:
            runTransaction(m_session, TransactionMode::Adjustment, {}, this);
            break;
        case 3:
            runTransaction(m_session, TransactionMode::Enquiry, {}, this);
            break;
        case 4:
            showMemberRegister(m_session, this);
            break;
        case 5:
            accept();
            break;
        case 6:
            showEndOfDay(m_session, this);
            break;
        case 7:
            showLogViewer(m_session, this);
            break;
        case 8:
            showMemberReport(m_session, this);
            break;
        case 9:
            if (askSupervisorPassword(m_session, this))
                showSupervisor(m_session, this);
            break;
        default:
            break;
        }
    });
}

} // namespace pondar
