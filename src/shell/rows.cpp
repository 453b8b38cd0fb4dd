#include "shell/rows.h"

#include "shell/database.h"

#include <QSqlDriver>
#include <QSqlRecord>

#include <sqlite3.h>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace pondar::db {

namespace {

// The SQLite handle under a connection of Qt's SQLite driver; null for any other connection.
sqlite3* sqliteHandle(const QSqlDatabase& db) {
    if (db.driverName() != u"QSQLITE"_s || !db.driver())
        return nullptr;
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3* const*>(handle.constData());
}

[[noreturn]] void fail(sqlite3* handle, const QString& sql) {
    throw DatabaseError(QString::fromUtf8(sqlite3_errmsg(handle)) + u"\n\n"_s + sql.simplified());
}

// As Qt's SQLite driver binds a value.
int bind(sqlite3_stmt* stmt, int index, const QVariant& given) {
    if (given.typeId() == QMetaType::QDateTime) {
        // bindValue()'s text, written by hand: QDateTime::toString() costs more than a short
        // report statement, and a report binds a date or two per statement.
        const QDateTime moment = given.toDateTime();
        const QDate day = moment.date();
        const QTime time = moment.time();
        if (moment.isValid() && day.year() >= 1 && day.year() <= 9999) {
            char text[32];
            const int size =
                std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", day.year(),
                              day.month(), day.day(), time.hour(), time.minute(), time.second());
            return sqlite3_bind_text(stmt, index, text, size, SQLITE_TRANSIENT);
        }
    }
    const QVariant value = bindValue(Dialect::SQLite, given);
    if (value.isNull())
        return sqlite3_bind_null(stmt, index);
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return sqlite3_bind_int64(stmt, index, value.toLongLong());
    case QMetaType::Double:
        return sqlite3_bind_double(stmt, index, value.toDouble());
    default: {
        // As UTF-8, the database's own encoding: nothing to convert at each comparison.
        const QByteArray text = value.toString().toUtf8();
        return sqlite3_bind_text(stmt, index, text.constData(), int(text.size()), SQLITE_TRANSIENT);
    }
    }
}

} // namespace

Rows::Rows(const QSqlDatabase& db, const QString& sql, const QVariantList& values)
    : m_db(db)
    , m_sql(sql) {
    requireOpen(db);
    sqlite3* handle = sqliteHandle(db);
    if (!handle) {
        m_query.emplace(exec(db, sql, values));
        return;
    }
    m_native = true;
    const QByteArray utf8 = sql.toUtf8();
    if (sqlite3_prepare_v2(handle, utf8.constData(), int(utf8.size()), &m_stmt, nullptr) !=
        SQLITE_OK)
        fail(handle, sql);
    if (sqlite3_bind_parameter_count(m_stmt) != values.size()) {
        sqlite3_finalize(m_stmt);
        m_stmt = nullptr;
        throw DatabaseError(u"Parameter count mismatch\n\n"_s + sql.simplified());
    }
    for (int i = 0; i < values.size(); ++i) {
        if (bind(m_stmt, i + 1, values.at(i)) != SQLITE_OK) {
            sqlite3_finalize(m_stmt);
            m_stmt = nullptr;
            fail(handle, sql);
        }
    }
}

Rows::~Rows() {
    finish();
}

void Rows::finish() {
    if (m_stmt)
        sqlite3_finalize(m_stmt);
    m_stmt = nullptr;
    m_done = true;
}

bool Rows::next() {
    if (!m_stmt && !m_done) {
        if (m_query->next())
            return true;
        m_query->close();
        m_done = true;
        return false;
    }
    if (m_done)
        return false;
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW)
        return true;
    sqlite3* handle = sqlite3_db_handle(m_stmt);
    finish();
    if (rc != SQLITE_DONE)
        fail(handle, m_sql);
    return false;
}

int Rows::columnCount() const {
    if (m_native)
        return m_stmt ? sqlite3_column_count(m_stmt) : 0;
    return m_query->record().count();
}

QString Rows::columnName(int column) const {
    if (m_native)
        return m_stmt ? QString::fromUtf8(sqlite3_column_name(m_stmt, column)) : QString();
    return m_query->record().fieldName(column);
}

bool Rows::isNull(int column) const {
    if (!m_stmt)
        return m_query->isNull(column);
    return sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

QStringView Rows::text(int column) const {
    if (m_stmt) {
        switch (sqlite3_column_type(m_stmt, column)) {
        case SQLITE_NULL:
            return {};
        case SQLITE_TEXT: {
            // SQLite keeps text as UTF-8; asking it for UTF-16 costs an allocation per value.
            // Plain ASCII, nearly every value here, is widened into this column's buffer.
            const auto* utf8 = sqlite3_column_text(m_stmt, column);
            const int bytes = sqlite3_column_bytes(m_stmt, column);
            if (m_buffers.size() <= std::size_t(column))
                m_buffers.resize(std::size_t(column) + 1);
            std::vector<char16_t>& buffer = m_buffers[std::size_t(column)];
            buffer.resize(std::size_t(bytes));
            for (int i = 0; i < bytes; ++i) {
                if (utf8[i] >= 0x80) {
                    keep(column, QString::fromUtf8(reinterpret_cast<const char*>(utf8), bytes));
                    return m_texts[std::size_t(column)];
                }
                buffer[std::size_t(i)] = utf8[i];
            }
            return QStringView(buffer.data(), bytes);
        }
        default:
            break; // numbers print as Qt prints them, not as SQLite would
        }
    }
    keep(column, value(column).toString());
    return m_texts[std::size_t(column)];
}

void Rows::keep(int column, QString text) const {
    if (m_texts.size() <= std::size_t(column))
        m_texts.resize(std::size_t(column) + 1);
    m_texts[std::size_t(column)] = std::move(text);
}

void Rows::appendUtf8(QByteArray& out, int column) const {
    if (m_stmt && sqlite3_column_type(m_stmt, column) == SQLITE_TEXT) {
        const auto* utf8 = sqlite3_column_text(m_stmt, column);
        out.append(reinterpret_cast<const char*>(utf8), sqlite3_column_bytes(m_stmt, column));
        return;
    }
    if (m_stmt && sqlite3_column_type(m_stmt, column) == SQLITE_INTEGER) {
        out.append(QByteArray::number(qint64(sqlite3_column_int64(m_stmt, column))));
        return;
    }
    out.append(text(column).toUtf8());
}

Currency Rows::money(int column) const {
    if (!m_stmt)
        return readMoney(m_query->value(column));
    switch (sqlite3_column_type(m_stmt, column)) {
    case SQLITE_NULL:
        return {};
    case SQLITE_FLOAT:
        return Currency::fromDouble(sqlite3_column_double(m_stmt, column));
    case SQLITE_INTEGER: {
        const sqlite3_int64 whole = sqlite3_column_int64(m_stmt, column);
        std::int64_t units = 0;
        if (!__builtin_mul_overflow(whole, Currency::Scale, &units))
            return Currency::fromUnits(units);
        return Currency::parse(QString::number(whole)); // throws, naming the amount
    }
    default:
        return Currency::parse(text(column).toString());
    }
}

QVariant Rows::value(int column) const {
    if (!m_stmt)
        return m_query->value(column);
    switch (sqlite3_column_type(m_stmt, column)) {
    case SQLITE_NULL:
        return {};
    case SQLITE_INTEGER:
        return QVariant(qint64(sqlite3_column_int64(m_stmt, column)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(m_stmt, column));
    case SQLITE_BLOB:
        return QByteArray(static_cast<const char*>(sqlite3_column_blob(m_stmt, column)),
                          sqlite3_column_bytes(m_stmt, column));
    default:
        return text(column).toString();
    }
}

} // namespace pondar::db
