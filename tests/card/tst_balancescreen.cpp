#include "card/balancescreen.h"
#include "card/cardsim.h"
#include "shell/database.h"
#include "shell/screens.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

void typePassword(QWidget* gate, const QString& password) {
    auto* text1 = test::child<QLineEdit>(gate, u"Text1"_s);
    QTest::keyClicks(text1, password);
    QTest::keyClick(text1, Qt::Key_Return); // the confirm is the default button
}

QString boxes(MFBAL* display) {
    display->refresh();
    QStringList out;
    for (int i = 0; i < 4; ++i)
        out.append(test::child<QLineEdit>(display, u"TXT(%1)"_s.arg(i))->text());
    return out.join(u'|');
}

} // namespace

class TestBalanceScreen final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Silent and empty with no card; pending top-ups are those not yet on the card.
    void showsTheCardOnTheReader() {
        test::Fixture f;
        test::CardSim sim;
        SessionSettings s;
        s.Conn = f.db();
        sim.attach(s);
        test::MessageBoxes messages;
        MFBAL display(s);
        QCOMPARE(boxes(&display), u"|||"_s);

        test::issueCard(sim, u"000001"_s, u"TAN AH KOW"_s, u"1234.5"_s);
        for (const auto& [value, status] : {std::pair{"10", 0}, {"15", 0}, {"99", 1}})
            db::exec(f.db(),
                     u"INSERT INTO Customize_Topup (CardNo, FValue, UpdateStatus) VALUES (?,?,?)"_s,
                     {u"000001"_s, QString::fromLatin1(value), status});
        db::exec(f.db(), u"INSERT INTO Customize_Transaction (CardNo,Billtype,NewValue) "
                         "VALUES ('000001','IN',1234.5)"_s);
        QCOMPARE(boxes(&display), u"000001|TAN AH KOW|1234.50|25.00"_s);
        // A card rewritten with more than its ledger holds still shows the ledger's balance.
        test::issueCard(sim, u"000001"_s, u"TAN AH KOW"_s, u"9999"_s);
        QCOMPARE(boxes(&display), u"000001|TAN AH KOW|1234.50|25.00"_s);
        auto* done = test::child<QLabel>(&display, u"LastTransaction"_s);
        QVERIFY(done->isHidden());
        // A Save at the till while the card is in view: shown with the new balance.
        db::exec(f.db(),
                 u"INSERT INTO Customize_Transaction (CardNo,Billtype,PValue,NewValue,RefTrsNo) "
                 "VALUES ('000001','IN',10,1244.5,'R2')"_s);
        display.refresh();
        QVERIFY(!done->isHidden());
        QCOMPARE(done->text(), u"Top Up 10.00   New Balance : 1244.50"_s);

        sim.takeAway();
        QCOMPARE(boxes(&display), u"|||"_s);
        QVERIFY(messages.seen().isEmpty());
    }

    // Only F12 and the supervisor password (case-sensitive) close the display.
    void closesOnlyWithThePassword() {
        SessionSettings s;
        s.Reader = makeAbsentReader();
        test::MessageBoxes messages;
        bool openAfterClose = false, openAfterWrongPassword = false;
        std::unique_ptr<test::OnModal> rightGate;
        test::OnModal wrongGate(u"MESC"_s, [&](QWidget* gate) {
            typePassword(gate, u"krwd3917"_s);
            test::child<QPushButton>(gate, u"Command2"_s)->click();
        });
        test::OnModal display(u"MFBAL"_s, [&](QWidget* w) {
            w->close();
            openAfterClose = w->isVisible();
            QTest::keyClick(w, Qt::Key_F12);
            openAfterWrongPassword = w->isVisible();
            rightGate = std::make_unique<test::OnModal>(
                u"MESC"_s, [](QWidget* gate) { typePassword(gate, u"KRWD3917"_s); });
            QTest::keyClick(w, Qt::Key_F12);
        });
        showBalanceDisplay(s);
        QVERIFY(display.ran() && openAfterClose && openAfterWrongPassword);
        QVERIFY(rightGate && rightGate->ran());
        QCOMPARE(messages.texts(), QStringList{u"Invalid Password !!!"_s});
    }

    // The figures grow with the window; F11 puts the display full screen.
    void figuresScaleWithTheWindow() {
        SessionSettings s;
        s.Reader = makeAbsentReader();
        test::MessageBoxes messages;
        MFBAL display(s);
        display.show();
        auto* balance = test::child<QLineEdit>(&display, u"TXT(2)"_s);
        const int small = balance->fontInfo().pixelSize();
        display.resize(2000, 1200);
        QTRY_VERIFY(balance->fontInfo().pixelSize() >= 2 * small);
        QVERIFY(display.rect().contains(balance->mapTo(&display, balance->rect().bottomRight())));
        QTest::keyClick(&display, Qt::Key_F11);
        QVERIFY(display.isFullScreen());
    }
};

QTEST_MAIN(TestBalanceScreen)
#include "tst_balancescreen.moc"
