#include <pondar/genclass.h>

#include "members/session.h"
#include "shell/screens.h"
#include "support/dialogs.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

QLineEdit* box(QWidget* w) {
    return test::child<QLineEdit>(w, u"TXT"_s);
}
QPushButton* button(QWidget* w, const char* name) {
    return test::child<QPushButton>(w, QString::fromLatin1(name));
}

// Types a code into the box and leaves it with Tab, as the operator does.
void enterCode(QWidget* w, const QString& code) {
    test::focusOn(box(w));
    QTest::keyClicks(box(w), code);
    QTest::keyClick(box(w), Qt::Key_Tab);
}

} // namespace

class TestStaffEntry final : public QObject {
    Q_OBJECT

    test::Fixture* f = nullptr;

private Q_SLOTS:
    void init() {
        f = new test::Fixture;
        f->addStaff(u"S01"_s, u"ALICE TAN"_s);
        f->addStaff(u"S02"_s, u"BOB LEFT"_s, true);
        f->addStaff(u"s03"_s, u"CHOY"_s);
    }
    void cleanup() { delete f; }

    void unknownOrInactiveCodeKeepsTheOperatorInTheBox_data() {
        QTest::addColumn<QString>("code");
        QTest::newRow("inactive") << u"S02"_s;
        QTest::newRow("unknown") << u"S99"_s;
    }
    void unknownOrInactiveCodeKeepsTheOperatorInTheBox() {
        QFETCH(QString, code);
        SessionSettings s = test::sessionOn(*f);
        test::MessageBoxes boxes;
        bool stayedOpen = false;
        test::OnModal step(u"MFCOMM"_s, test::closingOnFailure([&](QWidget* w) {
                               enterCode(w, code);
                               QTRY_COMPARE(QApplication::focusWidget(), box(w));
                               // A click on "&Ok" cannot take focus from the box either.
                               QTest::mouseClick(button(w, "CSAVE"), Qt::LeftButton);
                               stayedOpen = w->isVisible();
                               QTRY_COMPARE(QApplication::focusWidget(), box(w));
                               button(w, "CEXIT")->click();
                           }));
        showScreen(Screen::StaffEntry, s);
        QVERIFY(step.ran());
        QVERIFY(stayedOpen);
        QCOMPARE(boxes.texts(), QStringList(2, u"Invalid Staff Code !!!"_s));
        QVERIFY(!s.DialogAccepted);
    }

    // Ok hands back the box's text trimmed and upper-cased; a bad character sends the operator
    // back to the box but does not stop the click that left it.
    void okReturnsTheCodeTrimmedInUpperCase_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QString>("name");
        QTest::newRow("lower case") << u"s03"_s << QStringList() << u"CHOY"_s;
        QTest::newRow("blanks") << u" s03 "_s << QStringList{u"Invalid Input Character !!!"_s}
                                << QString();
        QTest::newRow("empty") << QString() << QStringList() << QString();
    }
    void okReturnsTheCodeTrimmedInUpperCase() {
        QFETCH(QString, typed);
        QFETCH(QStringList, messages);
        QFETCH(QString, name);
        SessionSettings s = test::sessionOn(*f);
        test::MessageBoxes boxes;
        test::OnModal step(u"MFCOMM"_s, test::closingOnFailure([&](QWidget* w) {
                               enterCode(w, typed);
                               QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), name);
                               QTest::mouseClick(button(w, "CSAVE"), Qt::LeftButton);
                           }));
        showScreen(Screen::StaffEntry, s);
        QVERIFY(step.ran());
        QCOMPARE(boxes.texts(), messages);
        QVERIFY(s.DialogAccepted);
        QCOMPARE(s.CommStaffCode, typed.trimmed().toUpper());
        QCOMPARE(s.CommStaffName, name);
    }

    void leavingAfterAValidCodeReturnsNothing_data() {
        QTest::addColumn<int>("how");
        QTest::newRow("close button") << 0;
        QTest::newRow("escape") << 1;
        QTest::newRow("window closed") << 2;
    }
    void leavingAfterAValidCodeReturnsNothing() {
        QFETCH(int, how);
        SessionSettings s = test::sessionOn(*f);
        s.DialogAccepted = true;
        test::OnModal step(u"MFCOMM"_s, test::closingOnFailure([&](QWidget* w) {
                               enterCode(w, u"S01"_s);
                               QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), u"ALICE TAN"_s);
                               if (how == 0)
                                   QTest::mouseClick(button(w, "CEXIT"), Qt::LeftButton);
                               else if (how == 1)
                                   QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
                               else
                                   w->close();
                           }));
        showScreen(Screen::StaffEntry, s);
        QVERIFY(step.ran());
        QVERIFY(!s.DialogAccepted);
        QCOMPARE(s.CommStaffCode, QString());
        QCOMPARE(s.CommStaffName, QString());
    }

    void downArrowOffersActiveStaffAndValidatesThePick() {
        SessionSettings s = test::sessionOn(*f);
        QStringList offered;
        test::OnModal step(u"MFCOMM"_s, test::closingOnFailure([&](QWidget* w) {
                               test::OnModal pick(u"SEAFORM"_s, [&](QWidget* lookup) {
                                   auto* grid = test::child<QTableView>(lookup, u"DataGrid1"_s);
                                   for (int row = 0; row < grid->model()->rowCount(); ++row)
                                       offered.append(
                                           grid->model()->index(row, 0).data().toString());
                                   QTest::keyClick(grid, Qt::Key_Return);
                               });
                               test::focusOn(box(w));
                               QTest::keyClick(box(w), Qt::Key_Down);
                               QVERIFY(pick.ran());
                               QCOMPARE(box(w)->text(), u"S01"_s);
                               QTRY_COMPARE(QApplication::focusWidget(), button(w, "CSAVE"));
                               QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), u"ALICE TAN"_s);
                               button(w, "CSAVE")->click();
                           }));
        showScreen(Screen::StaffEntry, s);
        QVERIFY(step.ran());
        QCOMPARE(offered, (QStringList{u"S01"_s, u"s03"_s}));
        QCOMPARE(s.CommStaffCode, u"S01"_s);
    }

    void topUpLeftAtStaffEntryOpensNoTransactionScreen() {
        GenClass app;
        test::OnModal staff(u"MFCOMM"_s, [](QWidget* w) { button(w, "CEXIT")->click(); });
        test::OnModal transaction(
            u"MFMAIN"_s, [](QWidget* w) { w->close(); }, 200);
        QVERIFY(!app.StartApp(u"S01"_s, {}, u"15/11/2026"_s, f->printerPath(), u"OUT1"_s,
                              f->iniPath(), f->db(), u"TOPUP"_s, u"T1"_s, u"B1"_s,
                              Currency::parse(u"50"_s)));
        QVERIFY(staff.ran());
        QVERIFY(!transaction.ran());
        QVERIFY(!app.session().DialogAccepted);
    }
};

QTEST_MAIN(TestStaffEntry)
#include "tst_staffentry.moc"
