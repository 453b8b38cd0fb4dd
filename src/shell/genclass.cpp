#include <pondar/genclass.h>

#include "shell/database.h"
#include "shell/screens.h"
#include "shell/session.h"

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

    // Shows the transaction screen in a mode, returning whether it opened.
    bool transaction(const QString& mode) {
        session.TransactionMode = mode;
        return showScreen(Screen::Transaction, session);
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
    s.TransactionOk = false;
    s.AppValue = CAppValue;
    s.TrsNo = CTrsNo;
    s.BillNo = CBillNo;

    if (CAppType == u"MAINMENU"_s) {
        s.AppValue = Currency();
        showScreen(Screen::MainMenu, s);
        return false;
    }
    if (CAppType == u"MEMBER"_s) {
        showScreen(Screen::Member, s);
        return false;
    }
    if (CAppType == u"TOPUP"_s) {
        s.TransactionMode = u"TOPUP"_s;
        if (!showScreen(Screen::StaffEntry, s) || !s.DialogAccepted)
            return false;
        return showScreen(Screen::Transaction, s) && s.TransactionOk;
    }
    if (CAppType == u"WITHDRAW"_s)
        return d->transaction(CAppType) && s.TransactionOk;
    if (CAppType == u"ADJUSTMENT"_s || CAppType == u"ENQUIRY"_s) {
        d->transaction(CAppType);
        return false;
    }
    if (CAppType == u"LOG"_s) {
        showScreen(Screen::Log, s);
        return false;
    }
    if (CAppType == u"EOD"_s) {
        showScreen(Screen::EndOfDay, s);
        return false;
    }
    return false;
}

bool GenClass::ShowEnquiry() {
    showScreen(Screen::Balance, d->session);
    return false;
}

} // namespace pondar
