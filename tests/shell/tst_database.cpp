#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/session.h"
#include "support/fixtures.h"

#include <QSqlQuery>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

class TestDatabase final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void schemaCreationCanRunAgain() {
        test::Fixture f;
        // Over ODBC the driver does not name the engine; the component must still find SQLite
        // and not take the SQL Server path.
        QCOMPARE(db::dialect(f.db()), db::Dialect::SQLite);
        f.addStaff(u"S1"_s, u"Ann"_s);
        db::exec(f.db(), u"INSERT INTO Customize_Log (StaffCode) VALUES ('S1')"_s);
        db::ensureSchema(f.db());
        db::ensureSchema(f.db());
        QCOMPARE(f.count(u"Customize_Log"_s), 1);
        for (const QString& table :
             {u"Customize_Transaction"_s, u"Customize_Topup"_s, u"Customize_StaffComm"_s})
            QCOMPARE(f.count(table), 0);
        // The statements the screens filter on have their indexes.
        QVERIFY(f.scalar(u"SELECT COUNT(*) FROM sqlite_master WHERE type='index' AND "
                         "name LIKE 'IX_Customize_%'"_s)
                    .toInt() >= 8);
    }

    void errorsCarryTheDriverText() {
        QSqlDatabase closed = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"closed"_s);
        QVERIFY_THROWS_EXCEPTION(db::DatabaseError, db::ensureSchema(closed));
        QVERIFY_THROWS_EXCEPTION(db::DatabaseError, db::ensureSchema(QSqlDatabase()));
        test::Fixture f;
        try {
            db::exec(f.db(), u"SELECT * FROM no_such_table WHERE x = ?"_s, {1});
            QFAIL("no error");
        } catch (const db::DatabaseError& e) {
            QVERIFY2(e.message().contains(u"no_such_table"_s), qPrintable(e.message()));
        }
    }

    void moneyRoundTripsExactly() {
        test::Fixture f;
        for (const QString& text :
             {u"0"_s, u"12.5"_s, u"-30"_s, u"1234.5678"_s, u"92233720368.5477"_s}) {
            const Currency value = Currency::parse(text);
            db::exec(f.db(), u"INSERT INTO Customize_Topup (FValue) VALUES (?)"_s,
                     {db::bindMoney(value)});
            QCOMPARE(
                db::readMoney(f.scalar(u"SELECT FValue FROM Customize_Topup ORDER BY ID DESC"_s))
                    .toShortString(),
                text);
        }
        QCOMPARE(db::readMoney(QVariant()), Currency());

        // A sum that cancels out in floating point comes back as 5.55e-17 or its text.
        db::exec(f.db(), u"DELETE FROM Customize_Topup"_s);
        for (const char* text : {"0.1", "0.2", "-0.3"})
            db::exec(f.db(), u"INSERT INTO Customize_Topup (FValue) VALUES (?)"_s,
                     {db::bindMoney(Currency::parse(QString::fromLatin1(text)))});
        QCOMPARE(db::readMoney(f.scalar(u"SELECT SUM(FValue) FROM Customize_Topup"_s)), Currency());
    }

    // Date-times go in typed and come back comparable with the ISO text that other rows hold,
    // to the second, whichever driver runs.
    void dateTimesStoreAndCompareAsIsoText() {
        test::Fixture f;
        const QDateTime moment(QDate(2026, 1, 2), QTime(3, 4, 5, 678));
        db::exec(f.db(), u"INSERT INTO Customize_Log (StaffCode, ActualDate) VALUES ('typed', ?)"_s,
                 {moment});
        db::exec(f.db(), u"INSERT INTO Customize_Log (StaffCode, ActualDate) "
                         "VALUES ('text', '2026-01-02 03:04:05')"_s);
        db::exec(f.db(), u"INSERT INTO Customize_Log (StaffCode, ActualDate) VALUES ('day', ?)"_s,
                 {QDate(2026, 1, 2)});
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Log WHERE ActualDate = ?"_s,
                          {QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5))})
                     .toInt(),
                 2);
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Log WHERE ActualDate BETWEEN ? AND ?"_s,
                          {QDate(2026, 1, 2), QDateTime(QDate(2026, 1, 2), QTime(3, 4, 4))})
                     .toInt(),
                 1);
        QSqlQuery q = db::exec(f.db(), u"SELECT ActualDate FROM Customize_Log ORDER BY ID"_s);
        for (const QDateTime& expected :
             {QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)),
              QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)), QDate(2026, 1, 2).startOfDay()}) {
            QVERIFY(q.next());
            QCOMPARE(db::readDateTime(q.value(0)), expected);
        }
    }

    // What SQL Server is handed: a timestamp that its language and date format cannot turn
    // around; SQLite keeps the text it orders by.
    void dateTimeBindingPerEngine() {
        const QDateTime moment(QDate(2026, 11, 5), QTime(7, 8, 9, 999));
        const QVariant server = db::bindValue(db::Dialect::SqlServer, moment);
        QCOMPARE(server.typeId(), QMetaType::QDateTime);
        QCOMPARE(server.toDateTime(), QDateTime(QDate(2026, 11, 5), QTime(7, 8, 9)));
        QCOMPARE(db::bindValue(db::Dialect::SqlServer, QDate(2026, 11, 5)).toDateTime(),
                 QDate(2026, 11, 5).startOfDay());
        QCOMPARE(db::bindValue(db::Dialect::SQLite, moment), QVariant(u"2026-11-05 07:08:09"_s));
        QVERIFY(db::bindValue(db::Dialect::SQLite, QDateTime()).isNull());
        QVERIFY(db::bindValue(db::Dialect::SqlServer, QDateTime()).isNull());
        QCOMPARE(db::bindValue(db::Dialect::SqlServer, u"2026-11-05 07:08:09"_s).typeId(),
                 QMetaType::QString);
    }

    void dateTimesReadInEveryForm_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QDateTime>("expected");
        const QDateTime moment(QDate(2026, 11, 5), QTime(7, 8, 9));
        QTest::newRow("iso text") << QVariant(u"2026-11-05 07:08:09"_s) << moment;
        QTest::newRow("with T and fraction") << QVariant(u"2026-11-05T07:08:09.000"_s) << moment;
        QTest::newRow("bare day") << QVariant(u"2026-11-05"_s) << QDate(2026, 11, 5).startOfDay();
        QTest::newRow("null") << QVariant() << QDateTime();
        QTest::newRow("garbage") << QVariant(u"05/11/2026"_s) << QDateTime();
    }
    void dateTimesReadInEveryForm() {
        QFETCH(QVariant, value);
        QFETCH(QDateTime, expected);
        QCOMPARE(db::readDateTime(value), expected);
    }

    void logLineQuotingCuttingAndDates() {
        test::Fixture f;
        SessionSettings s;
        s.Conn = f.db();
        s.StaffCode = u"S1"_s;
        s.BzDate = u"15/11/2026"_s;
        s.clock = [] { return QDateTime(QDate(2026, 11, 16), QTime(0, 5, 9)); };

        writeLog(s, u"Remove Member Code : 01/O'Neil"_s);
        writeLog(s, QString(400, u'x'));
        writeLog(s, QString(299, u'a') + u"'b"_s); // the cut splits the doubled quote
        writeLog(s, QString());

        QCOMPARE(f.rows(u"SELECT StaffCode,BizDate,ActualDate FROM Customize_Log WHERE ID=1"_s),
                 u"S1|2026-11-15 00:00:00|2026-11-16 00:05:09"_s);
        QCOMPARE(f.rows(u"SELECT COALESCE(Description,'') FROM Customize_Log ORDER BY ID"_s)
                     .split(u'\n'),
                 (QStringList{u"Remove Member Code : 01/O'Neil"_s, QString(300, u'x'),
                              QString(299, u'a') + u"'"_s, QString()}));
        QCOMPARE(logDescription(QString(200, u'\'')).size(), 150); // quotes count twice
    }

    void inputCheck_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("code") << u"000123"_s << true;
        QTest::newRow("blank") << u"00 123"_s << false;
        QTest::newRow("quote") << u"O'Neil"_s << false;
        QTest::newRow("double quote") << u"a\"b"_s << false;
    }
    void inputCheck() {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QCOMPARE(isValidInput(text), valid);
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "tst_database.moc"
