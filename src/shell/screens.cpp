#include "shell/screens.h"

#include "shell/mainmenu.h"

namespace pondar {

bool showScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    switch (screen) {
    case Screen::MainMenu:
        return showShellScreen(screen, session, parent);
    case Screen::Balance:
    case Screen::Password:
        return showCardScreen(screen, session, parent);
    case Screen::Member:
    case Screen::StaffEntry:
    case Screen::Lookup:
        return showMemberScreen(screen, session, parent);
    case Screen::Transaction:
        return showTransactionScreen(screen, session, parent);
    case Screen::Slip:
    case Screen::Log:
    case Screen::EndOfDay:
    case Screen::MemberReport:
        return showReportScreen(screen, session, parent);
    }
    return false;
}

bool showShellScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    if (screen != Screen::MainMenu)
        return false;
    MAINMENU menu(session, parent);
    menu.exec();
    return true;
}

} // namespace pondar
