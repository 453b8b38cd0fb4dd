#include "card/balancescreen.h"
#include "card/passwordscreen.h"
#include "shell/screens.h"

namespace pondar {

bool showCardScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    switch (screen) {
    case Screen::Balance: {
        card::MFBAL display(session, parent);
        display.exec();
        return true;
    }
    case Screen::Password: {
        card::MESC gate(session, parent);
        gate.exec();
        return true;
    }
    default:
        return false;
    }
}

} // namespace pondar
