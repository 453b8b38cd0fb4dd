#include <pondar/genclass.h>

#include "shell/database.h"
#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "transactions/save.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar {

struct GenClass::Impl {
    SessionSettings session;
    QString schemaReadyFor; // the connection whose Customize_ tables were checked

    void adopt(const QSqlDatabase& conn) {
        session.Conn = conn;
        const QString key = conn.connectionName() + u'\n' + conn.databaseName();
        if (schemaReadyFor == key)
            return;
        db::ensureSchema(session.Conn);
        schemaReadyFor = key;
    }

    // Saves a till stopped in the middle of reach the ledger before anything else happens. A
    // database that still does not answer leaves them waiting for the next chance.
    void replay() {
        try {
            if (const QStringList posted = replayJournal(session); !posted.isEmpty())
                showNotice(nullptr, replayMessage(posted));
        } catch (const Error& e) {
            showError(nullptr, e.message());
        }
    }
};

GenClass::GenClass()
    : d(std::make_unique<Impl>()) {}
GenClass::~GenClass() = default;

SessionSettings& GenClass::session() {
    return d->session;
}

bool GenClass::StartApp(const QString& CStaffCode, const QString& bConnString,
                        const QString& cBzDate, const QString& cPrinter, const QString& OutletCode,
                        const QString& IniPath, const QSqlDatabase& CConn, const QString& CAppType,
                        const QString& CTrsNo, const QString& CBillNo, Currency CAppValue) {
    SessionSettings& s = d->session;
    s.StaffCode = CStaffCode;
    s.ConnString = bConnString;
    s.Printer = cPrinter;
    s.OutletCode = OutletCode;
    s.BzDate = cBzDate;
    s.IniPath = IniPath;
    loadSettings(s);
    d->adopt(CConn);
    s.AppValue = CAppValue;
    s.TrsNo = CTrsNo;
    s.BillNo = CBillNo;
    d->replay();

    if (CAppType == u"MAINMENU"_s) {
        s.AppValue = Currency();
        showMainMenu(s);
        return false;
    }
    if (CAppType == u"MEMBER"_s) {
        showMemberRegister(s);
        return false;
    }
    if (CAppType == u"LOG"_s) {
        showLogViewer(s);
        return false;
    }
    if (CAppType == u"SUPERVISOR"_s) {
        if (askSupervisorPassword(s))
            showSupervisor(s);
        return false;
    }
    if (CAppType == u"EOD"_s) {
        showEndOfDay(s);
        return false;
    }
    const std::optional<TransactionMode> mode = modeFromText(CAppType);
    if (!mode)
        return false;
    switch (*mode) {
    case TransactionMode::TopUp: {
        const std::optional<StaffMember> staff = askStaffMember(s);
        return staff && runTransaction(s, *mode, staff->code);
    }
    case TransactionMode::Withdraw:
        return runTransaction(s, *mode);
    case TransactionMode::Adjustment:
    case TransactionMode::Enquiry:
        // Only the two money-moving modes report success to the host.
        runTransaction(s, *mode);
        return false;
    }
    return false;
}

bool GenClass::ShowEnquiry() {
    showBalanceDisplay(d->session);
    return false;
}

} // namespace pondar
