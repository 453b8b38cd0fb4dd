#include "shell/screens.h"

namespace pondar {

bool showCardScreen(Screen, SessionSettings&, QWidget*) {
    return false;
}

} // namespace pondar
