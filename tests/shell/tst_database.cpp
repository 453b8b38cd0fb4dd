#include "members/memberdata.h"
#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/session.h"
#include "support/fixtures.h"

#include <QSqlRecord>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

class TestDatabase final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Codes compare without case, as under SQL Server's default collation, through the indexes.
    void codesCompareWithoutCase() {
        test::Fixture f;
        f.addMember(u"M0001"_s, u"Max"_s);
        f.addStaff(u"S01"_s, u"Sam"_s);
        db::exec(f.db(),
                 u"INSERT INTO Customize_Transaction (CardNo,Billtype) VALUES ('M0001','IN')"_s);
        QVERIFY(members::memberExists(f.db(), u"m0001"_s));
        QVERIFY(members::findActiveStaff(f.db(), u"s01"_s).found);
        QVERIFY(members::hasTransactions(f.db(), u"m0001"_s));
        QString plan;
        if (test::Fixture::overPostgreSql()) {
            // A table this small is read whole unless the planner is told otherwise.
            db::exec(f.db(), u"SET enable_seqscan = off"_s);
            plan = f.rows(u"EXPLAIN SELECT * FROM Customize_Transaction "
                          "WHERE CardNo='m0001' ORDER BY TrsDate"_s);
        } else {
            plan = f.rows(u"EXPLAIN QUERY PLAN SELECT * FROM Customize_Transaction "
                          "WHERE CardNo=? ORDER BY TrsDate"_s,
                          {u"m0001"_s});
        }
        QVERIFY2(plan.contains(u"IX_Customize_Transaction_Card"_s, Qt::CaseInsensitive),
                 qPrintable(plan));
    }

    void errorsCarryTheDriverText() {
        QSqlDatabase closed = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"closed"_s);
        QVERIFY_THROWS_EXCEPTION(db::DatabaseError, db::ensureSchema(closed));
        test::Fixture f;
        // Over ODBC the driver does not name the engine; SQLite must still be found.
        QCOMPARE(db::dialect(f.db()),
                 test::Fixture::overPostgreSql() ? db::Dialect::PostgreSql : db::Dialect::SQLite);
        try {
            db::exec(f.db(), u"SELECT * FROM no_such_table WHERE x = ?"_s, {1});
            QFAIL("no error");
        } catch (const db::DatabaseError& e) {
            QVERIFY2(e.message().contains(u"no_such_table"_s), qPrintable(e.message()));
        }
    }

    // SQL Server's one open result per connection holds on every engine.
    void oneOpenResultPerConnection() {
        test::Fixture f;
        f.addStaff(u"S1"_s, u"Ann"_s);
        f.addStaff(u"S2"_s, u"Bob"_s);
        const QString staff = u"SELECT StaffCode FROM tpay_mt_staff ORDER BY StaffCode"_s;
        auto rows = db::exec(f.db(), staff);
        QVERIFY(rows.next());
        QVERIFY_THROWS_EXCEPTION(db::DatabaseError, db::hasRow(f.db(), staff));
        QVERIFY(rows.next() && !rows.next());
        QVERIFY(db::hasRow(f.db(), staff));
        {
            auto dropped = db::exec(f.db(), staff);
            auto moved = std::move(dropped);
            QVERIFY(moved.next());
        }
        auto closed = db::exec(f.db(), staff);
        closed.next();
        closed.close();
        db::exec(f.db(), u"UPDATE tpay_mt_staff SET StaffName='Al' WHERE StaffCode='S1'"_s);
        QVERIFY(db::hasRow(f.db(), staff));
    }

    // Money comes back to the last unit, a sum that cancels out in floating point included.
    void moneyRoundTripsExactly() {
        test::Fixture f;
        for (const char* text : {"1234.5678", "-92233720368.5477", "0.1", "0.2", "-0.3"})
            db::exec(f.db(), u"INSERT INTO Customize_Topup (FValue) VALUES (?)"_s,
                     {db::bindMoney(Currency::parse(QString::fromLatin1(text)))});
        QCOMPARE(db::readMoney(f.scalar(u"SELECT FValue FROM Customize_Topup WHERE ID=2"_s)),
                 Currency::parse(u"-92233720368.5477"_s));
        QCOMPARE(db::readMoney(f.scalar(u"SELECT SUM(FValue) FROM Customize_Topup WHERE ID>2"_s)),
                 Currency());
    }

    // Date-times go in typed and compare with the ISO text other rows hold, to the second.
    void dateTimesStoreAndCompareAsIsoText() {
        test::Fixture f;
        const QDateTime second(QDate(2026, 1, 2), QTime(3, 4, 5));
        db::exec(f.db(), u"INSERT INTO Customize_Log (StaffCode, ActualDate) VALUES ('typed', ?)"_s,
                 {second.addMSecs(678)});
        db::exec(f.db(), u"INSERT INTO Customize_Log (StaffCode, ActualDate) "
                         "VALUES ('text', '2026-01-02 03:04:05')"_s);
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Log WHERE ActualDate = ?"_s, {second})
                     .toInt(),
                 2);
        QCOMPARE(db::readDateTime(f.scalar(u"SELECT ActualDate FROM Customize_Log WHERE ID=1"_s)),
                 second);
    }

    // SQL Server gets a typed value its date format cannot turn around.
    void dateTimeBindingPerEngine() {
        const QDateTime moment(QDate(2026, 11, 5), QTime(7, 8, 9, 999));
        QCOMPARE(db::bindValue(db::Dialect::SqlServer, moment), QVariant(moment.addMSecs(-999)));
        // PostgreSQL would move a zoned value by the server's zone into a plain timestamp.
        QCOMPARE(db::bindValue(db::Dialect::PostgreSql, moment),
                 QVariant(u"2026-11-05 07:08:09"_s));
    }

    // The statements name their columns as SQL Server does; every engine takes those names.
    void columnNamesInSqlServerForm() {
        test::Fixture f;
        f.addMember(u"M1"_s, u"Ann's"_s);
        auto q = db::exec(f.db(),
                          u"SELECT m.MemberCode as [CardNo], m.MemberName AS 'Name',\n"
                          "m.NonActive, (SELECT COUNT(*) FROM tpay_mt_staff) FROM tloy_mt_member m "
                          "WHERE m.MemberName = ?"_s,
                          {u"Ann's"_s});
        QVERIFY(q.next());
        const QSqlRecord r = q.record();
        QCOMPARE(
            QStringList({r.fieldName(0), r.fieldName(1), r.fieldName(2), r.value(1).toString()}),
            QStringList({u"CardNo"_s, u"Name"_s, u"NonActive"_s, u"Ann's"_s}));
    }

    // Quotes are doubled and the text cut to 300, which may split a doubled quote.
    void logLineQuotingAndCutting() {
        test::Fixture f;
        SessionSettings s;
        s.Conn = f.db();
        s.StaffCode = u"S1"_s;
        s.BzDate = u"15/11/2026"_s;
        s.clock = [] { return QDateTime(QDate(2026, 11, 16), QTime(0, 5, 9)); };
        writeLog(s, u"Remove Member Code : 01/O'Neil"_s);
        writeLog(s, QString(299, u'a') + u"'b"_s);
        QCOMPARE(f.rows(u"SELECT StaffCode, BizDate, ActualDate, Description FROM Customize_Log"_s),
                 u"S1|2026-11-15 00:00:00|2026-11-16 00:05:09|Remove Member Code : 01/O'Neil\n"
                 "S1|2026-11-15 00:00:00|2026-11-16 00:05:09|"_s +
                     QString(299, u'a') + u"'"_s);
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "tst_database.moc"
