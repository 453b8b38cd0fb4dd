#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <vector>

struct sqlite3;

namespace pondar::bench {

// A statement as the SQLite C API runs it: the text and the values bound to its "?"s, in order.
// Values are text, whole numbers, or null.
struct Statement {
    QString sql;
    QVariantList values;
};

// The floor of a report: its statements stepped through sqlite3_prepare_v2 and sqlite3_step on
// the connection the report uses, every column of every row read, nothing else done.
class Floor final {
public:
    // Throws db::DatabaseError when the connection is not the Qt SQLite driver's.
    explicit Floor(const QSqlDatabase& db);
    ~Floor();
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    // Runs the statements; returns the rows they gave.
    qint64 run(const std::vector<Statement>& statements) const;

    // The statements `work` runs on the connection, each as the engine saw it with its values
    // written in (sqlite3_expanded_sql), in the order they began.
    QStringList traced(const std::function<void()>& work);
    // The same text for statements the floor would run.
    QStringList expanded(const std::vector<Statement>& statements) const;

private:
    sqlite3* m_handle = nullptr;
    QStringList m_trace;
};

} // namespace pondar::bench
