#include "shell/database.h"
#include "shell/inifile.h"
#include "shell/session.h"
#include "support/fixtures.h"
#include "transactions/handoff.h"
#include "transactions/ledger.h"
#include "transactions/save.h"

#include <QFile>
#include <QSqlQuery>
#include <QSqlRecord>
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

// The rows of a statement, "|" between columns, numbers as money, one line per row.
QString rows(const Fixture& f, const QString& sql, const QVariantList& values = {}) {
    QSqlQuery q = db::exec(f.db(), sql, values);
    QStringList out;
    while (q.next()) {
        QStringList cols;
        for (int i = 0; i < q.record().count(); ++i) {
            const QVariant v = q.value(i);
            const bool number =
                v.typeId() == QMetaType::Double || v.typeId() == QMetaType::LongLong;
            cols << (v.isNull() ? u"NULL"_s : number ? db::readMoney(v).format() : v.toString());
        }
        out << cols.join(u'|');
    }
    return out.join(u'\n');
}

QByteArray readBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
    void workedTopUpToTheCent() {
        WorkedTopUp w;
        QCOMPARE(w.plan.writeValue.format() + u' ' + w.plan.newValue.format(), u"110.00 135.00"_s);
        const SaveOutcome out = saveTransaction(w.s, w.form, w.plan);
        QVERIFY2(out.ok, qPrintable(out.message));
        QVERIFY(w.s.TransactionOk);
        QCOMPARE(w.s.SlipRefNo, Ref);
        QCOMPARE(w.s.SlipAction, u"PRINT"_s);

        const QString common = Ref + u"|2026-11-15 00:00:00|OUT1|T9|"_s;
        QCOMPARE(rows(w.f, u"SELECT Billtype,PValue,PreviousValue,NewValue,PendingValue,"
                           "TopupValue,ExtraValue,RefTrsNo,TrsDate,TrsOutlet,TrsNo,BillNo,CardNo,"
                           "Name,Remark FROM Customize_Transaction ORDER BY ID"_s),
                 u"PED|5.00|NULL|NULL|NULL|NULL|NULL|"_s + common + u"NULL|000123|Ann|NULL\n"_s +
                     u"IN|110.00|20.00|135.00|5.00|100.00|10.00|"_s + common + u"B7|000123|Ann|"_s);
        // Both pending rows settled; the introducer's 10 % of the top-up (not of the extra)
        // waits under the top-up's reference, with no bill number.
        QCOMPARE(rows(w.f, u"SELECT cardNo,UpdateStatus,DateUpdate,FValue,DateInput,TrsNo,"
                           "RefTrsNo,BillNo FROM Customize_Topup ORDER BY ID"_s),
                 u"000123|1.00|2026-11-15 16:33:05|3.00|2026-11-01 00:00:00|NULL|NULL|HOST1\n"
                 "000123|1.00|2026-11-15 16:33:05|2.00|2026-11-01 00:00:00|NULL|NULL|HOST1\n"
                 "000045|0.00|NULL|10.00|2026-11-15 00:00:00|T9|"_s +
                     Ref + u"|NULL"_s);
        QCOMPARE(rows(w.f, u"SELECT StaffCode,TopupValue,PValue,RefTrsNo,TrsDate,CardNo,Name "
                           "FROM Customize_StaffComm"_s),
                 u"S1|100.00|2.00|"_s + Ref + u"|2026-11-15 00:00:00|000123|Ann"_s);
        QCOMPARE(rows(w.f, u"SELECT Description FROM Customize_Log"_s),
                 u"Writing Topup Value :120.00 to CardNo : 000123/Ann"_s);
        QCOMPARE(readBytes(w.f.iniPath()),
                 "[TRANSACTION]\r\nReturnFlag=1\r\nCardNo=000123\r\nCardName=Ann\r\n"
                 "OldValue=20\r\nPenValue=5\r\nWriteValue=110\r\nNewValue=135\r\nReturnRefTrsNo=" +
                     Ref.toLatin1() + "\r\n");
    }

    // Every Save settles the card's pending top-ups first, whatever its type.
    void otherSaves_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QStringList>("boxes"); // top-up, extra, withdraw, in, out
        QTest::addColumn<QString>("line");      // Billtype|PValue|NewValue|TopupValue|ExtraValue
        QTest::addColumn<QString>("log");
        QTest::newRow("extra alone")
            << u"TOPUP"_s << QStringList{u"0"_s, u"5"_s} << u"IN|5.00|30.00|0.00|5.00"_s
            << u"Writing Topup Value :10.00 to CardNo : 000123/Ann"_s;
        QTest::newRow("withdraw everything")
            << u"WITHDRAW"_s << QStringList{{}, {}, u"25"_s} << u"OUT|-25.00|0.00|NULL|NULL"_s
            << u"Writing Withdraw Value :25.00 to CardNo : 000123/Ann"_s;
        QTest::newRow("adjust in and out")
            << u"ADJUSTMENT"_s << QStringList{{}, {}, {}, u"5"_s, u"3"_s}
            << u"AIN|5.00|30.00|0.00|0.00"_s
            << u"Writing Adjustment In Value :5.00 to CardNo : 000123/Ann"_s;
        QTest::newRow("adjust out")
            << u"ADJUSTMENT"_s << QStringList{{}, {}, {}, {}, u"3"_s}
            << u"AOT|-3.00|22.00|NULL|NULL"_s
            << u"Writing Adjustment Out Value :3.00 to CardNo : 000123/Ann"_s;
    }
    void otherSaves() {
        QFETCH(QString, mode);
        QFETCH(QStringList, boxes);
        Fixture f;
        addPending(f, u"000123"_s, 5);
        SessionSettings s = session(f, mode);
        TransactionForm form = onScreen(u"000123"_s);
        TransactionBoxes& b = form.boxes;
        b.topUp = boxes.value(0);
        b.extra = boxes.value(1);
        b.withdraw = boxes.value(2);
        b.adjustIn = boxes.value(3);
        b.adjustOut = boxes.value(4);
        const SaveDecision d = mode == u"TOPUP"_s      ? planTopUp(b)
                               : mode == u"WITHDRAW"_s ? planWithdraw(b)
                                                       : planAdjustment(b);
        QVERIFY(saveTransaction(s, form, *d.plan).ok);
        QFETCH(QString, line);
        QCOMPARE(rows(f, u"SELECT Billtype,PValue,NewValue,TopupValue,ExtraValue "
                         "FROM Customize_Transaction ORDER BY ID"_s),
                 u"PED|5.00|NULL|NULL|NULL\n"_s + line);
        QCOMPARE(pendingBalance(f.db(), u"000123"_s), Currency());
        QCOMPARE(f.count(u"Customize_StaffComm"_s), mode == u"TOPUP"_s ? 1 : 0);
        QTEST(rows(f, u"SELECT Description FROM Customize_Log"_s), "log");
        // Only a top-up credits an introducer, and it does so even without one.
        QCOMPARE(rows(f, u"SELECT cardNo,FValue FROM Customize_Topup WHERE UpdateStatus=0"_s),
                 mode == u"TOPUP"_s ? u"|0.00"_s : QString());
    }

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
        QCOMPARE(rows(f, u"SELECT Billtype,PValue,NewValue FROM Customize_Transaction "
                         "WHERE CardNo='INTRO' ORDER BY ID"_s),
                 u"PED|15.00|NULL\nOUT|-20.00|5.00"_s);
        QCOMPARE(rows(f, u"SELECT UpdateStatus,DateUpdate FROM Customize_Topup WHERE "
                         "cardNo='INTRO' AND RefTrsNo IS NOT NULL"_s),
                 u"1.00|2026-11-15 16:33:05\n1.00|2026-11-15 16:33:05"_s);
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
        QCOMPARE(rows(f, u"SELECT Description FROM Customize_Log"_s),
                 u"Writing Withdraw Value :1.50 to CardNo : 0' OR '1'='1/O'Neil"_s);
        QCOMPARE(pendingBalance(f.db(), u"OTHER"_s).format(), u"9.00"_s);

        LedgerModel history;
        history.setQuery(historyQuery(f.db(), code));
        QCOMPARE(history.rowCount(), 2);
        QCOMPARE(history.index(1, 1).data().toString() + u' ' +
                     history.index(1, 3).data().toString(),
                 u"15/11/2026 00:00:00 -1.50"_s);
    }

    void referenceNumbersAndHandOff() {
        const QDateTime at(QDate(2026, 1, 2), QTime(13, 4, 5));
        QCOMPARE(MakeRefNo(at, u" 000123 "_s, u"000045 "_s), u"02012026130405-000123-000045"_s);
        QCOMPARE(MakeRefNo(at, u"000123"_s, QString()), u"02012026130405-000123-"_s);
        Fixture f;
        WriteHandOff(f.iniPath(),
                     {u"C1"_s, u"Bo Li"_s, Currency(), Currency::parse(u"12.50"_s),
                      Currency::parse(u"0.0001"_s), Currency::parse(u"150"_s), 1, u"R-1-"_s});
        QCOMPARE(readBytes(f.iniPath()),
                 "[TRANSACTION]\r\nCardNo=C1\r\nCardName=Bo Li\r\nOldValue=0\r\nPenValue=12.5\r\n"
                 "WriteValue=0.0001\r\nNewValue=150\r\nReturnFlag=1\r\nReturnRefTrsNo=R-1-\r\n");
    }

    // The card keeps its new value whatever fails after it; the operator and the recovery file
    // learn what did not reach the database, and the host is told nothing happened.
    void failureAfterCardWrite_data() {
        QTest::addColumn<QString>("dropped");
        QTest::addColumn<QString>("posted");
        QTest::newRow("transactions") << u"Customize_Transaction"_s << u"nothing"_s;
        QTest::newRow("top-ups") << u"Customize_Topup"_s << u"PED line"_s;
        QTest::newRow("commissions")
            << u"Customize_StaffComm"_s << u"PED line, pending top-ups settled, IN line"_s;
    }
    void failureAfterCardWrite() {
        QFETCH(QString, dropped);
        QFETCH(QString, posted);
        WorkedTopUp w;
        w.s.TransactionOk = true; // from an earlier Save; must not survive this one
        db::exec(w.f.db(), u"DROP TABLE "_s + dropped);
        const SaveOutcome out = saveTransaction(w.s, w.form, w.plan);
        QVERIFY(!out.ok);
        QVERIFY(!w.s.TransactionOk);
        QCOMPARE(IniFile(w.f.iniPath()).read(u"TRANSACTION"_s, u"ReturnFlag"_s), u"0"_s);
        saveTransaction(w.s, w.form, w.plan); // a second failure adds to the file

        const QString file = QString::fromUtf8(readBytes(w.f.path(u"pondar-recovery.txt"_s)));
        QVERIFY(file.startsWith(u"2026-11-15 16:33:05 "_s));
        QCOMPARE(file.count(u"Ref No : "_s + Ref), 2);
        for (const QString& part : QStringList{
                 u"Card No : 000123 / Ann"_s, u"Transaction : IN 110.00"_s,
                 u"New Card Bal. : 135.00"_s, u"Ref No : "_s + Ref,
                 u"Posted before the error : "_s + posted, u"no such table: "_s + dropped}) {
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
