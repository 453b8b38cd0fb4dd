#include "shell/screens.h"

#include "reports/eodform.h"
#include "reports/logform.h"
#include "reports/memberreportform.h"
#include "reports/slipform.h"

namespace pondar {

bool showReportScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    switch (screen) {
    case Screen::Slip: {
        reports::SlipForm form(session, parent);
        form.run();
        return true;
    }
    case Screen::EndOfDay: {
        reports::EodForm form(session, parent);
        form.exec();
        return true;
    }
    case Screen::MemberReport: {
        reports::MemberReportForm form(session, parent);
        form.exec();
        return true;
    }
    case Screen::Log: {
        reports::LogForm form(session, parent);
        form.exec();
        return true;
    }
    default:
        return false;
    }
}

} // namespace pondar
