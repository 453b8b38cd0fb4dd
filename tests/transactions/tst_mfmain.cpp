// The transaction screen end to end: StartApp, the staff entry, the simulated reader, a
// temporary database and settings file, as a till runs it.
#include <pondar/genclass.h>

#include "support/dialogs.h"
#include "transactions/save.h"
#include "transactions/till.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using test::child;

namespace {

QLineEdit* box(QWidget* screen, int index) {
    return child<QLineEdit>(screen, u"TXT(%1)"_s.arg(index));
}
void press(QWidget* screen, int index) {
    child<QPushButton>(screen, u"CBUT(%1)"_s.arg(index))->click();
}

// A till run by StartApp.
struct Till : test::TillBase {
    GenClass app;

    Till() {
        sim.attach(app.session());
        app.session().clock = [] { return test::TillMoment; };
    }
    bool start(const QString& mode, const QString& amount = u"0"_s) {
        return app.StartApp(u"S01"_s, u"conn"_s, u"15/11/2026"_s, f.printerPath(), u"OUT1"_s,
                            f.iniPath(), f.db(), mode, u"T9"_s, u"B7"_s, Currency::parse(amount));
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

// A key to whatever has focus, as the cashier's keyboard sends it.
void key(Qt::Key k) {
    QTest::keyClick(QApplication::focusWidget(), k);
}

} // namespace

class TestTransactionScreen final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // A top-up without the mouse: the staff code and Enter twice, F2 for Connect, then Enter
    // through the amount, the extra and the staff box presses Save.
    void topUpByKeyboard() {
        Till till;
        till.maxWithPending();
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        test::OnModal staff(u"MFCOMM"_s, [](QWidget* w) {
            QVERIFY(QTest::qWaitForWindowActive(w));
            QTest::keyClicks(QApplication::focusWidget(), u"s01"_s);
            key(Qt::Key_Return);
            key(Qt::Key_Return);
        });
        QStringList focusPath;
        QString tips;
        test::OnModal main(u"MFMAIN"_s, [&](QWidget* w) {
            QVERIFY(QTest::qWaitForWindowActive(w));
            for (int i : {0, 2, 5, 1})
                tips += child<QPushButton>(w, u"CBUT(%1)"_s.arg(i))->toolTip() + u' ';
            key(Qt::Key_F2);
            for (int i = 0; i < 3; ++i) {
                focusPath << QApplication::focusWidget()->objectName();
                key(Qt::Key_Return);
            }
        });
        QVERIFY(till.start(u"TOPUP"_s, u"100"_s));
        QVERIFY(staff.ran() && main.ran());
        QCOMPARE(focusPath, (QStringList{u"TXT(4)"_s, u"TXT(11)"_s, u"STCODE"_s}));
        QCOMPARE(tips, u"Close (Esc) Connect (F2) Print (F5) Save (F9) "_s);
        QCOMPARE(boxes.texts(), QStringList{u"Confirm to Add in value : 110.00 to Card ?"_s});
        QCOMPARE(till.cardValue(), u"135"_s);
        QCOMPARE(till.f.rows(u"SELECT StaffCode FROM Customize_StaffComm"_s), u"S01"_s);
    }

    // Escape closes the screen as Close does; F9 saves the mode's tab from a box; the card's
    // read-only boxes are no tab stops.
    void functionKeysAndEscape() {
        Till till;
        till.f.addMember(u"000123"_s, u"Max"_s);
        till.card(u"000123"_s, u"Max"_s, u"20"_s);
        test::MessageBoxes boxes;
        {
            Screens escaped([](QWidget* w) {
                QVERIFY(QTest::qWaitForWindowActive(w));
                key(Qt::Key_F2);
                key(Qt::Key_Escape);
            });
            QVERIFY(!till.start(u"WITHDRAW"_s));
            QVERIFY(escaped.main.ran());
        }
        boxes.queue(QMessageBox::Yes);
        bool cardBoxesSkipped = false;
        Screens screens([&](QWidget* w) {
            QVERIFY(QTest::qWaitForWindowActive(w));
            key(Qt::Key_F2);
            cardBoxesSkipped = box(w, 0)->focusPolicy() == Qt::ClickFocus &&
                               box(w, 2)->focusPolicy() == Qt::ClickFocus;
            QTest::keyClicks(box(w, 8), u"7.5"_s);
            key(Qt::Key_F9);
        });
        QVERIFY(till.start(u"WITHDRAW"_s));
        QVERIFY(cardBoxesSkipped);
        QCOMPARE(till.cardValue(), u"12.5"_s);
        QCOMPARE(boxes.texts().size(), 1);
    }

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
        QCOMPARE(
            till.f.rows(
                u"SELECT Billtype,PValue,PreviousValue,NewValue,PendingValue,"
                "TopupValue,ExtraValue,RefTrsNo,TrsDate,TrsOutlet,TrsNo,BillNo,CardNo,"
                "Name,Remark FROM Customize_Transaction WHERE RefTrsNo<>'OPENING' ORDER BY ID"_s),
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
        // A card issued before cards were registered is registered at its first Connect.
        QCOMPARE(till.f.rows(u"SELECT Description FROM Customize_Log ORDER BY ID"_s),
                 u"Card Registered : CardNo : 000123 Serial : V11223344S\n"
                 "Writing Topup Value :120.00 to CardNo : 000123/Max"_s);
        QCOMPARE(test::readFile(till.f.iniPath()),
                 QByteArray(test::RatesIni) +
                     "[TRANSACTION]\r\nReturnFlag=1\r\nCardNo=000123\r\nCardName=Max\r\n"
                     "OldValue=20\r\nPenValue=5\r\nWriteValue=110\r\nNewValue=135\r\n"
                     "ReturnRefTrsNo=" +
                     ref.toLatin1() + "\r\nPosted=1\r\n");
        // The printer file: ESC @, CR LF, the slip, CR LF, then the cut GS V 66 0.
        const QByteArray printed = test::readFile(till.f.printerPath());
        QVERIFY(printed.startsWith("\x1b@\r\n"));
        QVERIFY(printed.endsWith(QByteArray("\r\n\x1dVB\0", 6)));
        QVERIFY(printed.contains("Topup Value    : 100.00\r\nExtra Value    : 10.00\r\n"
                                 "New Balance    : 135.00\r\n"));
    }

    // A forged card at Connect: told, then the supervisor writes the ledger's balance onto it,
    // and the screen shows what the card now holds.
    void forgedCardPutRightAtConnect() {
        Till till;
        till.f.addMember(u"000123"_s, u"Max"_s);
        till.card(u"000123"_s, u"Max"_s, u"20"_s);
        test::issueCard(till.sim, u"000123"_s, u"Max"_s, u"9999"_s);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        test::OnModal password(u"MESC"_s, [](QWidget* w) {
            child<QLineEdit>(w, u"Text1"_s)->setText(u"KRWD3917"_s);
            child<QPushButton>(w, u"Command1"_s)->click();
        });
        QString shown;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            shown = box(w, 2)->text();
            press(w, 0);
        });
        QVERIFY(!till.start(u"WITHDRAW"_s));
        QVERIFY(password.ran());
        QCOMPARE(boxes.texts().value(0).section(u'\n', 0, 0),
                 u"Card Balance does not match the Database !!!"_s);
        QCOMPARE(boxes.texts().value(1), u"Write the Database balance to the Card ?"_s);
        QCOMPARE(shown, u"20.00"_s);
        QCOMPARE(till.cardValue(), u"20"_s);
    }

    // A blocked card shows nothing at Connect and so offers nothing to save.
    void blockedCardRefusedAtConnect() {
        Till till;
        till.f.addMember(u"000123"_s, u"Max"_s);
        till.card(u"000123"_s, u"Max"_s, u"20"_s);
        db::exec(till.f.db(), u"INSERT INTO Customize_Card (CardNo,CardSerial,Status) "
                              "VALUES ('000123','V11223344S','BLOCKED')"_s);
        test::MessageBoxes boxes;
        QStringList shown;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            shown << box(w, 0)->text() << box(w, 2)->text();
            press(w, 0);
        });
        QVERIFY(!till.start(u"WITHDRAW"_s));
        QCOMPARE(boxes.texts(), QStringList{u"Card Blocked !!! Please see the Supervisor"_s});
        QCOMPARE(shown, (QStringList{QString(), QString()}));
    }

    // The card took the new value, then the database failed: the operator is told, nothing is
    // offered twice, and the host hears true (the customer owes the value) with Posted "0".
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
        QVERIFY(till.start(u"TOPUP"_s, u"50"_s));
        QVERIFY(!saveOffered);
        QCOMPARE(till.handOff(u"ReturnFlag"_s) + till.handOff(u"Posted"_s), u"10"_s);
        QCOMPARE(till.cardValue(), u"75"_s);
        QCOMPARE(boxes.seen().size(), 2);
        QVERIFY(boxes.seen().at(1).text.contains(recoveryFilePath(till.f.iniPath())));
    }
};

QTEST_MAIN(TestTransactionScreen)
#include "tst_mfmain.moc"
