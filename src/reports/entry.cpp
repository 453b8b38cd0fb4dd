#include "shell/screens.h"

#include "reports/eodform.h"
#include "reports/logform.h"
#include "reports/memberreportform.h"
#include "reports/slipform.h"

namespace pondar {

void showSlip(SessionSettings& session, const reports::SlipRequest& request, QWidget* parent) {
    reports::SlipForm form(session, request, parent);
    form.run();
}

void showEndOfDay(SessionSettings& session, QWidget* parent) {
    reports::EodForm form(session, parent);
    form.exec();
}

void showMemberReport(SessionSettings& session, QWidget* parent) {
    reports::MemberReportForm form(session, parent);
    form.exec();
}

void showLogViewer(SessionSettings& session, QWidget* parent) {
    reports::LogForm form(session, parent);
    form.exec();
}

} // namespace pondar
