#pragma once

#include <pondar/currency.h>
#include <pondar/error.h>

#include <QSqlDatabase>
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

enum class Dialect { SQLite, SqlServer };
Dialect dialect(const QSqlDatabase& db);

// Fails with a clear DatabaseError when the host's connection cannot run statements.
void requireOpen(const QSqlDatabase& db);

// Prepares the statement on the given connection, binds the values in order to its "?"
// placeholders and runs it forward-only. Throws DatabaseError with the driver's text.
QSqlQuery exec(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// Whether the statement returns at least one row.
bool hasRow(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// Creates the component's tables and indexes where they are missing. Safe to run again.
void ensureSchema(const QSqlDatabase& db);
// The host's member and staff tables, for the demo host and the tests.
void createHostTables(const QSqlDatabase& db);

// Money in and out of the tables: bound as exact decimal text, read back rounded to 4 decimals.
QVariant bindMoney(Currency value);
Currency readMoney(const QVariant& value);

} // namespace pondar::db
