#include <pondar/genclass.h>

#include "members/session.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

QPushButton* button(QWidget* w, const char* name) {
    return test::child<QPushButton>(w, QString::fromLatin1(name));
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

    // "&Ok" hands back the code upper-cased with the name; an inactive code keeps the operator
    // in the box; "&Close" hands back nothing.
    void returnsWhatOkConfirms_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("message");
        QTest::newRow("inactive") << u"S02"_s << false << QString() << u"Invalid Staff Code !!!"_s;
        QTest::newRow("ok, lower case") << u"s03"_s << true << u"CHOY"_s << QString();
        QTest::newRow("other case finds S01") << u"s01"_s << true << u"ALICE TAN"_s << QString();
        QTest::newRow("close") << u"S01"_s << false << u"ALICE TAN"_s << QString();
    }
    void returnsWhatOkConfirms() {
        QFETCH(QString, typed);
        QFETCH(bool, ok);
        QFETCH(QString, shown);
        QFETCH(QString, message);
        SessionSettings s = test::sessionOn(*f);
        test::MessageBoxes boxes;
        const std::optional<StaffMember> staff = test::onScreen(
            u"MFCOMM"_s,
            [&](QWidget* w) {
                auto* box = test::child<QLineEdit>(w, u"TXT"_s);
                test::focusOn(box);
                QTest::keyClicks(box, typed);
                QTest::keyClick(box, Qt::Key_Tab);
                if (!message.isEmpty())
                    QTRY_COMPARE(QApplication::focusWidget(), box);
                QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), shown);
                QTest::mouseClick(button(w, ok ? "CSAVE" : "CEXIT"), Qt::LeftButton);
            },
            [&] { return askStaffMember(s); });
        QCOMPARE(boxes.texts(), message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(staff.has_value(), ok);
        if (staff)
            QCOMPARE(staff->code + u'|' + staff->name, typed.toUpper() + u'|' + shown);
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
    }
};

QTEST_MAIN(TestStaffEntry)
#include "tst_staffentry.moc"
