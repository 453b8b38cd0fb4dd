#include "floor.h"

#include "shell/database.h"

#include <QSqlDriver>

#include <sqlite3.h>

using namespace Qt::Literals::StringLiterals;

namespace pondar::bench {

namespace {

// A prepared statement with its values bound; finalized when it goes.
class Prepared final {
public:
    Prepared(sqlite3* handle, const Statement& statement) {
        const QByteArray sql = statement.sql.toUtf8();
        if (sqlite3_prepare_v2(handle, sql.constData(), int(sql.size()), &m_stmt, nullptr) !=
            SQLITE_OK)
            throw db::DatabaseError(QString::fromUtf8(sqlite3_errmsg(handle)) + u"\n\n"_s +
                                    statement.sql);
        for (int i = 0; i < statement.values.size(); ++i) {
            const QVariant& v = statement.values.at(i);
            if (v.isNull()) {
                sqlite3_bind_null(m_stmt, i + 1);
            } else if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong) {
                sqlite3_bind_int64(m_stmt, i + 1, v.toLongLong());
            } else {
                const QByteArray text = v.toString().toUtf8();
                sqlite3_bind_text(m_stmt, i + 1, text.constData(), int(text.size()),
                                  SQLITE_TRANSIENT);
            }
        }
    }
    ~Prepared() { sqlite3_finalize(m_stmt); }
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;
    sqlite3_stmt* get() const { return m_stmt; }

private:
    sqlite3_stmt* m_stmt = nullptr;
};

// Where the floor leaves what it read, so that the reads are not optimized away.
volatile std::uint64_t g_sink = 0;

int traceStatement(unsigned type, void* context, void* p, void*) {
    if (type == SQLITE_TRACE_STMT) {
        char* sql = sqlite3_expanded_sql(static_cast<sqlite3_stmt*>(p));
        static_cast<QStringList*>(context)->append(QString::fromUtf8(sql));
        sqlite3_free(sql);
    }
    return 0;
}

} // namespace

Floor::Floor(const QSqlDatabase& db) {
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        throw db::DatabaseError(u"The floor needs a connection of the Qt SQLite driver."_s);
    m_handle = *static_cast<sqlite3* const*>(handle.constData());
}

Floor::~Floor() = default;

qint64 Floor::run(const std::vector<Statement>& statements) const {
    qint64 rows = 0;
    std::uint64_t sink = 0;
    for (const Statement& statement : statements) {
        Prepared p(m_handle, statement);
        sqlite3_stmt* stmt = p.get();
        const int columns = sqlite3_column_count(stmt);
        int rc;
        while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
            ++rows;
            for (int c = 0; c < columns; ++c) {
                switch (sqlite3_column_type(stmt, c)) {
                case SQLITE_INTEGER:
                    sink += std::uint64_t(sqlite3_column_int64(stmt, c));
                    break;
                case SQLITE_FLOAT:
                    sink += std::uint64_t(sqlite3_column_double(stmt, c));
                    break;
                case SQLITE_NULL:
                    break;
                default: {
                    const unsigned char* text = sqlite3_column_text(stmt, c);
                    const int bytes = sqlite3_column_bytes(stmt, c);
                    sink += bytes > 0 ? text[bytes - 1] : 0;
                    break;
                }
                }
            }
        }
        if (rc != SQLITE_DONE)
            throw db::DatabaseError(QString::fromUtf8(sqlite3_errmsg(m_handle)) + u"\n\n"_s +
                                    statement.sql);
    }
    g_sink = g_sink + sink;
    return rows;
}

QStringList Floor::traced(const std::function<void()>& work) {
    m_trace.clear();
    sqlite3_trace_v2(m_handle, SQLITE_TRACE_STMT, traceStatement, &m_trace);
    try {
        work();
    } catch (...) {
        sqlite3_trace_v2(m_handle, 0, nullptr, nullptr);
        throw;
    }
    sqlite3_trace_v2(m_handle, 0, nullptr, nullptr);
    // Statements the connection runs for itself (the engine probe) are no part of a report.
    QStringList out;
    for (const QString& sql : std::as_const(m_trace)) {
        if (!sql.startsWith(u"SELECT sqlite_version()"_s))
            out.append(sql);
    }
    return out;
}

QStringList Floor::expanded(const std::vector<Statement>& statements) const {
    QStringList out;
    for (const Statement& statement : statements) {
        Prepared p(m_handle, statement);
        char* sql = sqlite3_expanded_sql(p.get());
        out.append(QString::fromUtf8(sql));
        sqlite3_free(sql);
    }
    return out;
}

} // namespace pondar::bench
