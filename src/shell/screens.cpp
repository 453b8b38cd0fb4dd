#include "shell/screens.h"

#include "shell/mainmenu.h"

namespace pondar {

void showMainMenu(SessionSettings& session, QWidget* parent) {
    MAINMENU menu(session, parent);
    menu.exec();
}

} // namespace pondar
