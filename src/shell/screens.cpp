#include "shell/screens.h"

namespace pondar {

bool showScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    (void)session;
    (void)parent;
    switch (screen) {
    case Screen::MainMenu:
    case Screen::Member:
    case Screen::StaffEntry:
    case Screen::Transaction:
    case Screen::Log:
    case Screen::EndOfDay:
    case Screen::Balance:
        break;
    }
    return false;
}

} // namespace pondar
