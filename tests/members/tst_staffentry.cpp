#include <pondar/genclass.h>

#include "members/session.h"

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
        test::onScreen(Screen::StaffEntry, u"MFCOMM"_s, s, [&](QWidget* w) {
            enterCode(w, code);
            QTRY_COMPARE(QApplication::focusWidget(), box(w));
            // A click on "&Ok" cannot take focus from the box either.
            QTest::mouseClick(button(w, "CSAVE"), Qt::LeftButton);
            stayedOpen = w->isVisible();
            QTRY_COMPARE(QApplication::focusWidget(), box(w));
            button(w, "CEXIT")->click();
        });
        QVERIFY(stayedOpen);
        QCOMPARE(boxes.texts(), QStringList(2, u"Invalid Staff Code !!!"_s));
        QVERIFY(!s.DialogAccepted);
    }

    // Ok hands back the box's text trimmed and upper-cased (a bad character sends the operator
    // back to the box but does not stop the click that left it); any other way out, nothing.
    void returnsWhatOkConfirms_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("leave");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QStringList>("messages");
        QTest::newRow("ok, lower case") << u"s03"_s << u"ok"_s << u"CHOY"_s << QStringList();
        QTest::newRow("ok, blanks")
            << u" s03 "_s << u"ok"_s << QString() << QStringList{u"Invalid Input Character !!!"_s};
        QTest::newRow("ok, empty") << QString() << u"ok"_s << QString() << QStringList();
        for (const char* leave : {"close", "escape", "window"})
            QTest::newRow(leave) << u"S01"_s << QString::fromLatin1(leave) << u"ALICE TAN"_s
                                 << QStringList();
    }
    void returnsWhatOkConfirms() {
        QFETCH(QString, typed);
        QFETCH(QString, leave);
        QFETCH(QString, shown);
        QFETCH(QStringList, messages);
        const bool accepted = leave == u"ok"_s;
        SessionSettings s = test::sessionOn(*f);
        s.DialogAccepted = !accepted;
        test::MessageBoxes boxes;
        test::onScreen(Screen::StaffEntry, u"MFCOMM"_s, s, [&](QWidget* w) {
            enterCode(w, typed);
            QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), shown);
            if (leave == u"ok"_s)
                QTest::mouseClick(button(w, "CSAVE"), Qt::LeftButton);
            else if (leave == u"close"_s)
                QTest::mouseClick(button(w, "CEXIT"), Qt::LeftButton);
            else if (leave == u"escape"_s)
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
            else
                w->close();
        });
        QCOMPARE(boxes.texts(), messages);
        QCOMPARE(s.DialogAccepted, accepted);
        QCOMPARE(s.CommStaffCode, accepted ? typed.trimmed().toUpper() : QString());
        QCOMPARE(s.CommStaffName, accepted ? shown : QString());
    }

    void downArrowOffersActiveStaffAndValidatesThePick() {
        SessionSettings s = test::sessionOn(*f);
        QStringList offered;
        test::onScreen(Screen::StaffEntry, u"MFCOMM"_s, s, [&](QWidget* w) {
            test::OnModal pick(u"SEAFORM"_s, [&](QWidget* lookup) {
                auto* grid = test::child<QTableView>(lookup, u"DataGrid1"_s);
                for (int row = 0; row < grid->model()->rowCount(); ++row)
                    offered.append(grid->model()->index(row, 0).data().toString());
                QTest::keyClick(grid, Qt::Key_Return);
            });
            test::focusOn(box(w));
            QTest::keyClick(box(w), Qt::Key_Down);
            QVERIFY(pick.ran());
            QCOMPARE(box(w)->text(), u"S01"_s);
            QTRY_COMPARE(QApplication::focusWidget(), button(w, "CSAVE"));
            QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), u"ALICE TAN"_s);
            button(w, "CSAVE")->click();
        });
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
