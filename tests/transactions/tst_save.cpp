// The Save without a window: the simulated reader, a temporary database and settings file, the
// operator's answers queued. Every refusal and fault must leave card, ledger and hand-off as they
// were; every Save that reaches the card must be told apart by what reached the database.
#include "transactions/ledger.h"
#include "transactions/save.h"
#include "transactions/till.h"

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using Status = SaveOutcome::Status;
using Till = test::SaveTill;

Q_DECLARE_METATYPE(SaveOutcome::Status)
Q_DECLARE_METATYPE(TransactionMode)

namespace {

void type(TransactionBoxes& b, const QString& pair) {
    const QString box = pair.section(u'=', 0, 0);
    const QString text = pair.section(u'=', 1);
    QString* const target = box == u"4"_s    ? &b.topUp
                            : box == u"11"_s ? &b.extra
                            : box == u"8"_s  ? &b.withdraw
                            : box == u"6"_s  ? &b.adjustIn
                            : box == u"7"_s  ? &b.adjustOut
                                             : &b.remark;
    *target = text;
}

} // namespace

class TestSave final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every Save from a card of 20.00 with 5.00 pending. One that goes through settles the
    // pending top-ups first, and only a top-up pays commission and credits an introducer (an
    // empty one when the member has none). One that does not leaves the card, the database and
    // the hand-off as they were.
    void saves_data() {
        QTest::addColumn<TransactionMode>("mode");
        QTest::addColumn<QStringList>("typed"); // box=text; "card=take|swap|locked|stranger"
        QTest::addColumn<Status>("status");
        QTest::addColumn<QString>("line");     // Billtype|PValue|NewValue|TopupValue|ExtraValue
        QTest::addColumn<QStringList>("told"); // the questions asked, then title: message
        const auto row = [](const char* name, TransactionMode mode, const QStringList& typed,
                            Status status, const QString& line, const QStringList& told) {
            QTest::newRow(name) << mode << typed << status << line << told;
        };
        const auto TopUp = TransactionMode::TopUp;
        const auto Withdraw = TransactionMode::Withdraw;
        const auto Adjust = TransactionMode::Adjustment;
        const QString add = u"Confirm to Add in value : %1 to Card ?"_s;
        const QString out = u"Confirm to withdraw out value : %1 from Card ?"_s;
        const QString notWritten = u"Message: Error Writing to Card !!!"_s;
        const QString nothing = u"message: Nothing to save !!!"_s;
        const QString negative = u"message: Negative Value Not Accepted !!!"_s;
        const QString insufficient = u"Message: Insufficient Value to withdraw !!!"_s;
        row("top-up 0 with extra 5", TopUp, {u"4="_s, u"11=5"_s}, Status::Posted, u"IN|5|30|0|5"_s,
            {add.arg(u"5.00"_s)});
        row("withdraw balance and pending", Withdraw, {u"8=25"_s}, Status::Posted,
            u"OUT|-25|0|NULL|NULL"_s, {out.arg(u"25.00"_s)});
        row("adjust in 5 and out 3", Adjust, {u"6=5"_s, u"7=3"_s}, Status::Posted,
            u"AIN|5|30|0|0"_s, {add.arg(u"5.00"_s)});
        row("adjust out all", Adjust, {u"7=25"_s}, Status::Posted, u"AOT|-25|0|NULL|NULL"_s,
            {out.arg(u"25.00"_s)});

        row("top-up nothing", TopUp, {u"4=0"_s}, Status::Refused, {}, {nothing});
        row("top-up negative", TopUp, {u"4=-1"_s, u"11=5"_s}, Status::Refused, {}, {negative});
        row("top-up negative extra", TopUp, {u"4=10"_s, u"11=-1000"_s}, Status::Refused, {},
            {negative});
        row("top-up beyond the money range", TopUp, {u"4=999999999999999"_s}, Status::Refused, {},
            {u"Message: Value out of range !!!"_s});
        row("withdraw nothing", Withdraw, {u"8=abc"_s}, Status::Refused, {}, {nothing});
        row("withdraw negative", Withdraw, {u"8=-5"_s}, Status::Refused, {}, {negative});
        row("withdraw a cent over balance and pending", Withdraw, {u"8=25.01"_s}, Status::Refused,
            {}, {insufficient});
        row("withdraw beyond the money range", Withdraw, {u"8=99999999999999999"_s},
            Status::Refused, {}, {u"Message: Value out of range !!!"_s});
        row("adjust nothing", Adjust, {}, Status::Refused, {}, {nothing});
        row("adjust out negative", Adjust, {u"6=5"_s, u"7=-1"_s}, Status::Refused, {}, {negative});
        row("adjust out a cent over", Adjust, {u"7=25.01"_s}, Status::Refused, {}, {insufficient});
        row("enquiry saves nothing", TransactionMode::Enquiry, {u"8=5"_s}, Status::Refused, {},
            {nothing});
        row("not a member", Withdraw, {u"8=10"_s, u"card=stranger"_s}, Status::Refused, {},
            {u"Message: Member either inactive or not Found in Database !!!"_s});

        row("answered No", Withdraw, {u"8=10"_s, u"confirm=no"_s}, Status::NotWritten, {},
            {out.arg(u"10.00"_s), notWritten});
        row("card taken away", Withdraw, {u"8=10"_s, u"card=take"_s}, Status::NotWritten, {},
            {out.arg(u"10.00"_s), notWritten});
        row("another card", Withdraw, {u"8=10"_s, u"card=swap"_s}, Status::NotWritten, {},
            {out.arg(u"10.00"_s),
             u"Message: Card on the reader is not the card read, press Connect again !!!"_s});
        row("card refuses the write", TopUp, {u"4=10"_s, u"card=locked"_s}, Status::NotWritten, {},
            {add.arg(u"10.00"_s), notWritten});
    }
    void saves() {
        QFETCH(TransactionMode, mode);
        QFETCH(QStringList, typed);
        QFETCH(QString, line);
        Till till;
        till.maxWithPending();
        till.connect();
        for (const QString& pair : typed) {
            if (pair == u"card=take"_s)
                till.sim.takeAway();
            else if (pair == u"card=swap"_s)
                till.card(u"000777"_s, u"Eve"_s, u"20"_s, {0x55, 0x66, 0x77, 0x88});
            else if (pair == u"card=locked"_s)
                QFile::setPermissions(till.sim.field(), QFile::ReadOwner);
            else if (pair == u"card=stranger"_s)
                till.connected.memberFound = false;
            else if (pair == u"confirm=no"_s)
                till.prompts.answers = {false};
            else
                type(till.boxes, pair);
        }
        const QByteArray before = till.sim.image();

        const SaveOutcome outcome = till.save(mode);
        QTEST(outcome.status, "status");
        QStringList told = till.prompts.asked;
        if (outcome.status != Status::Posted)
            told << outcome.title + u": "_s + outcome.message;
        QTEST(told, "told");
        const bool posted = !line.isEmpty();
        const bool topUp = posted && mode == TransactionMode::TopUp;
        QCOMPARE(till.f.rows(u"SELECT Billtype,PValue,NewValue,TopupValue,ExtraValue "
                             "FROM Customize_Transaction WHERE RefTrsNo<>'OPENING' ORDER BY ID"_s),
                 posted ? QString(u"PED|5|NULL|NULL|NULL\n"_s + line) : QString());
        QCOMPARE(
            till.f.rows(u"SELECT cardNo,FValue,UpdateStatus FROM Customize_Topup ORDER BY ID"_s),
            topUp    ? u"000123|5|1\n|0|0"_s
            : posted ? u"000123|5|1"_s
                     : u"000123|5|0"_s);
        QCOMPARE(till.f.count(u"Customize_StaffComm"_s), topUp ? 1 : 0);
        QCOMPARE(till.handOff(u"ReturnFlag"_s), posted ? u"1"_s : QString());
        if (posted) {
            QCOMPARE(till.cardValue(), line.section(u'|', 2, 2));
            QCOMPARE(outcome.refNo, u"15112026163305-000123-"_s);
            const auto* slip = std::get_if<reports::TransactionSlip>(&outcome.slip.slip);
            QVERIFY(slip && slip->refNo == outcome.refNo && slip->mode == mode);
            QVERIFY(outcome.slip.printAtOnce);
        } else if (!typed.contains(u"card=take"_s)) {
            QCOMPARE(till.sim.image(), before);
        }
    }

    // A card rewritten between Connect and Save with a record that would carry a control
    // character into the hand-off or the slip, or a negative balance, reads as unreadable:
    // nothing is written or posted.
    void hostileCardPostsNothing_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("balance");
        QTest::newRow("CR LF in NAME") << u"A\r\nWriteValue=9"_s << u"20"_s;
        QTest::newRow("ESC p in NAME") << u"TAN\x1bp"_s << u"20"_s;
        QTest::newRow("VALUE -50") << u"Max"_s << u"-50"_s;
    }
    void hostileCardPostsNothing() {
        QFETCH(QString, name);
        QFETCH(QString, balance);
        Till till;
        till.maxWithPending();
        till.connect();
        till.boxes.withdraw = u"10"_s;
        test::issueCard(till.sim, u"000123"_s, name, balance);
        const QByteArray before = till.sim.image();
        test::RecordingPrompts silent;
        card::CardData data;
        QVERIFY(card::MemberCard(till.s, silent).read(data) != card::ReadResult::Ok);
        QCOMPARE(till.save(TransactionMode::Withdraw).status, Status::NotWritten);
        QCOMPARE(till.f.count(u"Customize_Transaction"_s), 1); // the opening line alone
        QCOMPARE(till.sim.image(), before);
    }

    // A code with a quote and statement text reaches the database as a value.
    void quotedCodePostsAsItIs() {
        Till till;
        const QString code = u"O'1;DROP--"_s;
        till.f.addMember(code, u"Bo'"_s);
        till.card(code, u"Bo'"_s, u"20"_s);
        till.connect();
        till.boxes.withdraw = u"5"_s;
        QCOMPARE(till.save(TransactionMode::Withdraw).status, Status::Posted);
        QCOMPARE(
            till.f.rows(
                u"SELECT CardNo,Name,PValue FROM Customize_Transaction WHERE RefTrsNo<>'OPENING'"_s),
            code + u"|Bo'|-5"_s);
        QCOMPARE(till.cardValue(), u"15"_s);
    }

    // Two introduced members top up (10 % to the introducer each); the introducer's next
    // withdrawal settles both credits in one "PED" line and leaves older settled rows alone.
    void introducedMembersSettleInOnePedLine() {
        Till till;
        till.s.DownComm = 10.0;
        till.f.addMember(u"INTRO"_s, u"Ida"_s);
        till.f.addMember(u"M1"_s, u"Max"_s, u"INTRO"_s);
        till.f.addMember(u"M2"_s, u"Mia"_s, u"INTRO"_s);
        db::exec(till.f.db(),
                 u"INSERT INTO Customize_Topup (cardNo,DateInput,DateUpdate,UpdateStatus,FValue,"
                 "BillNo) VALUES ('INTRO','2026-11-01 00:00:00','2026-11-02 10:00:00',1,7,'H1')"_s);
        const auto save = [&](const QString& code, TransactionMode mode, const QString& amount,
                              std::array<card::uint8, 4> uid) {
            till.card(code, u"Ann"_s, u"20"_s, uid);
            till.connect();
            (mode == TransactionMode::TopUp ? till.boxes.topUp : till.boxes.withdraw) = amount;
            return till.save(mode).status;
        };
        QCOMPARE(save(u"M1"_s, TransactionMode::TopUp, u"100"_s, {1, 1, 1, 1}), Status::Posted);
        QCOMPARE(save(u"M2"_s, TransactionMode::TopUp, u"50"_s, {2, 2, 2, 2}), Status::Posted);
        QCOMPARE(pendingBalance(till.f.db(), u"INTRO"_s).format(), u"15.00"_s);
        QCOMPARE(save(u"INTRO"_s, TransactionMode::Withdraw, u"20"_s, {3, 3, 3, 3}),
                 Status::Posted);
        QCOMPARE(till.f.rows(u"SELECT Billtype,PValue,NewValue FROM Customize_Transaction "
                             "WHERE CardNo='INTRO' AND RefTrsNo<>'OPENING' ORDER BY ID"_s),
                 u"PED|15|NULL\nOUT|-20|15"_s);
        QCOMPARE(till.f.rows(u"SELECT UpdateStatus,DateUpdate FROM Customize_Topup WHERE "
                             "cardNo='INTRO' ORDER BY ID"_s),
                 u"1|2026-11-02 10:00:00\n1|2026-11-15 16:33:05\n1|2026-11-15 16:33:05"_s);
    }
};

QTEST_GUILESS_MAIN(TestSave)
#include "tst_save.moc"
