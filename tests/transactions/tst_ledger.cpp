// The ledger is the truth: a card that does not hold its ledger balance takes no Save, and a Save
// whose card write succeeded reaches the ledger exactly once, whatever fails after the write.
#include "transactions/journal.h"
#include "transactions/till.h"

#include <QDir>

#include <QSqlError>
#include <QTest>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using Status = SaveOutcome::Status;
using Step = TransactionSave::Step;

namespace {

// The till loses power.
struct Stop {};

// Member 000123 (introduced by 000045) with 5.00 pending and a card of 20.00, read by Connect,
// topping up 50 with 5 extra: a Save that runs every statement there is.
struct Scene : test::SaveTill {
    Scene() {
        f.addMember(u"000045"_s, u"Ida"_s);
        maxWithPending(u"000045"_s);
        connect();
        boxes.topUp = u"50"_s;
        boxes.extra = u"5"_s;
    }
    // Every table a Save writes, rows in a fixed order, IDs left out (a server's identity
    // values skip the ones a rolled-back insert took).
    QString ledger() const {
        return f.rows(u"SELECT CardNo,Name,TrsDate,TrsNo,TrsOutlet,RefTrsNo,BillNo,Billtype,"
                      "PValue,PreviousValue,NewValue,PendingValue,TopupValue,ExtraValue,Remark "
                      "FROM Customize_Transaction ORDER BY RefTrsNo,Billtype"_s) +
               u'\n' +
               f.rows(u"SELECT cardNo,DateInput,DateUpdate,UpdateStatus,FValue,TrsNo,RefTrsNo "
                      "FROM Customize_Topup ORDER BY cardNo,FValue"_s) +
               u'\n' +
               f.rows(u"SELECT StaffCode,TrsDate,RefTrsNo,CardNo,Name,TopupValue,PValue "
                      "FROM Customize_StaffComm ORDER BY ID"_s) +
               u'\n' +
               f.rows(u"SELECT StaffCode,BizDate,ActualDate,Description FROM Customize_Log "
                      "ORDER BY ID"_s);
    }
    // A trigger named "fault" that refuses the table's rows, those meeting the condition when
    // one is given.
    void fail(const QString& event, const QString& table, const QString& condition) {
        const QString on = event + u" ON "_s + table;
        if (test::Fixture::overPostgreSql()) {
            db::exec(f.db(), u"CREATE FUNCTION fault() RETURNS trigger LANGUAGE plpgsql AS "
                             "$$BEGIN RAISE EXCEPTION 'injected fault'; END$$"_s);
            db::exec(f.db(),
                     u"CREATE TRIGGER fault "_s + on + u" FOR EACH ROW "_s +
                         (condition.isEmpty() ? QString() : u"WHEN ("_s + condition + u") "_s) +
                         u"EXECUTE FUNCTION fault()"_s);
        } else {
            db::exec(f.db(), u"CREATE TRIGGER fault "_s + on +
                                 (condition.isEmpty() ? QString() : u" WHEN "_s + condition) +
                                 u" BEGIN SELECT RAISE(ABORT, 'injected fault'); END"_s);
        }
        faultTable = table;
    }
    void mend() {
        if (faultTable.isEmpty())
            return;
        db::exec(f.db(), test::Fixture::overPostgreSql() ? u"DROP TRIGGER fault ON "_s + faultTable
                                                         : u"DROP TRIGGER fault"_s);
        faultTable.clear();
    }
    QString faultTable;
};

} // namespace

class TestLedger final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // A fault at each step after the card write: nothing half-posted, the host told the truth,
    // and a replay (twice, to show it posts once) leaves the ledger exactly as a clean Save and
    // equal to the card.
    void faultsAreReplayedExactlyOnce_data() {
        QTest::addColumn<QString>("fault");
        for (const char* f : {"PED line", "settlement", "transaction line", "commission",
                              "introducer credit", "log line", "connection closed",
                              "stopped after the card write", "stopped before the commit"})
            QTest::newRow(f) << QString::fromLatin1(f);
    }
    void faultsAreReplayedExactlyOnce() {
        QFETCH(QString, fault);
        Scene clean;
        QCOMPARE(clean.save(TransactionMode::TopUp).status, Status::Posted);

        Scene till;
        const QString before = till.ledger();
        const QMap<QString, QStringList> triggers = {
            {u"PED line"_s,
             {u"BEFORE INSERT"_s, u"Customize_Transaction"_s, u"NEW.Billtype='PED'"_s}},
            {u"settlement"_s, {u"BEFORE UPDATE"_s, u"Customize_Topup"_s, {}}},
            {u"transaction line"_s,
             {u"BEFORE INSERT"_s, u"Customize_Transaction"_s, u"NEW.Billtype='IN'"_s}},
            {u"commission"_s, {u"BEFORE INSERT"_s, u"Customize_StaffComm"_s, {}}},
            {u"introducer credit"_s, {u"BEFORE INSERT"_s, u"Customize_Topup"_s, {}}},
            {u"log line"_s, {u"BEFORE INSERT"_s, u"Customize_Log"_s, {}}}};
        if (triggers.contains(fault)) {
            const QStringList t = triggers.value(fault);
            till.fail(t.at(0), t.at(1), t.at(2));
        }
        TransactionSave service(till.s, till.prompts);
        service.faultAt = [&](Step step) {
            if (fault == u"connection closed"_s && step == Step::LinesPosted) {
                // As a server does with a dropped connection: its work is rolled back.
                QSqlDatabase db = till.f.db();
                db.rollback();
                db.close();
            }
            if ((fault == u"stopped after the card write"_s && step == Step::CardWritten) ||
                (fault == u"stopped before the commit"_s && step == Step::LinesPosted))
                throw Stop{};
        };
        try {
            const SaveOutcome out =
                service.save(TransactionMode::TopUp, till.boxes, till.connected);
            QCOMPARE(out.status, Status::Unposted);
            QVERIFY2(out.message.contains(u"80.00"_s), qPrintable(out.message));
            QCOMPARE(till.handOff(u"ReturnFlag"_s) + till.handOff(u"Posted"_s), u"10"_s);
        } catch (const Stop&) {
        }
        QCOMPARE(till.cardValue(), u"80"_s);
        if (!till.f.db().isOpen())
            QVERIFY(till.f.db().open());
        QCOMPARE(till.ledger(), before);

        // A fresh till on the same folder: the journal, the settings file, the card.
        till.mend();
        test::SaveTill restarted;
        till.sim.attach(restarted.s);
        restarted.s.Conn = till.f.db();
        restarted.s.IniPath = till.f.iniPath();
        for (int round = 0; round < 2; ++round) {
            QStringList posted;
            try {
                posted =
                    replayJournal(restarted.s) +
                    settleOpenSaves(restarted.s, u"000123"_s, Currency::parse(till.cardValue()));
            } catch (const Error& e) {
                QFAIL(qPrintable(e.message()));
            }
            QCOMPARE(posted.size(), round == 0 ? 1 : 0);
        }
        QCOMPARE(till.ledger(), clean.ledger());
        QCOMPARE(ledgerBalanceOf(restarted.s, u"000123"_s).balance, Currency::parse(u"80"_s));
    }

    // Another till holds the write lock past the timeout, or the journal cannot be kept: the
    // card is not touched and the operator is told why.
    void nothingIsWrittenWithoutLockOrJournal() {
        for (const bool lockHeld : {true, false}) {
            Scene till;
            const QByteArray card = till.sim.image();
            QSqlDatabase other = till.f.openAnother(u"other-till"_s);
            std::optional<db::Transaction> held;
            if (lockHeld) {
                held.emplace(other, u"000123"_s);
                // The server waits for a lock as long as the login's setting says; not long here.
                if (test::Fixture::overPostgreSql())
                    db::exec(till.f.db(), u"SET lock_timeout = '300ms'"_s);
            } else {
                QVERIFY(QDir(till.f.path({})).mkpath(u"pondar-journal.db"_s));
            }
            const SaveOutcome out = till.save(TransactionMode::TopUp);
            QCOMPARE(out.status, Status::NotWritten);
            QVERIFY2(out.message.startsWith(lockHeld ? u"Nothing was written to the Card: the "
                                                       "database did not answer !!!"_s
                                                     : u"Nothing was written to the Card: the "
                                                       "till's journal cannot be kept !!!"_s),
                     qPrintable(out.message));
            QCOMPARE(till.sim.image(), card);
            held.reset();
            other.close();
            other = {};
            QSqlDatabase::removeDatabase(u"other-till"_s);
        }
    }

    // A forged balance, a card rolled back to an earlier image, a copy onto another card: each is
    // refused with the ledger's word, and each supervisor way out leaves card and ledger equal.
    void cardsThatDoNotMatchTheLedger() {
        Scene till;
        const QByteArray twenty = till.sim.image();
        // Forged: the card says 9999; the supervisor writes the ledger's 20 back onto it.
        card::MemberCard writer(till.s, till.prompts);
        QVERIFY(writer.writeValue(Currency::parse(u"9999"_s)));
        till.connect();
        CardLedgerCheck check =
            checkCardAgainstLedger(till.s, u"000123"_s, Currency::parse(u"9999"_s));
        QCOMPARE(check.message(), u"Card Balance does not match the Database !!!\n\nCard : "
                                  "9999.00\nDatabase : 20.00\nLast Ref No : OPENING"_s);
        QCOMPARE(till.save(TransactionMode::TopUp).message, check.message());
        QCOMPARE(till.cardValue(), u"9999"_s);
        QVERIFY(writeLedgerBalanceToCard(till.s, till.prompts, till.connected, check));
        QCOMPARE(till.cardValue(), u"20"_s);

        // Rolled back: spent to 10, then the image of 20 restored; the supervisor posts the
        // difference instead.
        till.connect();
        till.boxes.topUp.clear();
        till.boxes.extra.clear();
        till.boxes.withdraw = u"15"_s;
        QCOMPARE(till.save(TransactionMode::Withdraw).status, Status::Posted);
        till.sim.put(twenty);
        till.connect();
        check = checkCardAgainstLedger(till.s, u"000123"_s, Currency::parse(u"20"_s));
        QVERIFY(!check.matches);
        QCOMPARE(till.save(TransactionMode::Withdraw).status, Status::Refused);
        postCardDifference(till.s, till.boxes, check);
        QVERIFY(checkCardAgainstLedger(till.s, u"000123"_s, Currency::parse(u"20"_s)).matches);
        QCOMPARE(till.f.rows(u"SELECT Billtype,PValue,PreviousValue,NewValue,Remark FROM "
                             "Customize_Transaction ORDER BY ID DESC LIMIT 1"_s),
                 u"AIN|10|10|20|Card/Database difference"_s);
        // Four differences logged, the fix, the withdrawal, the adjustment.
        QCOMPARE(till.f.count(u"Customize_Log"_s), 7);

        // A copy onto a card with another serial does not even read.
        QByteArray copy = till.sim.image();
        copy[0] = char(0x99);
        till.sim.put(copy);
        test::RecordingPrompts silent;
        card::MemberCard reader(till.s, silent);
        card::CardData data;
        QCOMPARE(reader.read(data), card::ReadResult::NotOwnSerial);
    }

    // Two tills with the same card (a copy with the same serial): the one that saves first
    // settles the pending top-ups; the other is refused by the ledger, so nothing is settled or
    // paid twice. What is pending at the Save, not at Connect, goes onto the card.
    void twoTillsOneCard() {
        Scene a;
        db::exec(a.f.db(), u"INSERT INTO Customize_Topup (cardNo,UpdateStatus,FValue) "
                           "VALUES ('000123',0,10)"_s);
        test::SaveTill b;
        b.sim.put(a.sim.image());
        b.s.Conn = a.f.openAnother(u"till-b"_s);
        {
            b.s.IniPath = b.f.iniPath();
            b.connect();
            b.boxes.withdraw = u"5"_s;
            a.boxes.topUp = a.boxes.extra = QString();
            a.boxes.withdraw = u"5"_s;
            QCOMPARE(a.save(TransactionMode::Withdraw).status, Status::Posted);
            QCOMPARE(a.cardValue(), u"30"_s); // 20 + 15 pending - 5, though Connect showed 5
            QCOMPARE(a.handOff(u"PenValue"_s), u"15"_s);
            const SaveOutcome refused = b.save(TransactionMode::Withdraw);
            QCOMPARE(refused.status, Status::Refused);
            QVERIFY(refused.message.startsWith(u"Card Balance does not match the Database"_s));
            QCOMPARE(b.cardValue(), u"20"_s);
        }
        QCOMPARE(a.f.rows(u"SELECT Billtype,PValue FROM Customize_Transaction WHERE "
                          "RefTrsNo<>'OPENING' ORDER BY ID"_s),
                 u"PED|15\nOUT|-5"_s);
        QCOMPARE(pendingBalance(a.f.db(), u"000123"_s), Currency());
        b.s.Conn.close();
        b.s.Conn = {};
        QSqlDatabase::removeDatabase(u"till-b"_s);
    }
};

QTEST_GUILESS_MAIN(TestLedger)
#include "tst_ledger.moc"
