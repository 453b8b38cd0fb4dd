// The transaction screen end to end: StartApp, the staff entry, the simulated reader, a
// temporary database and settings file, as a till runs it.
#include <pondar/genclass.h>

#include "card/cardsim.h"
#include "card/membercard.h"
#include "reports/slip.h"
#include "shell/database.h"
#include "shell/inifile.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"
#include "transactions/save.h"

#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTabWidget>
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
        QFile ini(f.iniPath());
        if (!ini.open(QIODevice::WriteOnly))
            qFatal("cannot write the settings file");
        ini.write("[GeneralSetup]\r\n" + rates);
        ini.close();
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
    QString rows(const QString& sql) const {
        QStringList out;
        QSqlQuery q(f.db());
        if (!q.exec(sql))
            qFatal("%s", qPrintable(sql));
        while (q.next()) {
            QStringList cells;
            for (int i = 0; i < q.record().count(); ++i)
                cells << (q.isNull(i) ? u"NULL"_s : q.value(i).toString());
            out << cells.join(u'|');
        }
        return out.join(u'\n');
    }
    QByteArray printed() const {
        QFile printer(f.printerPath());
        return printer.open(QIODevice::ReadOnly) ? printer.readAll() : QByteArray();
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
    void topUpWorkedExample() {
        Till till;
        till.f.addMember(u"000045"_s, u"Ida"_s);
        till.maxWithPending(u"000045"_s);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        QStringList shown;
        Screens screens([&](QWidget* w) {
            QCOMPARE(w->windowTitle(), u"Mifare Entry"_s);
            auto* tabs = child<QTabWidget>(w, u"STab"_s);
            QVERIFY(tabs->isTabEnabled(0));
            QVERIFY(!tabs->isTabEnabled(1) && !tabs->isTabEnabled(2));
            QVERIFY(!child<QPushButton>(w, u"CBUT(5)"_s)->isEnabled());
            QCOMPARE(box(w, 4)->text(), u"100.00"_s);
            QCOMPARE(box(w, 11)->text(), u"10.00"_s);
            QCOMPARE(child<QLineEdit>(w, u"STCODE"_s)->text(), u"S01"_s);
            press(w, 2);
            for (int i : {0, 1, 2, 10})
                shown << box(w, i)->text();
            shown << child<QLineEdit>(w, u"DownLineCode"_s)->text();
            press(w, 1);
        });
        QVERIFY(till.start(u"TOPUP"_s, u"100"_s));
        QVERIFY(screens.main.ran());
        QCOMPARE(shown, QStringList({u"000123"_s, u"Max"_s, u"20.00"_s, u"5.00"_s, u"000045"_s}));
        QCOMPARE(boxes.texts(), QStringList{u"Confirm to Add in value : 110.00 to Card ?"_s});
        QCOMPARE(till.cardValue(), u"135"_s);

        const QString ref = u"15112026163305-000123-000045"_s;
        QCOMPARE(till.rows(u"SELECT Billtype,PValue,PreviousValue,NewValue,PendingValue,"
                           "TopupValue,ExtraValue,RefTrsNo,TrsNo,BillNo,TrsOutlet "
                           "FROM Customize_Transaction ORDER BY ID"_s),
                 u"PED|5|NULL|NULL|NULL|NULL|NULL|%1|T9|NULL|OUT1\n"
                 "IN|110|20|135|5|100|10|%1|T9|B7|OUT1"_s.arg(ref));
        QCOMPARE(till.rows(u"SELECT StaffCode,TopupValue,PValue,RefTrsNo FROM "
                           "Customize_StaffComm"_s),
                 u"S01|100|2|"_s + ref);
        QCOMPARE(till.rows(u"SELECT cardNo,FValue,UpdateStatus FROM Customize_Topup "
                           "ORDER BY ID"_s),
                 u"000123|5|1\n000045|5|0"_s);
        QCOMPARE(till.rows(u"SELECT Description FROM Customize_Log"_s),
                 u"Writing Topup Value :120.00 to CardNo : 000123/Max"_s);
        QStringList handOff;
        for (const char* key : {"CardNo", "CardName", "OldValue", "PenValue", "WriteValue",
                                "NewValue", "ReturnFlag", "ReturnRefTrsNo"})
            handOff << till.handOff(QString::fromLatin1(key));
        QCOMPARE(handOff, QStringList({u"000123"_s, u"Max"_s, u"20"_s, u"5"_s, u"110"_s, u"135"_s,
                                       u"1"_s, ref}));
        QVERIFY(till.app.session().TransactionOk);
        QCOMPARE(till.printed(),
                 reports::printerBytes(reports::transactionSlip(till.f.db(), ref, u"TOPUP"_s)));
        QVERIFY(till.printed().contains("Topup Value    : 100.00\r\nExtra Value    : 10.00\r\n"
                                        "New Balance    : 135.00\r\n"));
    }

    // Print on an enquiry previews the slip of what the screen shows; nothing is posted.
    void enquiryPrintsWhatTheScreenShows() {
        Till till;
        till.maxWithPending();
        test::MessageBoxes boxes;
        QString preview;
        test::OnModal slip(u"PFORM"_s, [&](QWidget* w) {
            preview = child<QPlainTextEdit>(w, u"RTF"_s)->toPlainText();
            child<QPushButton>(w, u"Command1"_s)->click();
        });
        Screens screens([&](QWidget* w) {
            QVERIFY(!child<QTabWidget>(w, u"STab"_s)->isTabEnabled(0));
            press(w, 2);
            press(w, 5);
            press(w, 0);
        });
        QVERIFY(!till.start(u"ENQUIRY"_s));
        QVERIFY(slip.ran());
        const QString expected =
            reports::enquirySlip(u"000123"_s, u"Max"_s, Currency::parse(u"20"_s), Moment);
        QCOMPARE(preview, QString(expected).replace(u"\r\n"_s, u"\n"_s));
        QCOMPARE(till.printed(), reports::printerBytes(expected));
        QCOMPARE(boxes.seen().size(), 0);
        QCOMPARE(till.f.count(u"Customize_Transaction"_s), 0);
    }

    // The modes' other Saves, each from a card of 20.00 with 5.00 pending.
    void saves_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QStringList>("typed"); // TXT index=text pairs
        QTest::addColumn<bool>("result");
        QTest::addColumn<QString>("card");
        QTest::addColumn<QString>("line");
        QTest::newRow("top-up 0 with extra 5")
            << u"TOPUP"_s << QStringList{u"4="_s, u"11=5"_s} << true << u"30"_s << u"IN|5"_s;
        QTest::newRow("withdraw balance and pending")
            << u"WITHDRAW"_s << QStringList{u"8=25"_s} << true << u"0"_s << u"OUT|-25"_s;
        QTest::newRow("adjust in 5 and out 3")
            << u"ADJUSTMENT"_s << QStringList{u"6=5"_s, u"7=3"_s} << false << u"30"_s << u"AIN|5"_s;
        QTest::newRow("adjust out")
            << u"ADJUSTMENT"_s << QStringList{u"7=12.5"_s, u"9=till short"_s} << false << u"12.5"_s
            << u"AOT|-12.5"_s;
    }
    void saves() {
        QFETCH(QString, mode);
        QFETCH(QStringList, typed);
        QFETCH(bool, result);
        QFETCH(QString, card);
        QFETCH(QString, line);
        Till till;
        till.maxWithPending();
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        Screens screens([&](QWidget* w) {
            press(w, 2);
            for (const QString& pair : typed) {
                const QStringList kv = pair.split(u'=');
                box(w, kv[0].toInt())->setText(kv[1]);
            }
            press(w, mode == u"TOPUP"_s ? 1 : mode == u"WITHDRAW"_s ? 3 : 4);
        });
        QCOMPARE(till.start(mode), result);
        QVERIFY(screens.main.ran());
        QCOMPARE(boxes.seen().size(), 1);
        QCOMPARE(till.cardValue(), card);
        QCOMPARE(till.rows(u"SELECT Billtype,PValue FROM Customize_Transaction ORDER BY ID"_s),
                 u"PED|5\n"_s + line);
        QCOMPARE(till.handOff(u"ReturnFlag"_s), u"1"_s);
    }

    // Refusals: a message, nothing written to the card or the database, the screen still open.
    void refusals_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("amount");
        QTest::addColumn<int>("save");
        QTest::addColumn<QString>("message");
        QTest::newRow("nothing") << u"TOPUP"_s << u"0"_s << 1 << u"message: Nothing to save !!!"_s;
        QTest::newRow("negative") << u"WITHDRAW"_s << u"-1"_s << 3
                                  << u"message: Negative Value Not Accepted !!!"_s;
        QTest::newRow("over balance and pending")
            << u"WITHDRAW"_s << u"25.01"_s << 3 << u"Message: Insufficient Value to withdraw !!!"_s;
        QTest::newRow("answered No")
            << u"WITHDRAW"_s << u"10"_s << 3 << u"Message: Error Writing to Card !!!"_s;
        QTest::newRow("beyond the money range")
            << u"WITHDRAW"_s << u"99999999999999999"_s << 3 << u"Message: Value out of range !!!"_s;
    }
    void refusals() {
        QFETCH(QString, mode);
        QFETCH(QString, amount);
        QFETCH(int, save);
        QFETCH(QString, message);
        Till till;
        till.maxWithPending();
        const QByteArray before = till.sim.image();
        test::MessageBoxes boxes; // answers the confirmation No
        bool stillOpen = false;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            box(w, mode == u"TOPUP"_s ? 4 : 8)->setText(amount);
            press(w, save);
            stillOpen = w->isVisible();
            press(w, 0);
        });
        QVERIFY(!till.start(mode));
        QVERIFY(stillOpen);
        QStringList seen;
        for (const auto& b : boxes.seen()) {
            if (b.icon == QMessageBox::Critical)
                seen << b.title + u": "_s + b.text;
        }
        QCOMPARE(seen, QStringList{message});
        QCOMPARE(till.sim.image(), before);
        QCOMPARE(till.f.count(u"Customize_Transaction"_s), 0);
        QCOMPARE(till.f.count(u"Customize_Log"_s), 0);
        QVERIFY(!till.app.session().TransactionOk);
    }

    // Between Connect and Save the card may leave the reader or another may take its place.
    void cardChangedBeforeSave_data() {
        QTest::addColumn<bool>("swap");
        QTest::addColumn<QString>("message");
        QTest::newRow("taken away") << false << u"Error Writing to Card !!!"_s;
        QTest::newRow("another card")
            << true << u"Card on the reader is not the card read, press Connect again !!!"_s;
    }
    void cardChangedBeforeSave() {
        QFETCH(bool, swap);
        QFETCH(QString, message);
        Till till;
        till.f.addMember(u"000123"_s, u"Max"_s);
        till.f.addMember(u"000777"_s, u"Eve"_s);
        till.card(u"000123"_s, u"Max"_s, u"20"_s);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        QByteArray other;
        Screens screens([&](QWidget* w) {
            press(w, 2);
            if (swap) {
                till.card(u"000777"_s, u"Eve"_s, u"20"_s, {0x55, 0x66, 0x77, 0x88});
                other = till.sim.image();
            } else {
                till.sim.takeAway();
            }
            press(w, 3);
            press(w, 0);
        });
        QVERIFY(!till.start(u"WITHDRAW"_s, u"10"_s));
        QCOMPARE(boxes.texts(), QStringList{message});
        QCOMPARE(till.sim.image(), other);
        QCOMPARE(till.f.count(u"Customize_Transaction"_s), 0);
    }

    void unknownOrInactiveMemberCannotSave() {
        Till till;
        till.f.addMember(u"000123"_s, u"Max"_s, {}, true);
        till.card(u"000123"_s, u"Max"_s, u"20"_s);
        const QByteArray before = till.sim.image();
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        Screens screens([&](QWidget* w) {
            press(w, 2);
            QCOMPARE(box(w, 8)->text(), QString()); // the entry is cleared
            box(w, 8)->setText(u"5"_s);
            press(w, 3);
            press(w, 0);
        });
        QVERIFY(!till.start(u"WITHDRAW"_s, u"10"_s));
        QCOMPARE(boxes.texts(), QStringList(2, u"Member either inactive or not Found in Database "
                                               "!!!"_s));
        QCOMPARE(till.sim.image(), before);
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
            QCOMPARE(box(w, 2)->text(), u"75.00"_s);
            press(w, 0);
        });
        QVERIFY(!till.start(u"TOPUP"_s, u"50"_s));
        QVERIFY(!saveOffered);
        QCOMPARE(till.cardValue(), u"75"_s);
        QCOMPARE(boxes.seen().size(), 2);
        const QString told = boxes.seen().at(1).text;
        for (const QString& part :
             {u"000123"_s, u"55.00"_s, u"75.00"_s, u"15112026163305-000123-"_s})
            QVERIFY2(told.contains(part), qPrintable(told));
        QFile recovery(recoveryFilePath(till.f.iniPath()));
        QVERIFY(recovery.open(QIODevice::ReadOnly));
        QVERIFY(recovery.readAll().contains("15112026163305-000123-"));
        QCOMPARE(till.handOff(u"ReturnFlag"_s), u"0"_s);
    }

    void staffEntryClosedOpensNoTransaction() {
        Till till;
        test::OnModal staff(u"MFCOMM"_s,
                            [](QWidget* w) { child<QPushButton>(w, u"CEXIT"_s)->click(); });
        test::OnModal main(
            u"MFMAIN"_s, [](QWidget* w) { press(w, 0); }, 1500);
        QVERIFY(!till.start(u"TOPUP"_s, u"10"_s));
        QVERIFY(staff.ran());
        QVERIFY(!main.ran());
    }

    void extraFollowsTheTopUpAndAdjustmentsAreExclusive() {
        Till till(QByteArrayLiteral("MemberComm=12.5\r\n"));
        QStringList extras;
        Screens topUp([&](QWidget* w) {
            QLineEdit* typed = box(w, 4);
            typed->clear();
            QTest::keyClicks(typed, u"8"_s);
            extras << box(w, 11)->text();
            typed->setText(u"abc"_s);
            extras << box(w, 11)->text();
            press(w, 0);
        });
        QVERIFY(!till.start(u"TOPUP"_s));
        QCOMPARE(extras, QStringList({u"1.00"_s, u"0.00"_s}));

        QStringList left;
        test::OnModal adjust(u"MFMAIN"_s, [&](QWidget* w) {
            test::focusOn(box(w, 7));
            box(w, 7)->setText(u"4"_s);
            test::focusOn(box(w, 6));
            left << box(w, 7)->text();
            box(w, 6)->setText(u"10"_s);
            test::focusOn(box(w, 9));
            left << box(w, 6)->text() << box(w, 7)->text();
            press(w, 0);
        });
        QVERIFY(!till.start(u"ADJUSTMENT"_s));
        QCOMPARE(left, QStringList({u"4.00"_s, u"10.00"_s, u"0.00"_s}));
    }
};

QTEST_MAIN(TestTransactionScreen)
#include "tst_mfmain.moc"
