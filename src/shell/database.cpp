#include "shell/database.h"

#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QStringList>

#include <optional>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace pondar::db {

namespace detail {
extern const char* const SqliteCustomizeDdl;
extern const char* const SqliteHostDdl;
extern const char* const SqlServerCustomizeDdl;
extern const char* const SqlServerHostDdl;
extern const char* const PostgreSqlCustomizeDdl;
extern const char* const PostgreSqlHostDdl;
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

// SQL Server has no "IF NOT EXISTS" on CREATE TABLE. OBJECT_ID resolves a name as the
// component's statements will (the login's default schema), so a table the DBA created there
// counts, and the component then needs no right to create tables.
bool sqlServerObjectExists(const QSqlDatabase& db, const QString& statement) {
    // "CREATE TABLE name (" or "CREATE INDEX name ON table (".
    const QStringList words = statement.simplified().split(u' ');
    if (words.size() < 3)
        return false;
    const QString name = words.at(2).section(u'(', 0, 0);
    if (words.at(1).compare(u"TABLE"_s, Qt::CaseInsensitive) == 0)
        return hasRow(db, u"SELECT 1 WHERE OBJECT_ID(?, 'U') IS NOT NULL"_s, {name});
    const QString table = words.value(4).section(u'(', 0, 0);
    return hasRow(db, u"SELECT 1 FROM sys.indexes WHERE name = ? AND object_id = OBJECT_ID(?)"_s,
                  {name, table});
}

// PostgreSQL checks the right to create before it looks for the name, so "IF NOT EXISTS" alone
// would fail for a login without CREATE even where the DBA made the tables. to_regclass resolves
// a table or index name through the search path, as the component's statements will.
bool postgreSqlObjectExists(const QSqlDatabase& db, const QString& statement) {
    // "CREATE EXTENSION IF NOT EXISTS name", "CREATE TABLE name (", "CREATE INDEX name ON ...".
    const QStringList words = statement.simplified().split(u' ');
    if (words.size() < 3)
        return false;
    if (words.at(1).compare(u"EXTENSION"_s, Qt::CaseInsensitive) == 0)
        return hasRow(db, u"SELECT 1 FROM pg_extension WHERE extname = ?"_s, {words.last()});
    const QString name = words.at(2).section(u'(', 0, 0);
    return hasRow(db, u"SELECT 1 WHERE to_regclass(?) IS NOT NULL"_s, {name});
}

void runDdl(const QSqlDatabase& db, const char* sqlite, const char* sqlServer,
            const char* postgreSql) {
    requireOpen(db);
    switch (dialect(db)) {
    case Dialect::SQLite:
        for (const QString& statement : statements(sqlite))
            exec(db, statement);
        return;
    case Dialect::SqlServer:
        for (const QString& statement : statements(sqlServer)) {
            if (!sqlServerObjectExists(db, statement))
                exec(db, statement);
        }
        return;
    case Dialect::PostgreSql:
        for (const QString& statement : statements(postgreSql)) {
            if (!postgreSqlObjectExists(db, statement))
                exec(db, statement);
        }
        return;
    }
}

} // namespace

Dialect dialect(const QSqlDatabase& db) {
    if (db.driverName() == u"QSQLITE"_s)
        return Dialect::SQLite;
    if (db.driverName() == u"QPSQL"_s)
        return Dialect::PostgreSql;
    QSqlDriver* driver = db.driver();
    if (!driver)
        return Dialect::SqlServer;
    switch (driver->dbmsType()) {
    case QSqlDriver::SQLite:
        return Dialect::SQLite;
    case QSqlDriver::PostgreSQL:
        return Dialect::PostgreSql;
    case QSqlDriver::MSSqlServer:
    case QSqlDriver::Sybase:
        return Dialect::SqlServer;
    default:
        break;
    }
    // Qt's ODBC driver names SQL Server but not SQLite: ask the engine once and keep the answer
    // on the driver object, which lives exactly as long as the connection.
    static const char* const known = "pondarDialect";
    if (const QVariant answer = driver->property(known); answer.isValid())
        return answer.toBool() ? Dialect::SQLite : Dialect::SqlServer;
    if (!db.isOpen())
        return Dialect::SqlServer;
    QSqlQuery probe(db);
    const bool sqlite = probe.exec(u"SELECT sqlite_version()"_s);
    driver->setProperty(known, sqlite);
    return sqlite ? Dialect::SQLite : Dialect::SqlServer;
}

QString setPostgreSqlConnection(QSqlDatabase& db, const QString& connection) {
    QStringList options;
    for (const QString& pair : connection.split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype eq = pair.indexOf(u'=');
        if (eq <= 0)
            return u"Cannot read \""_s + pair +
                   u"\" of the PostgreSQL connection: use key=value."_s;
        const QString key = pair.left(eq);
        const QString value = pair.mid(eq + 1);
        if (key == u"host"_s)
            db.setHostName(value);
        else if (key == u"port"_s)
            db.setPort(value.toInt());
        else if (key == u"dbname"_s)
            db.setDatabaseName(value);
        else if (key == u"user"_s)
            db.setUserName(value);
        else if (key == u"password"_s)
            db.setPassword(value);
        else
            options << pair;
    }
    db.setConnectOptions(options.join(u';'));
    return {};
}

void requireOpen(const QSqlDatabase& db) {
    if (!db.isValid())
        throw DatabaseError(u"The host passed no usable database connection."_s);
    if (!db.isOpen())
        throw DatabaseError(u"The host's database connection \""_s + db.connectionName() +
                            u"\" is not open."_s);
}

namespace {

// How many Result of a connection are open, kept on its driver object, which lives exactly as long
// as the connection.
const char* const OpenResults = "pondarOpenResults";

int openResults(const QSqlDriver* driver) {
    return driver ? driver->property(OpenResults).toInt() : 0;
}

void countOpen(QSqlDriver* driver, int change) {
    if (driver)
        driver->setProperty(OpenResults, openResults(driver) + change);
}

// PostgreSQL names a result column that is a bare column in lower case, where the other engines
// keep the case it is written in, which the grids show as their headings: such a column of the
// outer select list gets its written name as an alias.
QString keepColumnCase(const QString& sql) {
    static const QRegularExpression head(u"^\\s*select\\s+"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression bare(u"^(?:[A-Za-z_]\\w*\\.)?([A-Za-z_]\\w*)$"_s);
    const QRegularExpressionMatch start = head.match(sql);
    if (!start.hasMatch())
        return sql;
    QString out = sql.left(start.capturedEnd());
    int depth = 0;
    qsizetype item = start.capturedEnd();
    for (qsizetype i = item; i <= sql.size(); ++i) {
        const QChar c = i < sql.size() ? sql.at(i) : QChar(u',');
        if (c == u'(')
            ++depth;
        else if (c == u')')
            --depth;
        const bool atFrom = depth == 0 && i + 5 < sql.size() && c.isSpace() &&
                            sql.mid(i + 1, 4).compare(u"from"_s, Qt::CaseInsensitive) == 0 &&
                            sql.at(i + 5).isSpace();
        if (depth != 0 || (c != u',' && !atFrom))
            continue;
        const QString text = sql.mid(item, i - item);
        const QRegularExpressionMatch column = bare.match(text.trimmed());
        out += text;
        if (column.hasMatch() && column.captured(1) != column.captured(1).toLower())
            out += u" AS \""_s + column.captured(1) + u'"';
        if (atFrom || i >= sql.size())
            return out + sql.mid(i);
        out += c;
        item = i + 1;
    }
    return sql;
}

// The statements name result columns as SQL Server does, "[Name]" or 'Name'; PostgreSQL quotes
// names with double quotes only. Values are always bound, so no text literal is touched.
QString postgreSqlNames(const QString& sql) {
    static const QRegularExpression bracketed(u"\\[([^\\]']*)\\]"_s);
    static const QRegularExpression quotedAlias(u"\\b(as\\s+)'([^']*)'"_s,
                                                QRegularExpression::CaseInsensitiveOption);
    QString out = sql;
    out.replace(bracketed, u"\"\\1\""_s);
    out.replace(quotedAlias, u"\\1\"\\2\""_s);
    return keepColumnCase(out);
}

QSqlQuery run(const QSqlDatabase& db, const QString& given, const QVariantList& values,
              bool forwardOnly) {
    requireOpen(db);
    const bool postgreSql = dialect(db) == Dialect::PostgreSql;
    const QString sql = postgreSql ? postgreSqlNames(given) : given;
    if (openResults(db.driver()) > 0)
        throw DatabaseError(u"A statement ran while another result was still being read on the "
                            "same connection, which SQL Server does not allow.\n\n"_s +
                            sql.simplified());
    QSqlQuery query(db);
    query.setForwardOnly(forwardOnly);
    // Decimals as exact text where the driver has it (ODBC: money on SQL Server), not as a
    // double; readMoney takes both. The SQLite driver gives doubles either way.
    query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    // Qt's PostgreSQL driver prepares on the server, where DDL and transaction control cannot
    // be prepared; a statement without values has nothing to gain from it anyway.
    if (postgreSql && values.isEmpty()) {
        if (!query.exec(sql))
            fail(query.lastError(), sql);
        return query;
    }
    if (!query.prepare(sql))
        fail(query.lastError(), sql);
    std::optional<Dialect> engine;
    for (const QVariant& value : values) {
        const int type = value.typeId();
        if (type == QMetaType::QDateTime || type == QMetaType::QDate) {
            if (!engine)
                engine = dialect(db);
            query.addBindValue(bindValue(*engine, value));
        } else {
            query.addBindValue(value);
        }
    }
    if (!query.exec())
        fail(query.lastError(), sql);
    return query;
}

} // namespace

Result::Result(QSqlQuery query, QSqlDriver* driver)
    : QSqlQuery(std::move(query)) {
    if (isSelect() && isActive()) {
        m_busy = driver;
        countOpen(driver, 1);
    }
}

Result::Result(Result&& other) noexcept
    : QSqlQuery(std::move(static_cast<QSqlQuery&>(other)))
    , m_busy(std::exchange(other.m_busy, nullptr)) {}

Result& Result::operator=(Result&& other) noexcept {
    if (this != &other) {
        release();
        static_cast<QSqlQuery&>(*this) = std::move(static_cast<QSqlQuery&>(other));
        m_busy = std::exchange(other.m_busy, nullptr);
    }
    return *this;
}

Result::~Result() {
    release();
}

bool Result::next() {
    if (QSqlQuery::next())
        return true;
    release();
    return false;
}

void Result::close() {
    release();
    finish();
}

void Result::release() {
    if (m_busy)
        countOpen(m_busy, -1);
    m_busy = nullptr;
}

Result exec(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    return Result(run(db, sql, values, true), db.driver());
}

QSqlQuery scrollable(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    return run(db, sql, values, false);
}

bool hasRow(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    return exec(db, sql, values).next();
}

QString firstRowOnly(const QSqlDatabase& db, const QString& select) {
    // PostgreSQL writes it as SQLite does.
    if (dialect(db) == Dialect::SqlServer)
        return u"SELECT TOP 1 "_s + select.mid(7);
    return select + u" LIMIT 1"_s;
}

namespace {

const QString Savepoint = u"pondar_save"_s;

// SQL Server counts the transactions a connection has open; SQLite refuses a second BEGIN.
// PostgreSQL only warns at a second BEGIN, but refuses a savepoint outside a transaction: so
// there the savepoint is the test, and when it is taken the host's transaction is open.
bool hostTransactionOpen(const QSqlDatabase& db, Dialect engine) {
    if (engine == Dialect::PostgreSql) {
        QSqlQuery probe(db);
        return probe.exec(u"SAVEPOINT "_s + Savepoint);
    }
    if (engine != Dialect::SqlServer)
        return false;
    auto q = exec(db, u"SELECT @@TRANCOUNT"_s);
    return q.next() && q.value(0).toInt() > 0;
}

} // namespace

Transaction::Transaction(const QSqlDatabase& db, const QString& card)
    : m_db(db)
    , m_dialect(dialect(db)) {
    requireOpen(db);
    if (openResults(db.driver()) > 0)
        throw DatabaseError(u"A transaction began while another result was still being read on "
                            "the same connection, which SQL Server does not allow."_s);
    if (hostTransactionOpen(db, m_dialect)) {
        if (m_dialect == Dialect::SqlServer)
            exec(m_db, u"SAVE TRANSACTION "_s + Savepoint);
        m_savepoint = true;
    } else if (!m_db.transaction()) {
        exec(m_db, m_dialect == Dialect::SqlServer ? u"SAVE TRANSACTION "_s + Savepoint
                                                   : u"SAVEPOINT "_s + Savepoint);
        m_savepoint = true;
    }
    m_open = true;
    try {
        if (m_dialect == Dialect::PostgreSql) {
            // Row versions let tills read past each other; what must wait is two Saves of one
            // card, so the lock is the card's own (all cards share one when none is named).
            // Codes compare without regard to case, and so do their locks.
            // A till stuck in its Save must not hold the others for ever: without a limit of
            // the login's own, the wait ends after 5 seconds, as SQLite's does.
            exec(m_db,
                 u"SELECT set_config('lock_timeout', CASE current_setting('lock_timeout') "
                 "WHEN '0' THEN '5s' ELSE current_setting('lock_timeout') END, true), "
                 "pg_advisory_xact_lock(hashtext(upper(?)))"_s,
                 {card.isEmpty() ? u"*"_s : card.trimmed()});
        } else {
            // A write that changes nothing, so the lock is taken now.
            exec(m_db, u"UPDATE Customize_Transaction SET CardNo=CardNo WHERE 1=0"_s);
        }
    } catch (...) {
        rollback();
        throw;
    }
}

Transaction::~Transaction() {
    rollback();
}

void Transaction::commit() {
    if (!m_open)
        throw DatabaseError(u"The transaction was already ended."_s);
    if (m_savepoint) {
        if (m_dialect != Dialect::SqlServer)
            exec(m_db, u"RELEASE SAVEPOINT "_s + Savepoint);
    } else if (!m_db.commit()) {
        const QString error = m_db.lastError().text();
        rollback();
        throw DatabaseError(error.isEmpty() ? u"The database did not commit."_s : error);
    }
    m_open = false;
}

void Transaction::rollback() noexcept {
    if (!m_open)
        return;
    m_open = false;
    try {
        if (!m_savepoint) {
            m_db.rollback();
        } else if (m_dialect == Dialect::SqlServer) {
            exec(m_db, u"ROLLBACK TRANSACTION "_s + Savepoint);
        } else {
            exec(m_db, u"ROLLBACK TO SAVEPOINT "_s + Savepoint);
            exec(m_db, u"RELEASE SAVEPOINT "_s + Savepoint);
        }
    } catch (...) {
        // A connection that is gone has dropped the work with it.
    }
}

void ensureSchema(const QSqlDatabase& db) {
    runDdl(db, detail::SqliteCustomizeDdl, detail::SqlServerCustomizeDdl,
           detail::PostgreSqlCustomizeDdl);
}

void createHostTables(const QSqlDatabase& db) {
    runDdl(db, detail::SqliteHostDdl, detail::SqlServerHostDdl, detail::PostgreSqlHostDdl);
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

QVariant bindValue(Dialect dialect, const QVariant& value) {
    QDateTime moment;
    if (value.typeId() == QMetaType::QDateTime)
        moment = value.toDateTime();
    else if (value.typeId() == QMetaType::QDate)
        moment = value.toDate().startOfDay();
    else
        return value;
    if (!moment.isValid())
        return dialect != Dialect::SqlServer ? QVariant(QMetaType::fromType<QString>())
                                             : QVariant(QMetaType::fromType<QDateTime>());
    const QTime t = moment.time();
    moment.setTime(QTime(t.hour(), t.minute(), t.second()));
    // PostgreSQL's driver sends a QDateTime as a timestamp with a time zone, which the server
    // would move by its own zone setting on the way into a plain timestamp column: the text of
    // the moment goes in unmoved.
    if (dialect == Dialect::SQLite || dialect == Dialect::PostgreSql)
        return moment.toString(u"yyyy-MM-dd HH:mm:ss"_s);
    return moment;
}

QDateTime readDateTime(const QVariant& value) {
    if (value.isNull())
        return {};
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime();
    if (value.typeId() == QMetaType::QDate)
        return value.toDate().startOfDay();
    // "yyyy-mm-dd hh:mm:ss", also with a "T" or fractions of a second, or a bare day.
    QString text = value.toString().trimmed();
    if (text.size() == 10)
        text += u" 00:00:00"_s;
    text = text.left(19);
    if (text.size() > 10 && text.at(10) == u'T')
        text[10] = u' ';
    return QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss"_s);
}

} // namespace pondar::db
