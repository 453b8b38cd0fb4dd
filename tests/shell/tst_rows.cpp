#include "reports/reporttext.h"
#include "shell/database.h"
#include "shell/rows.h"
#include "shell/textgrid.h"
#include "support/fixtures.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

// The reports' row reader gives what the Qt driver gives, whichever way it reads.
class TestRows final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // Elsewhere the reader is db::exec, which the other tests run on every engine.
        if (test::Fixture::overPostgreSql())
            QSKIP("the row reader reads straight from SQLite only");
        f = new test::Fixture;
        db::exec(f->db(), u"CREATE TABLE t (id INTEGER, v)"_s);
        QVariantList values = {QVariant(), qint64(7), 0.1, 150.5};
        for (const char* text :
             {"CARD 1", " padded  ", "Ünïcödé ☕", "12.34567", "2024-03-01 00:00:00",
              "2024-02-30 00:00:00", "20a4-03-01", "0999-01-01 10:00:00", "2024-03-01T08:00:00.5",
              " 2024-03-01 ", "2024-03-01 24:00:00", "garbage", ""})
            values.append(QString::fromUtf8(text));
        for (int i = 0; i < values.size(); ++i)
            db::exec(f->db(), u"INSERT INTO t (id, v) VALUES (?, ?)"_s, {i, values.at(i)});
    }
    void cleanupTestCase() { delete f; }

    void everyValueReadsAsTheDriverReadsIt() {
        // The driver's reading first, to its end: a connection serves one result at a time.
        QVariantList driver;
        for (auto q = db::exec(f->db(), u"SELECT id, v FROM t ORDER BY id"_s); q.next();)
            driver.append(q.value(1));
        QCOMPARE(driver.size(), 17);
        db::Rows rows(f->db(), u"SELECT id, v FROM t ORDER BY id"_s);
        for (const QVariant& value : std::as_const(driver)) {
            QVERIFY(rows.next());
            const QString what = value.toString();
            QCOMPARE(rows.isNull(1), value.isNull());
            QCOMPARE(rows.text(1).toString(), what);
            QCOMPARE(rows.value(1).isNull(), value.isNull());
            QCOMPARE(rows.value(1).toString(), what);
            QCOMPARE(rows.money(1), db::readMoney(value));
            reports::ReportText viaRows;
            viaRows.date(rows, 1);
            QVERIFY2(viaRows.text() == reports::dateText(value), qPrintable(what));
        }
        QVERIFY(!rows.next());
        QVERIFY(!rows.next()); // stays at the end
    }

    // The grid shows each value as the driver's own text, a null as nothing, money as "#0.00".
    void aGridShowsWhatTheRowsHold() {
        TextGridModel grid;
        db::Rows rows(f->db(),
                      u"SELECT id as [Row], v as [Value], v as [Money] FROM t ORDER BY id"_s);
        grid.load(rows, {}, {2});
        QCOMPARE(grid.headerData(1, Qt::Horizontal).toString(), u"Value"_s);
        auto q = db::exec(f->db(), u"SELECT id, v FROM t ORDER BY id"_s);
        int row = 0;
        while (q.next()) {
            const QVariant shown = grid.index(row, 1).data();
            QCOMPARE(shown.isNull(), q.isNull(1));
            QCOMPARE(shown.toString(), q.value(1).toString());
            QCOMPARE(grid.index(row, 0).data().toString(), q.value(0).toString());
            if (!q.isNull(1))
                QCOMPARE(grid.index(row, 2).data().toString(), db::readMoney(q.value(1)).format());
            ++row;
        }
        QCOMPARE(grid.rowCount(), row);
    }

    void boundDatesFindTheRowsTheyName() {
        db::Rows rows(f->db(), u"SELECT id FROM t WHERE v between ? and ?"_s,
                      {QDateTime(QDate(2024, 3, 1), QTime(0, 0)),
                       QDateTime(QDate(2024, 3, 1), QTime(23, 59, 59))});
        QStringList ids;
        while (rows.next())
            ids.append(rows.text(0).toString());
        // Stored text compares as text: a padded or "T" form is not that day.
        QCOMPARE(ids, QStringList({u"8"_s}));
    }

    void aBadStatementIsAnError() {
        QVERIFY_THROWS_EXCEPTION(db::DatabaseError, db::Rows(f->db(), u"SELECT nothing FROM t"_s));
    }

private:
    test::Fixture* f = nullptr;
};

QTEST_GUILESS_MAIN(TestRows)
#include "tst_rows.moc"
