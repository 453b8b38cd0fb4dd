#include "shell/database.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace pondar::db {

namespace detail {
extern const char* const SqliteCustomizeDdl;
extern const char* const SqliteHostDdl;
extern const char* const SqlServerCustomizeDdl;
extern const char* const SqlServerHostDdl;
} // namespace detail

namespace {

[[noreturn]] void fail(const QSqlError& error, const QString& sql) {
    QString text = error.text().trimmed();
    if (text.isEmpty())
        text = u"The database did not accept a statement."_s;
    throw DatabaseError(text + u"\n\n"_s + sql.simplified());
}

// The statements of a DDL file: comment lines dropped, split at the semicolons ending lines.
QStringList statements(const char* ddl) {
    QStringList out;
    QString current;
    for (const QString& line : QString::fromUtf8(ddl).split(u'\n')) {
        const QString t = line.trimmed();
        if (t.isEmpty() || t.startsWith(u"--"_s))
            continue;
        current += line + u'\n';
        if (t.endsWith(u';')) {
            current.chop(current.size() - current.lastIndexOf(u';'));
            out.append(current.trimmed());
            current.clear();
        }
    }
    if (!current.trimmed().isEmpty())
        out.append(current.trimmed());
    return out;
}

bool sqlServerObjectExists(const QSqlDatabase& db, const QString& statement) {
    // "CREATE TABLE name (" or "CREATE INDEX name ON table (".
    const QStringList words = statement.simplified().split(u' ');
    if (words.size() < 3)
        return false;
    const QString name = words.at(2).section(u'(', 0, 0);
    if (words.at(1).compare(u"TABLE"_s, Qt::CaseInsensitive) == 0)
        return hasRow(db, u"SELECT 1 FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_NAME = ?"_s,
                      {name});
    return hasRow(db, u"SELECT 1 FROM sys.indexes WHERE name = ?"_s, {name});
}

void runDdl(const QSqlDatabase& db, const char* sqlite, const char* sqlServer) {
    requireOpen(db);
    if (dialect(db) == Dialect::SQLite) {
        for (const QString& statement : statements(sqlite))
            exec(db, statement);
        return;
    }
    for (const QString& statement : statements(sqlServer)) {
        if (!sqlServerObjectExists(db, statement))
            exec(db, statement);
    }
}

} // namespace

Dialect dialect(const QSqlDatabase& db) {
    if (db.driverName() == u"QSQLITE"_s)
        return Dialect::SQLite;
    if (const QSqlDriver* driver = db.driver(); driver && driver->dbmsType() == QSqlDriver::SQLite)
        return Dialect::SQLite;
    return Dialect::SqlServer;
}

void requireOpen(const QSqlDatabase& db) {
    if (!db.isValid())
        throw DatabaseError(u"The host passed no usable database connection."_s);
    if (!db.isOpen())
        throw DatabaseError(u"The host's database connection \""_s + db.connectionName() +
                            u"\" is not open."_s);
}

QSqlQuery exec(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    requireOpen(db);
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        fail(query.lastError(), sql);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        fail(query.lastError(), sql);
    return query;
}

bool hasRow(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    QSqlQuery query = exec(db, sql, values);
    return query.next();
}

void ensureSchema(const QSqlDatabase& db) {
    runDdl(db, detail::SqliteCustomizeDdl, detail::SqlServerCustomizeDdl);
}

void createHostTables(const QSqlDatabase& db) {
    runDdl(db, detail::SqliteHostDdl, detail::SqlServerHostDdl);
}

QVariant bindMoney(Currency value) {
    return value.toShortString();
}

Currency readMoney(const QVariant& value) {
    if (value.isNull())
        return {};
    // SQLite hands sums and decimal columns back as doubles; other drivers as exact text.
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float)
        return Currency::fromDouble(value.toDouble());
    return Currency::parse(value.toString());
}

} // namespace pondar::db
