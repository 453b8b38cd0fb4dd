#include "shell/database.h"
#include "shell/inifile.h"
#include "shell/session.h"
#include "support/fixtures.h"
#include "transactions/handoff.h"
#include "transactions/ledger.h"
#include "transactions/save.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using test::Fixture;

namespace {

QDateTime fixedNow() {
    return QDateTime(QDate(2026, 11, 15), QTime(16, 33, 5));
}

SessionSettings session(const Fixture& f, const QString& mode) {
    SessionSettings s;
    s.Conn = f.db();
    s.IniPath = f.iniPath();
    s.StaffCode = u"OP1"_s;
    s.OutletCode = u"OUT1"_s;
    s.BzDate = u"15/11/2026"_s;
    s.TrsNo = u"T9"_s;
    s.BillNo = u"B7"_s;
    s.TransactionMode = mode;
    s.DownComm = 10.0;
    s.ServerComm = Currency::parse(u"2"_s);
    s.clock = fixedNow;
    return s;
}

// A card as Connect leaves it on the screen: balance 20.00, pending 5.00.
TransactionForm onScreen(const QString& cardNo, const QString& introducer = {}) {
    TransactionForm form;
    form.boxes = {cardNo, u"Ann"_s, u"20.00"_s, {}, {},      {},
                  {},     {},       u"5.00"_s,  {}, u"S1"_s, introducer};
    return form;
}

void addPending(const Fixture& f, const QString& cardNo, int value, bool settled = false) {
    db::exec(f.db(),
             u"INSERT INTO Customize_Topup (cardNo,DateInput,DateUpdate,UpdateStatus,FValue,"
             "BillNo) VALUES (?,'2026-11-01 00:00:00',?,?,?,'HOST1')"_s,
             {cardNo, settled ? QVariant(u"2026-11-02 10:00:00"_s) : QVariant(), settled ? 1 : 0,
              value});
}

const QString Ref = u"15112026163305-000123-000045"_s;

// The top-up of the worked example: balance 20.00, pending 5.00 (two rows), top-up 100.00,
// extra 10.00, ServerComm 2, DownComm 10, introducer 000045.
struct WorkedTopUp {
    Fixture f;
    SessionSettings s = session(f, u"TOPUP"_s);
    TransactionForm form = onScreen(u"000123"_s, u"000045"_s);
    SavePlan plan;

    WorkedTopUp() {
        addPending(f, u"000123"_s, 3);
        addPending(f, u"000123"_s, 2);
        s.IntroducerCode = u"000045"_s;
        form.boxes.topUp = u"100.00"_s;
        form.boxes.extra = u"10.00"_s;
        plan = *planTopUp(form.boxes).plan;
        IniFile(f.iniPath()).write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s);
    }
};

} // namespace

class TestPosting final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void introducedMembersSettleInOnePedLine() {
        Fixture f;
        f.addMember(u"INTRO"_s, u"Ida"_s);
        f.addMember(u"M1"_s, u"Max"_s, u"INTRO"_s);
        f.addMember(u"M2"_s, u"Mia"_s, u"INTRO"_s);
        addPending(f, u"INTRO"_s, 7, true); // settled long ago
        SessionSettings s = session(f, u"TOPUP"_s);
        for (const auto& [member, topUp] : {std::pair{u"M1"_s, u"100"_s}, {u"M2"_s, u"50"_s}}) {
            const MemberExtras extras = LoadMemberExtras(f.db(), member);
            QVERIFY(extras.found);
            s.IntroducerCode = extras.introducer;
            TransactionForm form = onScreen(member, extras.introducer);
            form.boxes.pending = extras.pending.format();
            form.boxes.topUp = topUp;
            QVERIFY(saveTransaction(s, form, *planTopUp(form.boxes).plan).ok);
        }
        const MemberExtras intro = LoadMemberExtras(f.db(), u"INTRO"_s);
        QCOMPARE(intro.introducer, QString());
        QCOMPARE(intro.pending.format(), u"15.00"_s);

        s.TransactionMode = u"WITHDRAW"_s;
        TransactionForm form = onScreen(u"INTRO"_s);
        form.boxes.balance = u"10.00"_s;
        form.boxes.pending = intro.pending.format();
        form.boxes.withdraw = u"20"_s;
        QVERIFY(saveTransaction(s, form, *planWithdraw(form.boxes).plan).ok);
        QCOMPARE(f.rows(u"SELECT Billtype,PValue,NewValue FROM Customize_Transaction "
                        "WHERE CardNo='INTRO' ORDER BY ID"_s),
                 u"PED|15|NULL\nOUT|-20|5"_s);
        QCOMPARE(f.rows(u"SELECT UpdateStatus,DateUpdate FROM Customize_Topup WHERE "
                        "cardNo='INTRO' AND RefTrsNo IS NOT NULL"_s),
                 u"1|2026-11-15 16:33:05\n1|2026-11-15 16:33:05"_s);
        QCOMPARE(pendingBalance(f.db(), u"INTRO"_s), Currency());
        QCOMPARE(
            f.scalar(u"SELECT DateUpdate FROM Customize_Topup WHERE RefTrsNo IS NULL"_s).toString(),
            u"2026-11-02 10:00:00"_s);
    }

    // Codes and names reach the statements as values, never as statement text.
    void quotesAndSqlInCodesPostAndReadBack() {
        Fixture f;
        const QString code = u"0' OR '1'='1"_s;
        addPending(f, code, 5);
        addPending(f, u"OTHER"_s, 9);
        SessionSettings s = session(f, u"WITHDRAW"_s);
        // A clock ticking a second per reading: the PED line's reference sorts first.
        s.clock = [t = fixedNow()]() mutable { return t = t.addSecs(1); };
        TransactionForm form = onScreen(code, u"x');DROP TABLE Customize_Log;--"_s);
        form.boxes.name = u"O'Neil"_s;
        form.boxes.withdraw = u"1.5"_s;
        QVERIFY(saveTransaction(s, form, *planWithdraw(form.boxes).plan).ok);
        QCOMPARE(f.rows(u"SELECT Description FROM Customize_Log"_s),
                 u"Writing Withdraw Value :1.50 to CardNo : 0' OR '1'='1/O'Neil"_s);
        QCOMPARE(pendingBalance(f.db(), u"OTHER"_s).format(), u"9.00"_s);

        LedgerModel history;
        history.setQuery(historyQuery(f.db(), code));
        QCOMPARE(history.rowCount(), 2);
        QCOMPARE(history.index(1, 1).data().toString() + u' ' +
                     history.index(1, 3).data().toString(),
                 u"15/11/2026 00:00:00 -1.50"_s);
    }

    void referenceNumbers() {
        const QDateTime at(QDate(2026, 1, 2), QTime(13, 4, 5));
        QCOMPARE(MakeRefNo(at, u" 000123 "_s, u"000045 "_s), u"02012026130405-000123-000045"_s);
        QCOMPARE(MakeRefNo(at, u"000123"_s, QString()), u"02012026130405-000123-"_s);
    }

    // The card keeps its new value whatever fails after it; the operator and the recovery file
    // learn what did not reach the database, and the host is told nothing happened.
    void failureAfterCardWrite_data() {
        QTest::addColumn<QString>("dropped"); // a table, or the whole connection
        QTest::addColumn<QString>("posted");
        QTest::addColumn<QString>("error");
        QTest::newRow("transactions") << u"Customize_Transaction"_s << u"nothing"_s
                                      << u"no such table: Customize_Transaction"_s;
        QTest::newRow("top-ups") << u"Customize_Topup"_s << u"PED line"_s
                                 << u"no such table: Customize_Topup"_s;
        QTest::newRow("commissions")
            << u"Customize_StaffComm"_s << u"PED line, pending top-ups settled, IN line"_s
            << u"no such table: Customize_StaffComm"_s;
        QTest::newRow("connection lost") << QString() << u"nothing"_s << u"is not open"_s;
    }
    void failureAfterCardWrite() {
        QFETCH(QString, dropped);
        QFETCH(QString, posted);
        QFETCH(QString, error);
        WorkedTopUp w;
        w.s.TransactionOk = true; // from an earlier Save; must not survive this one
        if (dropped.isEmpty())
            w.f.db().close();
        else
            db::exec(w.f.db(), u"DROP TABLE "_s + dropped);
        const SaveOutcome out = saveTransaction(w.s, w.form, w.plan);
        QVERIFY(!out.ok);
        QVERIFY(!w.s.TransactionOk);
        QCOMPARE(IniFile(w.f.iniPath()).read(u"TRANSACTION"_s, u"ReturnFlag"_s), u"0"_s);
        saveTransaction(w.s, w.form, w.plan); // a second failure adds to the file

        const QString file = QString::fromUtf8(test::readFile(w.f.path(u"pondar-recovery.txt"_s)));
        QVERIFY(file.startsWith(u"2026-11-15 16:33:05 "_s));
        QCOMPARE(file.count(u"Ref No : "_s + Ref), 2);
        for (const QString& part :
             QStringList{u"Card No : 000123 / Ann"_s, u"Transaction : IN 110.00"_s,
                         u"New Card Bal. : 135.00"_s, u"Ref No : "_s + Ref,
                         u"Posted before the error : "_s + posted, error}) {
            QVERIFY2(out.message.contains(part), qPrintable(out.message));
            QVERIFY2(file.contains(part), qPrintable(file));
        }

        w.s.IniPath = w.f.path(u"no-such-folder/pondar.ini"_s);
        const QString unsaved = saveTransaction(w.s, w.form, w.plan).message;
        QVERIFY2(unsaved.contains(u"could not be added"_s) && unsaved.contains(Ref),
                 qPrintable(unsaved));
    }
};

QTEST_GUILESS_MAIN(TestPosting)
#include "tst_posting.moc"
