// The transaction screen end to end: StartApp, the staff entry, the simulated reader, a
// temporary database and settings file, as a till runs it.
#include <pondar/genclass.h>

#include "card/cardsim.h"
#include "card/membercard.h"
#include "shell/database.h"
#include "shell/inifile.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"
#include "transactions/save.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using test::child;

namespace {

const QDateTime Moment(QDate(2026, 11, 15), QTime(16, 33, 5));

QLineEdit* box(QWidget* screen, int index) {
    return child<QLineEdit>(screen, u"TXT(%1)"_s.arg(index));
}
void press(QWidget* screen, int index) {
    child<QPushButton>(screen, u"CBUT(%1)"_s.arg(index))->click();
}

// A till: the settings file with the three rates, a database, and a card on the reader.
struct Till {
    test::Fixture f;
    test::CardSim sim;
    GenClass app;

    explicit Till(const QByteArray& rates = "MemberComm=10\r\nDownComm=5\r\nServerComm=2\r\n") {
        test::writeFile(f.iniPath(), "[GeneralSetup]\r\n" + rates);
        sim.attach(app.session());
        app.session().clock = [] { return Moment; };
        f.addStaff(u"S01"_s, u"Sam"_s);
    }

    // Places a member's card holding this balance on the reader.
    void card(const QString& code, const QString& name, const QString& balance,
              std::array<card::uint8, 4> uid = {0x11, 0x22, 0x33, 0x44}) {
        sim.put(uid);
        SessionSettings s;
        sim.attach(s);
        test::RecordingPrompts yes;
        card::MemberCard c(s, yes);
        if (!c.openSelectLogin(card::MemberSector) || !c.writeSerial() || !c.writeCode(code) ||
            !c.writeName(name) ||
            !c.confirmAndWriteValue(u"IN"_s, Currency(), Currency::parse(balance)))
            qFatal("cannot issue the card");
        c.close();
    }
    // Member 000123 with 5.00 pending and a card of 20.00 on the reader.
    void maxWithPending(const QString& introducer = {}) {
        f.addMember(u"000123"_s, u"Max"_s, introducer);
        db::exec(f.db(),
                 u"INSERT INTO Customize_Topup (cardNo,UpdateStatus,FValue) VALUES (?,0,5)"_s,
                 {u"000123"_s});
        card(u"000123"_s, u"Max"_s, u"20"_s);
    }
    QString cardValue() const {
        const QByteArray block = sim.block(card::ValueSector * 4);
        return QString::fromLatin1(block.left(block.indexOf('\0')));
    }

    bool start(const QString& mode, const QString& amount = u"0"_s) {
        return app.StartApp(u"S01"_s, u"conn"_s, u"15/11/2026"_s, f.printerPath(), u"OUT1"_s,
                            f.iniPath(), f.db(), mode, u"T9"_s, u"B7"_s, Currency::parse(amount));
    }
    QString handOff(const QString& key) const {
        return IniFile(f.iniPath()).read(u"TRANSACTION"_s, key);
    }
};

// Staff entry with this code, then the transaction screen driven by `step`.
struct Screens {
    test::OnModal staff;
    test::OnModal main;
    Screens(std::function<void(QWidget*)> step, const QString& staffCode = u"S01"_s)
        : staff(u"MFCOMM"_s,
                [staffCode](QWidget* w) {
                    child<QLineEdit>(w, u"TXT"_s)->setText(staffCode);
                    child<QPushButton>(w, u"CSAVE"_s)->click();
                })
        , main(u"MFMAIN"_s, std::move(step)) {}
};

} // namespace

class TestTransactionScreen final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Balance 20.00, pending 5.00, top-up 100.00 with 10 % extra, ServerComm 2, DownComm 5 for
    // the introducer 000045: every row, the card, the hand-off and the slip to the cent.
    void topUpWorkedExample() {
        Till till;
        till.f.addMember(u"000045"_s, u"Ida"_s);
        till.maxWithPending(u"000045"_s);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        QStringList shown;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            for (int i : {0, 1, 2, 10, 4, 11})
                shown << box(w, i)->text();
            shown << child<QLineEdit>(w, u"DownLineCode"_s)->text();
            press(w, 1);
        });
        QVERIFY(till.start(u"TOPUP"_s, u"100"_s));
        QCOMPARE(shown.join(u' '), u"000123 Max 20.00 5.00 100.00 10.00 000045"_s);
        QCOMPARE(boxes.texts(), QStringList{u"Confirm to Add in value : 110.00 to Card ?"_s});
        QCOMPARE(till.cardValue(), u"135"_s);

        const QString ref = u"15112026163305-000123-000045"_s;
        const QString common = ref + u"|2026-11-15 00:00:00|OUT1|T9|"_s;
        QCOMPARE(till.f.rows(u"SELECT Billtype,PValue,PreviousValue,NewValue,PendingValue,"
                             "TopupValue,ExtraValue,RefTrsNo,TrsDate,TrsOutlet,TrsNo,BillNo,CardNo,"
                             "Name,Remark FROM Customize_Transaction ORDER BY ID"_s),
                 u"PED|5|NULL|NULL|NULL|NULL|NULL|"_s + common + u"NULL|000123|Max|NULL\n"_s +
                     u"IN|110|20|135|5|100|10|"_s + common + u"B7|000123|Max|"_s);
        // The pending row settled; the introducer's 5 % of the top-up (not of the extra) waits
        // under the top-up's reference, with no bill number.
        QCOMPARE(till.f.rows(u"SELECT cardNo,UpdateStatus,DateUpdate,FValue,DateInput,TrsNo,"
                             "RefTrsNo,BillNo FROM Customize_Topup ORDER BY ID"_s),
                 u"000123|1|2026-11-15 16:33:05|5|NULL|NULL|NULL|NULL\n"
                 "000045|0|NULL|5|2026-11-15 00:00:00|T9|"_s +
                     ref + u"|NULL"_s);
        QCOMPARE(till.f.rows(u"SELECT StaffCode,TopupValue,PValue,RefTrsNo,TrsDate,CardNo,Name "
                             "FROM Customize_StaffComm"_s),
                 u"S01|100|2|"_s + ref + u"|2026-11-15 00:00:00|000123|Max"_s);
        QCOMPARE(till.f.rows(u"SELECT Description FROM Customize_Log"_s),
                 u"Writing Topup Value :120.00 to CardNo : 000123/Max"_s);
        QCOMPARE(test::readFile(till.f.iniPath()),
                 "[GeneralSetup]\r\nMemberComm=10\r\nDownComm=5\r\nServerComm=2\r\n"
                 "[TRANSACTION]\r\nReturnFlag=1\r\nCardNo=000123\r\nCardName=Max\r\nOldValue=20\r\n"
                 "PenValue=5\r\nWriteValue=110\r\nNewValue=135\r\nReturnRefTrsNo=" +
                     ref.toLatin1() + "\r\n");
        // The printer file: ESC @, CR LF, the slip, CR LF, then the cut GS V 66 0.
        const QByteArray printed = test::readFile(till.f.printerPath());
        QVERIFY(printed.startsWith("\x1b@\r\n"));
        QVERIFY(printed.endsWith(QByteArray("\r\n\x1dVB\0", 6)));
        QVERIFY(printed.contains("Topup Value    : 100.00\r\nExtra Value    : 10.00\r\n"
                                 "New Balance    : 135.00\r\n"));
    }

    // Every Save from a card of 20.00 with 5.00 pending. One that goes through settles the
    // pending top-ups first, and only a top-up pays commission and credits an introducer (an
    // empty one when the member has none). One refused leaves the card, the database and the
    // hand-off as they were, and the screen open.
    void saves_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QStringList>("typed"); // TXT index=text pairs; "card=take|swap"
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("line");     // Billtype|PValue|NewValue|TopupValue|ExtraValue
        QTest::addColumn<QStringList>("told"); // title: text of every message box
        const auto row = [](const char* name, const QString& mode, const QStringList& typed,
                            bool result, const QString& line, const QStringList& told) {
            QTest::newRow(name) << mode << typed << result << line << told;
        };
        const QString add = u"Question: Confirm to Add in value : %1 to Card ?"_s;
        const QString out = u"Question: Confirm to withdraw out value : %1 from Card ?"_s;
        const QString failed = u"Message: Error Writing to Card !!!"_s;
        row("top-up 0 with extra 5", u"TOPUP"_s, {u"4="_s, u"11=5"_s}, true, u"IN|5|30|0|5"_s,
            {add.arg(u"5.00"_s)});
        row("withdraw balance and pending", u"WITHDRAW"_s, {u"8=25"_s}, true,
            u"OUT|-25|0|NULL|NULL"_s, {out.arg(u"25.00"_s)});
        row("adjust in 5 and out 3", u"ADJUSTMENT"_s, {u"6=5"_s, u"7=3"_s}, false,
            u"AIN|5|30|0|0"_s, {add.arg(u"5.00"_s)});
        row("nothing", u"TOPUP"_s, {u"4=0"_s}, false, {}, {u"message: Nothing to save !!!"_s});
        row("negative", u"TOPUP"_s, {u"4=-1"_s}, false, {},
            {u"message: Negative Value Not Accepted !!!"_s});
        row("negative extra", u"TOPUP"_s, {u"4=10"_s, u"11=-1000"_s}, false, {},
            {u"message: Negative Value Not Accepted !!!"_s});
        row("a cent over balance and pending", u"WITHDRAW"_s, {u"8=25.01"_s}, false, {},
            {u"Message: Insufficient Value to withdraw !!!"_s});
        row("beyond the money range", u"WITHDRAW"_s, {u"8=99999999999999999"_s}, false, {},
            {u"Message: Value out of range !!!"_s});
        row("answered No", u"WITHDRAW"_s, {u"8=10"_s, u"confirm=no"_s}, false, {},
            {out.arg(u"10.00"_s), failed});
        row("card taken away", u"WITHDRAW"_s, {u"8=10"_s, u"card=take"_s}, false, {}, {failed});
        row("another card", u"WITHDRAW"_s, {u"8=10"_s, u"card=swap"_s}, false, {},
            {u"Message: Card on the reader is not the card read, press Connect again !!!"_s});
    }
    void saves() {
        QFETCH(QString, mode);
        QFETCH(QStringList, typed);
        QFETCH(QString, line);
        Till till;
        till.maxWithPending();
        test::MessageBoxes boxes;
        if (!typed.contains(u"confirm=no"_s))
            boxes.queue(QMessageBox::Yes);
        bool stillOpen = false;
        QByteArray atSave;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            for (const QString& pair : typed) {
                const QStringList kv = pair.split(u'=');
                if (pair == u"card=take"_s)
                    till.sim.takeAway();
                else if (pair == u"card=swap"_s)
                    till.card(u"000777"_s, u"Eve"_s, u"20"_s, {0x55, 0x66, 0x77, 0x88});
                else if (kv[0] != u"confirm"_s)
                    box(w, kv[0].toInt())->setText(kv[1]);
            }
            atSave = till.sim.image();
            press(w, mode == u"TOPUP"_s ? 1 : mode == u"WITHDRAW"_s ? 3 : 4);
            stillOpen = w->isVisible();
            if (stillOpen)
                press(w, 0);
        });
        QTEST(till.start(mode), "result");
        QStringList told;
        for (const auto& b : boxes.seen())
            told << b.title + u": "_s + b.text;
        QTEST(told, "told");
        const bool posted = !line.isEmpty();
        const bool topUp = posted && mode == u"TOPUP"_s;
        QCOMPARE(till.f.rows(u"SELECT Billtype,PValue,NewValue,TopupValue,ExtraValue "
                             "FROM Customize_Transaction ORDER BY ID"_s),
                 posted ? QString(u"PED|5|NULL|NULL|NULL\n"_s + line) : QString());
        QCOMPARE(
            till.f.rows(u"SELECT cardNo,FValue,UpdateStatus FROM Customize_Topup ORDER BY ID"_s),
            topUp    ? u"000123|5|1\n|0|0"_s
            : posted ? u"000123|5|1"_s
                     : u"000123|5|0"_s);
        QCOMPARE(till.f.count(u"Customize_StaffComm"_s), topUp ? 1 : 0);
        QCOMPARE(till.handOff(u"ReturnFlag"_s), posted ? u"1"_s : u"0"_s);
        if (!posted) {
            QVERIFY(stillOpen);
            QCOMPARE(till.sim.image(), atSave);
        }
    }

    // A card whose record would carry a control character into the hand-off or the slip, or
    // whose balance is negative, reads as unreadable: nothing can be saved from it.
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
        till.f.addMember(u"000123"_s, u"Max"_s);
        till.card(u"000123"_s, name, balance);
        const QByteArray before = till.sim.image();
        test::MessageBoxes boxes;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            box(w, txt::Withdraw)->setText(u"10"_s);
            press(w, 3);
            if (w->isVisible())
                press(w, 0);
        });
        QVERIFY(!till.start(u"WITHDRAW"_s));
        QVERIFY(!boxes.texts().isEmpty());
        QCOMPARE(boxes.texts().constFirst(), u"Error Reading Device !!!"_s);
        QCOMPARE(till.f.count(u"Customize_Transaction"_s), 0);
        QCOMPARE(till.handOff(u"ReturnFlag"_s), u"0"_s);
        QCOMPARE(till.sim.image(), before);
    }

    // A code with a quote and statement text reaches the database as a value.
    void quotedCodePostsAsItIs() {
        Till till;
        const QString code = u"O'1;DROP--"_s;
        till.f.addMember(code, u"Bo'"_s);
        till.card(code, u"Bo'"_s, u"20"_s);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        Screens screens([&](QWidget* w) {
            press(w, 2);
            press(w, 3);
        });
        QVERIFY(till.start(u"WITHDRAW"_s, u"5"_s));
        QCOMPARE(till.f.rows(u"SELECT CardNo,Name,PValue FROM Customize_Transaction"_s),
                 code + u"|Bo'|-5"_s);
        QCOMPARE(till.cardValue(), u"15"_s);
    }

    // The card took the new value, then the database failed: the operator and the recovery
    // file learn what the card holds, nothing is offered twice, and the host hears false.
    void databaseFailureAfterTheCardWrite() {
        Till till;
        till.f.addMember(u"000123"_s, u"Max"_s);
        till.card(u"000123"_s, u"Max"_s, u"20"_s);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        bool saveOffered = true;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            // After StartApp, which would create a missing table again.
            db::exec(till.f.db(), u"DROP TABLE Customize_StaffComm"_s);
            press(w, 1);
            saveOffered = child<QPushButton>(w, u"CBUT(1)"_s)->isEnabled();
            press(w, 0);
        });
        QVERIFY(!till.start(u"TOPUP"_s, u"50"_s));
        QVERIFY(!saveOffered);
        QCOMPARE(till.cardValue(), u"75"_s);
        QCOMPARE(till.handOff(u"ReturnFlag"_s), u"0"_s);
        QCOMPARE(boxes.seen().size(), 2);
        const QString told = boxes.seen().at(1).text;
        const QString file = QString::fromUtf8(test::readFile(recoveryFilePath(till.f.iniPath())));
        for (const QString& part :
             {u"000123"_s, u"55.00"_s, u"75.00"_s, u"15112026163305-000123-"_s}) {
            QVERIFY2(told.contains(part), qPrintable(told));
            QVERIFY2(file.contains(part), qPrintable(file));
        }
    }
};

QTEST_MAIN(TestTransactionScreen)
#include "tst_mfmain.moc"
