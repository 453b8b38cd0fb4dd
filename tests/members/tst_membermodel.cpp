#include "members/membermodel.h"

#include "support/fixtures.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using members::MemberTableModel;

namespace {

// Two and a half windows of members, M0000 to M0499.
constexpr int Members = MemberTableModel::PageRows * 5 / 2;

QString codeOf(int n) {
    return u"M%1"_s.arg(n, 4, 10, QChar(u'0'));
}

} // namespace

// The register's record source a window at a time: every member in code order, edits in place.
class TestMemberModel final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        f = new test::Fixture;
        QSqlDatabase db = f->db();
        QVERIFY(db.transaction());
        // Inserted out of order: the model's order is the code's, not the table's.
        for (int i = 0; i < Members; ++i) {
            const int n = (i * 7) % Members;
            f->addMember(codeOf(n), u"MEMBER "_s + QString::number(n));
        }
        QVERIFY(db.commit());
        model = new MemberTableModel(f->db());
        model->showAll();
        QVERIFY(model->select());
    }
    void cleanup() {
        delete model;
        delete f;
    }

    void nextAndPreviousWalkEveryMemberInOrderAcrossWindows() {
        int row = model->first();
        for (int n = 0; n < Members; ++n) {
            QCOMPARE(model->code(row), codeOf(n));
            QVERIFY(model->rowCount() <= MemberTableModel::PageRows);
            row = model->next(row);
        }
        QCOMPARE(model->code(row), codeOf(Members - 1)); // stays on the last
        for (int n = Members - 1; n >= 0; --n) {
            QCOMPARE(model->code(row), codeOf(n));
            row = model->previous(row);
        }
        QCOMPARE(model->code(row), codeOf(0)); // stays on the first
        // And forward again from the windows the walk back left.
        for (int n = 0; n < Members; ++n) {
            QCOMPARE(model->code(row), codeOf(n));
            row = model->next(row);
        }
        QCOMPARE(model->totalCount(), qint64(Members));
    }

    void jumpsAndEditsLoadOneWindow() {
        const int last = model->last();
        QCOMPARE(model->code(last), codeOf(Members - 1));
        QVERIFY(model->rowCount() <= MemberTableModel::PageRows);
        QCOMPARE(model->code(model->previous(last)), codeOf(Members - 2));

        const int found = model->findRow(codeOf(321));
        QCOMPARE(model->code(found), codeOf(321));
        QCOMPARE(model->code(model->previous(found)), codeOf(320));
        QCOMPARE(model->findRow(u"NOBODY"_s), -1);
        QCOMPARE(model->code(0), codeOf(0)); // back at the start

        const int row = model->findRow(codeOf(450));
        const int name = model->fieldIndex(u"MemberName"_s);
        QVERIFY(model->setData(model->index(row, name), u"RENAMED"_s));
        QVERIFY(model->submitAll());
        QCOMPARE(f->rows(u"select MemberCode from tloy_mt_member where MemberName='RENAMED'"_s),
                 codeOf(450));
        QCOMPARE(model->code(row), codeOf(450)); // the window reloaded around the member

        model->showOnly(codeOf(250));
        QVERIFY(model->select());
        QCOMPARE(model->rowCount(), 1);
        QCOMPARE(model->totalCount(), qint64(1));
        QCOMPARE(model->last(), 0);
        QCOMPARE(model->next(0), 0);
    }

private:
    test::Fixture* f = nullptr;
    MemberTableModel* model = nullptr;
};

QTEST_GUILESS_MAIN(TestMemberModel)
#include "tst_membermodel.moc"
