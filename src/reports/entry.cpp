#include "shell/screens.h"

#include "reports/slipform.h"

namespace pondar {

bool showReportScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    switch (screen) {
    case Screen::Slip: {
        reports::SlipForm form(session, parent);
        form.run();
        return true;
    }
    default:
        return false;
    }
}

} // namespace pondar
