#include "shell/screens.h"

namespace pondar {

bool showMemberScreen(Screen, SessionSettings&, QWidget*) {
    return false;
}

} // namespace pondar
