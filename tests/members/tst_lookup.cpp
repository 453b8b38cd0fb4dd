#include "members/memberdata.h"
#include "members/session.h"

#include <QAbstractItemModel>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

class TestLookup final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // A double-click picks column 0 of the row as shown; the next opening starts with nothing
    // picked, and "&Close" hands back nothing.
    void pickThenCloseHandsBackNothing() {
        test::Fixture f;
        f.addMember(u"A1"_s, u"ALICE"_s);
        f.addMember(u"B3  "_s, u"BOB"_s);
        SessionSettings s = test::sessionOn(f);
        const auto lookup = [&] { return pickFromLookup(s, members::memberSearchLookup()); };
        const std::optional<QString> picked = test::onScreen(
            u"SEAFORM"_s,
            [](QWidget* w) {
                auto* view = test::child<QTableView>(w, u"DataGrid1"_s);
                const QModelIndex second = view->model()->index(1, 1);
                view->setCurrentIndex(second);
                QTest::mouseDClick(view->viewport(), Qt::LeftButton, {},
                                   view->visualRect(second).center());
            },
            lookup);
        QCOMPARE(picked, std::optional<QString>(u"B3  "_s));
        const std::optional<QString> closed = test::onScreen(
            u"SEAFORM"_s, [](QWidget* w) { test::child<QPushButton>(w, u"Command1"_s)->click(); },
            lookup);
        QCOMPARE(closed, std::nullopt);
    }
};

QTEST_MAIN(TestLookup)
#include "tst_lookup.moc"
