#pragma once

#include <pondar/currency.h>
#include <pondar/error.h>

#include <QDateTime>
#include <QPointer>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantList>

namespace pondar::db {

// A statement that failed, with the driver's own text.
class DatabaseError final : public Error {
public:
    using Error::Error;
};

// A statement and the values bound, in order, to its "?" placeholders.
struct Statement {
    QString sql;
    QVariantList values;
};

// The engine behind a connection, whichever Qt driver reaches it: the Qt SQLite driver, Qt's
// PostgreSQL driver, or ODBC to SQL Server (FreeTDS, the vendor's driver) or to SQLite (the
// SQLite ODBC driver).
enum class Dialect { SQLite, SqlServer, PostgreSql };
Dialect dialect(const QSqlDatabase& db);

// Sets a QPSQL connection from libpq's "key=value key=value" form: host, port, dbname, user and
// password go to their fields, any other key (sslmode=..., connect_timeout=...) into the
// driver's options. Returns why it cannot be read, or an empty text.
QString setPostgreSqlConnection(QSqlDatabase& db, const QString& connection);

// Fails with a clear DatabaseError when the host's connection cannot run statements.
void requireOpen(const QSqlDatabase& db);

// The rows of a forward-only statement. SQL Server without MARS serves one result at a time: a
// result not read to its end keeps the connection busy. So while a Result is alive and has rows
// left, the connection counts as busy here too, on every engine, and the next statement on it
// throws DatabaseError; take what you need, then let it go (or read past the end). Move-only.
class Result final : private QSqlQuery {
public:
    Result(QSqlQuery query, QSqlDriver* driver);
    Result(Result&& other) noexcept;
    Result& operator=(Result&& other) noexcept;
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;
    ~Result();

    // The next row; false past the last one, which also frees the connection.
    bool next();
    // Frees the connection before the end.
    void close();

    using QSqlQuery::isNull;
    using QSqlQuery::numRowsAffected;
    using QSqlQuery::record;
    using QSqlQuery::value;

private:
    void release();

    QPointer<QSqlDriver> m_busy; // set while this result holds the connection
};

// Prepares the statement on the given connection, binds the values in order to its "?"
// placeholders (through bindValue) and runs it forward-only. Throws DatabaseError with the
// driver's text, and when a Result of the connection is still open. Result columns may be named
// as on SQL Server ("[Name]", 'Name'); on PostgreSQL they become "Name".
Result exec(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});
// The same, scrollable, for a QSqlQueryModel, which seeks back; rows still arrive only as the
// model asks for them.
QSqlQuery scrollable(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// A "SELECT ... ORDER BY ..." cut to its first row, as the engine writes it.
QString firstRowOnly(const QSqlDatabase& db, const QString& select);

// One unit of work on the host's connection: a transaction of its own, or a savepoint when the
// host's connection is already inside a transaction of the host's. Its first statement claims
// the right to write, so that tills wait for each other here, before a card is touched, and not
// halfway through: the whole database on SQLite and SQL Server, the given card on PostgreSQL
// (every card at once when none is given). Rolled back unless committed; the destructor never
// throws.
class Transaction final {
public:
    explicit Transaction(const QSqlDatabase& db, const QString& card = {});
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();
    void rollback() noexcept;

private:
    QSqlDatabase m_db;
    Dialect m_dialect;
    bool m_savepoint = false;
    bool m_open = false;
};

// Whether the statement returns at least one row.
bool hasRow(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// Creates the component's tables and indexes where they are missing. Safe to run again.
void ensureSchema(const QSqlDatabase& db);
// The host's member and staff tables, for the demo host and the tests.
void createHostTables(const QSqlDatabase& db);

// Money in and out of the tables: bound as exact decimal text, read back rounded to 4 decimals.
QVariant bindMoney(Currency value);
Currency readMoney(const QVariant& value);

// Date-times are bound as QDateTime (a QDate stands for its midnight) and stored the way the
// engine cannot misread them: ISO text "yyyy-mm-dd hh:mm:ss" on SQLite and PostgreSQL (where
// the column's type reads it, with no zone to move it), a typed timestamp on SQL Server, where text
// would be read by the login's language and date format. Whole seconds on both. Other values pass
// unchanged.
QVariant bindValue(Dialect dialect, const QVariant& value);
// A date-time column, whether the driver hands it back typed (ODBC) or as ISO text (SQLite);
// invalid when null or unreadable.
QDateTime readDateTime(const QVariant& value);

} // namespace pondar::db
