#include "members/memberdata.h"
#include "members/session.h"
#include "shell/screens.h"
#include "support/dialogs.h"

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
        test::OnModal step(u"SEAFORM"_s, [&](QWidget* w) {
            QCOMPARE(w->windowTitle(), u"Search"_s);
            QTableView* view = grid(w);
            QVERIFY(view->isEnabled());
            QCOMPARE(view->columnWidth(0), 133); // 2000 and 4500 twips
            QCOMPARE(view->columnWidth(1), 300);
            const QModelIndex second = view->model()->index(1, 1);
            view->setCurrentIndex(second);
            if (doubleClick)
                QTest::mouseDClick(view->viewport(), Qt::LeftButton, {},
                                   view->visualRect(second).center());
            else
                QTest::keyClick(view, Qt::Key_Return);
        });
        QVERIFY(showScreen(Screen::Lookup, s));
        QVERIFY(step.ran());
        QVERIFY(s.DialogAccepted);
        QCOMPARE(s.CurrentCode, code);
    }

    void emptyResultLeavesOnlyEscapeOrClose() {
        test::Fixture f;
        f.addMember(u"A1"_s, u"ALICE"_s);
        SessionSettings s = test::sessionOn(f);
        members::setIntroducerLookup(s, u"A1"_s, u"A"_s); // only the member itself matches
        s.CurrentCode = u"stale"_s;
        test::OnModal step(u"SEAFORM"_s, [&](QWidget* w) {
            QVERIFY(!grid(w)->isEnabled());
            QCOMPARE(grid(w)->model()->rowCount(), 0);
            QTest::keyClick(grid(w), Qt::Key_Return); // nothing to pick
            QVERIFY(w->isVisible());
            QTest::keyClick(grid(w), Qt::Key_Escape);
        });
        QVERIFY(showScreen(Screen::Lookup, s));
        QVERIFY(step.ran());
        QVERIFY(!s.DialogAccepted);
        QCOMPARE(s.CurrentCode, QString());
    }

    void secondOpeningNeverReturnsTheFirstPick() {
        test::Fixture f;
        f.addMember(u"A1"_s, u"ALICE"_s);
        SessionSettings s = test::sessionOn(f);
        members::setMemberSearchLookup(s);
        {
            test::OnModal pick(u"SEAFORM"_s,
                               [](QWidget* w) { QTest::keyClick(grid(w), Qt::Key_Enter); });
            showScreen(Screen::Lookup, s);
        }
        QCOMPARE(s.CurrentCode, u"A1"_s);
        test::OnModal leave(
            u"SEAFORM"_s, [](QWidget* w) { test::child<QPushButton>(w, u"Command1"_s)->click(); });
        showScreen(Screen::Lookup, s);
        QVERIFY(leave.ran());
        QVERIFY(!s.DialogAccepted);
        QCOMPARE(s.CurrentCode, QString());
    }
};

QTEST_MAIN(TestLookup)
#include "tst_lookup.moc"
