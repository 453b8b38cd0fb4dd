#include "shell/screens.h"

namespace pondar {

bool showTransactionScreen(Screen, SessionSettings&, QWidget*) {
    return false;
}

} // namespace pondar
