#include "shell/screens.h"

namespace pondar {

bool showReportScreen(Screen, SessionSettings&, QWidget*) {
    return false;
}

} // namespace pondar
