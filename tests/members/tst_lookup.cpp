#include "members/memberdata.h"
#include "members/session.h"

#include <QAbstractItemModel>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

QTableView* grid(QWidget* w) {
    return test::child<QTableView>(w, u"DataGrid1"_s);
}

} // namespace

class TestLookup final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pickHandsBackTheCodeAsShown_data() {
        QTest::addColumn<bool>("doubleClick");
        QTest::addColumn<QString>("code");
        QTest::newRow("enter") << false << u"B2"_s;
        QTest::newRow("double-click") << true << u"B2"_s;
        QTest::newRow("trailing blanks kept") << false << u"B3  "_s;
    }
    void pickHandsBackTheCodeAsShown() {
        QFETCH(bool, doubleClick);
        QFETCH(QString, code);
        test::Fixture f;
        f.addMember(u"A1"_s, u"ALICE"_s);
        f.addMember(code, u"BOB"_s);
        SessionSettings s = test::sessionOn(f);
        members::setMemberSearchLookup(s);
        test::onScreen(Screen::Lookup, u"SEAFORM"_s, s, [&](QWidget* w) {
            QTableView* view = grid(w);
            QVERIFY(view->isEnabled());
            const QModelIndex second = view->model()->index(1, 1);
            view->setCurrentIndex(second);
            if (doubleClick)
                QTest::mouseDClick(view->viewport(), Qt::LeftButton, {},
                                   view->visualRect(second).center());
            else
                QTest::keyClick(view, Qt::Key_Return);
        });
        QVERIFY(s.DialogAccepted);
        QCOMPARE(s.CurrentCode, code);
    }

    // Each opening starts with nothing picked; "&Close" hands back nothing, and neither does an
    // empty grid, where only Escape leaves.
    void openingsStartWithNothingPicked() {
        test::Fixture f;
        f.addMember(u"A1"_s, u"ALICE"_s);
        SessionSettings s = test::sessionOn(f);
        members::setMemberSearchLookup(s);
        const auto pick = [](QWidget* w) { QTest::keyClick(grid(w), Qt::Key_Enter); };
        test::onScreen(Screen::Lookup, u"SEAFORM"_s, s, pick);
        QCOMPARE(s.CurrentCode, u"A1"_s);
        test::onScreen(Screen::Lookup, u"SEAFORM"_s, s,
                       [](QWidget* w) { test::child<QPushButton>(w, u"Command1"_s)->click(); });
        QVERIFY(!s.DialogAccepted);
        QCOMPARE(s.CurrentCode, QString());

        test::onScreen(Screen::Lookup, u"SEAFORM"_s, s, pick);
        members::setIntroducerLookup(s, u"A1"_s, u"A"_s); // only the member itself matches
        test::onScreen(Screen::Lookup, u"SEAFORM"_s, s, [](QWidget* w) {
            QVERIFY(!grid(w)->isEnabled());
            QCOMPARE(grid(w)->model()->rowCount(), 0);
            QTest::keyClick(grid(w), Qt::Key_Return); // nothing to pick
            QVERIFY(w->isVisible());
            QTest::keyClick(grid(w), Qt::Key_Escape);
        });
        QVERIFY(!s.DialogAccepted);
        QCOMPARE(s.CurrentCode, QString());
    }
};

QTEST_MAIN(TestLookup)
#include "tst_lookup.moc"
