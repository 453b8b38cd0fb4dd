#include "card/balancescreen.h"
#include "card/cardsim.h"
#include "card/membercard.h"
#include "shell/database.h"
#include "shell/screens.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QApplication>
#include <QFrame>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

QStringList boxes(QWidget* display) {
    QStringList out;
    for (int i = 0; i < 4; ++i)
        out.append(test::child<QLineEdit>(display, u"TXT(%1)"_s.arg(i))->text());
    return out;
}

void issue(SessionSettings& s, const QString& code, const QString& value) {
    test::RecordingPrompts prompts;
    MemberCard card(s, prompts);
    if (!card.openSelectLogin(MemberSector) || !card.writeSerial() || !card.writeCode(code) ||
        !card.writeName(u"TAN AH KOW"_s) || !card.openSelectLogin(ValueSector) ||
        !card.writeField(ValueSector, u"VALUE"_s, value))
        qWarning("issue failed");
}

void addTopup(const test::Fixture& f, const QString& card, const QString& value, int status) {
    db::exec(f.db(), u"INSERT INTO Customize_Topup (CardNo, FValue, UpdateStatus) VALUES (?,?,?)"_s,
             {card, value, status});
}

} // namespace

class TestBalanceScreen final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void showsTheCardOnTheReader() {
        test::Fixture f;
        test::CardSim sim;
        SessionSettings s;
        s.Conn = f.db();
        sim.attach(s);
        test::MessageBoxes messages;
        MFBAL display(s);

        display.refresh();
        QCOMPARE(boxes(&display), QStringList(4, QString()));

        sim.put({1, 2, 3, 4});
        issue(s, u"000001"_s, u"1234.5"_s);
        display.refresh();
        QCOMPARE(boxes(&display),
                 (QStringList{u"000001"_s, u"TAN AH KOW"_s, u"1234.50"_s, u"0.00"_s}));
        QCOMPARE(s.CurrentCardNo, u"000001"_s);

        addTopup(f, u"000001"_s, u"10"_s, 0);
        addTopup(f, u"000001"_s, u"15"_s, 0);
        addTopup(f, u"000001"_s, u"99"_s, 1); // already on the card
        addTopup(f, u"000002"_s, u"7"_s, 0);
        display.refresh();
        QCOMPARE(boxes(&display).last(), u"25.00"_s);

        sim.takeAway();
        display.refresh();
        QCOMPARE(boxes(&display), QStringList(4, QString()));
        QVERIFY(messages.seen().isEmpty());
    }

    // A broken connection is reported once, not once a second.
    void databaseFailureShownOnce() {
        test::CardSim sim;
        SessionSettings s;
        sim.attach(s);
        sim.put({1, 2, 3, 4});
        issue(s, u"000001"_s, u"5"_s);
        test::MessageBoxes messages;
        MFBAL display(s);
        display.refresh();
        display.refresh();
        QCOMPARE(messages.seen().size(), 1);
        QCOMPARE(messages.seen().first().title, u"Message"_s);
    }

    void frameStaysCentred() {
        SessionSettings s;
        s.Reader = makeAbsentReader();
        MFBAL display(s);
        display.show();
        display.resize(900, 700);
        QApplication::processEvents();
        const QRect frame = test::child<QFrame>(&display, u"FrmMain"_s)->geometry();
        QVERIFY(qAbs(frame.center().x() - 450) <= 1);
        QVERIFY(qAbs(frame.center().y() - 350) <= 1);
    }

    // Only F12 and the supervisor password (case-sensitive, by Enter or "&OK") close the
    // display; a wrong one sends the operator back to the box.
    void closesOnlyWithThePassword() {
        SessionSettings s;
        s.Reader = makeAbsentReader();
        s.DialogAccepted = true;
        test::MessageBoxes messages;
        bool openAfterEscape = false, openAfterWrongPassword = false, acceptedAfterExit = true;
        bool focusBackInText1 = false;
        std::unique_ptr<test::OnModal> rightGate;
        test::OnModal wrongGate(u"MESC"_s, [&](QWidget* gate) {
            auto* text1 = test::child<QLineEdit>(gate, u"Text1"_s);
            QTest::keyClicks(text1, u"krwd3917"_s);
            QTest::keyClick(text1, Qt::Key_Return);
            // The window may not be active again yet; its own focus child is what counts.
            focusBackInText1 = gate->isVisible() && gate->focusWidget() == text1;
            test::child<QPushButton>(gate, u"Command2"_s)->click();
        });
        test::OnModal display(u"MFBAL"_s, [&](QWidget* w) {
            QTest::keyClick(w, Qt::Key_Escape);
            w->close();
            openAfterEscape = w->isVisible();
            QTest::keyClick(w, Qt::Key_F12);
            openAfterWrongPassword = w->isVisible();
            acceptedAfterExit = s.DialogAccepted;
            rightGate = std::make_unique<test::OnModal>(u"MESC"_s, [](QWidget* gate) {
                QTest::keyClicks(test::child<QLineEdit>(gate, u"Text1"_s), u"KRWD3917"_s);
                test::child<QPushButton>(gate, u"Command1"_s)->click();
            });
            QTest::keyClick(w, Qt::Key_F12);
        });
        QVERIFY(showScreen(Screen::Balance, s));
        QVERIFY(display.ran());
        QVERIFY(openAfterEscape);
        QVERIFY(openAfterWrongPassword);
        QVERIFY(focusBackInText1);
        QVERIFY(!acceptedAfterExit);
        QVERIFY(rightGate && rightGate->ran());
        QVERIFY(s.DialogAccepted);
        QCOMPARE(messages.texts(), QStringList{u"Invalid Password !!!"_s});
    }
};

QTEST_MAIN(TestBalanceScreen)
#include "tst_balancescreen.moc"
