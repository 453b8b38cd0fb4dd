// The supervisor's tools: a blocked card takes nothing anywhere, a replacement carries the
// ledger balance, a void puts card and ledger back without deleting a row, a ceiling stops a
// top-up before the card is touched, and card issue never strands another member's value.
#include "card/balance.h"
#include "members/cardissue.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "transactions/supervisor.h"
#include "transactions/till.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <functional>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using Status = SaveOutcome::Status;

namespace {

const std::array<card::uint8, 4> NewCard = {0x55, 0x66, 0x77, 0x88};

// Runs a step when the operator is asked to confirm, then answers Yes.
class ActingPrompts final : public card::CardPrompts {
public:
    bool ask(const QString& question) override {
        asked << question;
        if (onAsk)
            onAsk();
        return true;
    }
    void error(const QString&, const QString&) override {}
    std::function<void()> onAsk;
    QStringList asked;
};

// Member 000123 (introduced by 000045) with 5.00 pending and a registered card of 20.00.
struct Scene : test::SaveTill {
    Scene() {
        f.addMember(u"000045"_s, u"Ida"_s);
        maxWithPending(u"000045"_s);
        connect();
        admitCard(s, s.CardSerial, boxes.cardNo, true);
    }
    QString cards() const {
        return f.rows(u"SELECT CardNo,CardSerial,Status FROM Customize_Card ORDER BY ID"_s);
    }
    // A posted top-up of 100 with 10 extra: the card goes 20 + 5 pending + 110 = 135.
    void topUp() {
        boxes.topUp = u"100"_s;
        boxes.extra = u"10"_s;
        QCOMPARE(save(TransactionMode::TopUp).status, Status::Posted);
        QCOMPARE(cardValue(), u"135"_s);
    }
    QString lines() const {
        return f.rows(u"SELECT Billtype,PValue,PreviousValue,NewValue,PendingValue,Remark "
                      "FROM Customize_Transaction WHERE RefTrsNo<>'OPENING' ORDER BY ID"_s);
    }
};

} // namespace

class TestSupervisor final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Blocked by member code, the card is refused at Connect, by the balance display and by a
    // Save already under way; its replacement carries the ledger balance and matches at once.
    void blockAndReplace() {
        Scene till;
        QCOMPARE(till.cards(), u"000123|V11223344S|ACTIVE"_s);
        const SupervisorResult blocked = blockCard(till.s, u" 000123 "_s, u"lost"_s);
        QVERIFY(blocked.done);
        QCOMPARE(blocked.message, u"Card of Member 000123 / Max Blocked !!!"_s);

        QVERIFY(!admitCard(till.s, till.s.CardSerial, u"000123"_s, true));
        const card::BalanceTexts shown = card::pollBalance(till.s);
        QCOMPARE(shown.name, CardBlockedText);
        QVERIFY(shown.balance.isEmpty());
        till.boxes.withdraw = u"10"_s;
        const SaveOutcome save = till.save(TransactionMode::Withdraw);
        QCOMPARE(save.status, Status::Refused);
        QCOMPARE(save.message, CardBlockedText);
        QCOMPARE(till.cardValue(), u"20"_s);

        // Bad input, and a card the supervisor has in hand is never the replacement.
        QCOMPARE(blockCard(till.s, u"000999"_s, {}).message, u"Member not Found in Database !!!"_s);
        QCOMPARE(blockCard(till.s, u"000045"_s, {}).message,
                 u"No Card registered for this Member !!!"_s);
        QCOMPARE(blockCard(till.s, u"000123"_s, {}).message, u"Card already Blocked !!!"_s);
        QCOMPARE(issueReplacementCard(till.s, till.prompts, u"000123"_s).message,
                 u"Card on the reader is the Member's blocked Card !!!"_s);
        QCOMPARE(issueReplacementCard(till.s, till.prompts, u"000045"_s).message,
                 u"Member has no blocked Card to replace !!!"_s);

        till.sim.put(NewCard);
        const SupervisorResult replaced = issueReplacementCard(till.s, till.prompts, u"000123"_s);
        QCOMPARE(replaced.message, u"Replacement Card saved with Balance : 20.00 !!!"_s);
        QVERIFY(replaced.done);
        QCOMPARE(till.cards(), u"000123|V11223344S|BLOCKED\n000123|V55667788S|ACTIVE"_s);
        till.connect();
        QCOMPARE(till.boxes.balance, u"20.00"_s);
        QCOMPARE(till.boxes.pending, u"5.00"_s); // still pending, not on the card
        QVERIFY(admitCard(till.s, till.s.CardSerial, u"000123"_s, true));
        QVERIFY(checkCardAgainstLedger(till.s, u"000123"_s, Currency::parse(u"20"_s)).matches);
        QCOMPARE(issueReplacementCard(till.s, till.prompts, u"000123"_s).message,
                 u"Member already has an active Card !!!"_s);
        QCOMPARE(till.f.count(u"Customize_Transaction"_s), 1); // no ledger line for any of it
        QCOMPARE(till.f
                     .scalar(u"SELECT count(*) FROM Customize_Log WHERE Description LIKE "
                             "'Card Blocked%' OR Description LIKE 'Replacement Card%'"_s)
                     .toInt(),
                 2);
    }

    // The top-up's every line is reversed; the introducer's credit, already on the introducer's
    // card, is netted out by a negative pending row at that card's next Save.
    void voidOfATopUp() {
        Scene till;
        till.topUp();
        const QString ref = till.f
                                .scalar(u"SELECT RefTrsNo FROM Customize_Transaction WHERE "
                                        "Billtype='IN'"_s)
                                .toString();
        db::exec(till.f.db(), u"UPDATE Customize_Topup SET UpdateStatus=1 WHERE cardNo='000045'"_s);
        till.prompts.asked.clear();
        const SupervisorResult voided = voidLastTransaction(till.s, till.prompts);
        QVERIFY2(voided.done, qPrintable(voided.message));
        QVERIFY(voided.message.contains(u"credit of 5.00 was already written to Card 000045"_s));
        QCOMPARE(till.prompts.asked,
                 QStringList{u"Void Transaction "_s + ref + u" : IN 110.00 ?"_s});
        QCOMPARE(till.cardValue(), u"20"_s);
        QCOMPARE(till.lines(), u"PED|5|NULL|NULL|NULL|NULL\nIN|110|20|135|5|\n"
                               "PED|-5|NULL|NULL|NULL|Void "_s +
                                   ref + u"\nAOT|-110|135|20|-5|Void "_s + ref);
        QCOMPARE(till.f.rows(u"SELECT StaffCode,TopupValue,PValue FROM Customize_StaffComm "
                             "ORDER BY ID"_s),
                 u"S01|100|2\nS01|-100|-2"_s);
        QCOMPARE(pendingBalance(till.s.Conn, u"000123"_s), Currency::parse(u"5"_s));
        QCOMPARE(pendingBalance(till.s.Conn, u"000045"_s), Currency::parse(u"-5"_s));
        QCOMPARE(ledgerBalance(till.s.Conn, u"000123"_s).balance, Currency::parse(u"20"_s));
        QCOMPARE(voidLastTransaction(till.s, till.prompts).message,
                 u"Last Transaction is already Voided !!!"_s);

        // The introducer's next top-up settles the negative row with the rest.
        till.card(u"000045"_s, u"Ida"_s, u"10"_s, NewCard);
        till.connect();
        till.boxes.topUp = u"10"_s;
        till.boxes.extra = u"0"_s;
        QCOMPARE(till.save(TransactionMode::TopUp).status, Status::Posted);
        QCOMPARE(till.cardValue(), u"15"_s);
        QCOMPARE(pendingBalance(till.s.Conn, u"000045"_s), Currency());
    }

    // A void that cannot be done posts nothing and leaves the card as it was.
    void voidRefusals_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("message");
        QTest::newRow("another business date")
            << u"date"_s << u"Only a Transaction of this Business Date can be Voided !!!"_s;
        QTest::newRow("card not matching the ledger")
            << u"forged"_s << u"Card Balance does not match the Database !!!"_s;
        QTest::newRow("card taken away mid-way") << u"take"_s << u"Error Writing to Card !!!"_s;
        QTest::newRow("card write fails") << u"locked"_s << u"Error Writing to Card !!!"_s;
        QTest::newRow("nothing to void") << u"nothing"_s << u"No Transaction to Void !!!"_s;
    }
    void voidRefusals() {
        QFETCH(QString, how);
        QFETCH(QString, message);
        Scene till;
        if (how != u"nothing"_s)
            till.topUp();
        else
            db::exec(till.f.db(), u"DELETE FROM Customize_Transaction"_s);
        if (how == u"nothing"_s)
            test::issueCard(till.sim, u"000123"_s, u"Max"_s, u"0"_s);
        const QString before = till.lines();
        const int logged = till.f.count(u"Customize_Log"_s);
        ActingPrompts prompts;
        if (how == u"date"_s)
            till.s.BzDate = u"16/11/2026"_s;
        else if (how == u"forged"_s)
            test::issueCard(till.sim, u"000123"_s, u"Max"_s, u"500"_s);
        else if (how == u"take"_s)
            prompts.onAsk = [&] { till.sim.takeAway(); };
        else if (how == u"locked"_s)
            prompts.onAsk = [&] { QFile::setPermissions(till.sim.field(), QFile::ReadOwner); };
        const QByteArray card = till.sim.image();
        const SupervisorResult result = voidLastTransaction(till.s, prompts);
        QVERIFY(!result.done);
        QVERIFY2(result.message.startsWith(message), qPrintable(result.message));
        QCOMPARE(till.lines(), before);
        QCOMPARE(till.f.count(u"Customize_StaffComm"_s), how == u"nothing"_s ? 0 : 1);
        if (how != u"take"_s)
            QCOMPARE(till.sim.image(), card);
        if (how != u"forged"_s) // the mismatch is logged as always
            QCOMPARE(till.f.count(u"Customize_Log"_s), logged);
    }

    // The card took the void and the database failed: told, on the recovery trail, nothing posted.
    void voidNotPosted() {
        Scene till;
        till.topUp();
        const QString before = till.lines();
        ActingPrompts prompts;
        prompts.onAsk = [&] {
            db::exec(till.f.db(), u"ALTER TABLE Customize_Log RENAME TO Customize_Log_gone"_s);
        };
        const SupervisorResult result = voidLastTransaction(till.s, prompts);
        QVERIFY(!result.done);
        QVERIFY(result.message.startsWith(
            u"The Card was written but the void was not posted to the database !!!\n"
            "Card No : 000123 / Max\nVoid of Ref No : "_s));
        QCOMPARE(till.cardValue(), u"20"_s);
        QCOMPARE(till.lines(), before);
        QVERIFY(test::readFile(recoveryFilePath(till.s.IniPath))
                    .contains("Card Bal. : 135.00 to 20.00"));
    }

    // Past the ceiling a top-up or adjustment in is refused before anything is asked; up to it,
    // and any withdrawal, goes through. The settings file gives the ceiling.
    void balanceCeiling() {
        Scene till;
        till.s.MaxBalance = Currency::parse(u"100"_s);
        till.boxes.topUp = u"75.01"_s; // 20 + 5 pending + 75.01
        SaveOutcome out = till.save(TransactionMode::TopUp);
        QCOMPARE(out.status, Status::Refused);
        QCOMPARE(out.title + u": "_s + out.message, u"Message: Balance Limit Exceeded !!!"_s);
        QCOMPARE(out.focus, txt::TopUp);
        till.boxes.topUp.clear();
        till.boxes.adjustIn = u"80"_s;
        QCOMPARE(till.save(TransactionMode::Adjustment).message, u"Balance Limit Exceeded !!!"_s);
        QVERIFY(till.prompts.asked.isEmpty());
        QCOMPARE(till.cardValue(), u"20"_s);
        till.boxes.adjustIn.clear();
        till.boxes.topUp = u"75"_s;
        QCOMPARE(till.save(TransactionMode::TopUp).status, Status::Posted);
        QCOMPARE(till.cardValue(), u"100"_s);

        SessionSettings s;
        s.IniPath = till.f.iniPath();
        s.BzDate = u"15/11/2026"_s;
        test::writeFile(s.IniPath, "[GeneralSetup]\r\nMaxBalance=500\r\n");
        loadSettings(s);
        QCOMPARE(s.MaxBalance, Currency::parse(u"500"_s));
        test::writeFile(s.IniPath, "[GeneralSetup]\r\nMaxBalance=-1\r\n");
        QVERIFY_THROWS_EXCEPTION(Error, loadSettings(s));
    }

    // Overwriting a card that still carries another member's value needs the supervisor, who is
    // shown whose value it is; the card then becomes the new member's.
    void cardIssueGuardsAnotherMembersValue() {
        Scene till;
        till.f.addMember(u"000200"_s, u"Nia"_s);
        till.prompts.answers = {true, true}; // store, overwrite
        QCOMPARE(members::issueCard(till.s, till.prompts, u"000200"_s, u"Nia"_s),
                 members::CardIssue::Declined);
        QCOMPARE(till.prompts.details, QStringList{u"Card No : 000123 / Max\nBalance : 20.00"_s});
        QCOMPARE(till.prompts.asked, (QStringList{u"Store Data to Card "_s,
                                                  u"This Card contain Data !!! Continue "
                                                  "overwrite ? "_s,
                                                  u"MESC"_s}));
        QCOMPARE(till.cardValue(), u"20"_s);

        till.prompts.supervisor = true;
        QCOMPARE(members::issueCard(till.s, till.prompts, u"000200"_s, u"Nia"_s),
                 members::CardIssue::Written);
        QCOMPARE(till.cards(), u"000123|V11223344S|BLOCKED\n000200|V11223344S|ACTIVE"_s);
        QCOMPARE(cardStatus(till.s.Conn, till.s.CardSerial), CardStatus::Active);

        QVERIFY(blockCard(till.s, u"000200"_s, {}).done);
        QCOMPARE(members::issueCard(till.s, till.prompts, u"000200"_s, u"Nia"_s),
                 members::CardIssue::Declined);
        QCOMPARE(till.prompts.errors, QStringList{u"Message: "_s + CardBlockedText});
    }

    // The screen's main path: block by code, then the replacement onto the card on the reader,
    // each reported in a "Message" box.
    void screenBlocksAndReplaces() {
        Scene till;
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes); // "Store Data to Card "
        test::OnModal screen(u"MSUP"_s, [&](QWidget* w) {
            test::child<QLineEdit>(w, u"TXT(0)"_s)->setText(u"000123"_s);
            test::child<QPushButton>(w, u"CBUT(1)"_s)->click();
            till.sim.put(NewCard);
            test::child<QPushButton>(w, u"CBUT(2)"_s)->click();
            test::child<QPushButton>(w, u"CBUT(0)"_s)->click();
        });
        showSupervisor(till.s);
        QVERIFY(screen.ran());
        QCOMPARE(
            boxes.texts(),
            (QStringList{u"Card of Member 000123 / Max Blocked !!!"_s, u"Store Data to Card "_s,
                         u"Replacement Card saved with Balance : 20.00 !!!"_s}));
        for (const auto& seen : boxes.seen())
            QCOMPARE(seen.title, seen.icon == QMessageBox::Question ? u"Question"_s : u"Message"_s);
        QCOMPARE(till.cards(), u"000123|V11223344S|BLOCKED\n000123|V55667788S|ACTIVE"_s);
    }
};

QTEST_MAIN(TestSupervisor)
#include "tst_supervisor.moc"
