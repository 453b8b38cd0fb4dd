#include "card/balancescreen.h"
#include "card/passwordscreen.h"
#include "shell/screens.h"

namespace pondar {

void showBalanceDisplay(SessionSettings& session, QWidget* parent) {
    card::MFBAL display(session, parent);
    display.exec();
}

bool askSupervisorPassword(SessionSettings&, QWidget* parent) {
    card::MESC gate(parent);
    return gate.exec() == QDialog::Accepted;
}

} // namespace pondar
