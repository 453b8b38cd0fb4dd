#pragma once

#include "shell/database.h"

#include <QSqlDatabase>
#include <QStringList>
#include <QVariantMap>

namespace pondar::test {

// Inserts one row with the given columns; money may be given as text ("60", "-30.5").
inline void insertRow(const QSqlDatabase& db, const QString& table, const QVariantMap& row) {
    QStringList marks;
    for (qsizetype i = 0; i < row.size(); ++i)
        marks.append(QStringLiteral("?"));
    db::exec(db,
             QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + row.keys().join(u',') +
                 QStringLiteral(") VALUES (") + marks.join(u',') + QStringLiteral(")"),
             row.values());
}

// The same with the columns named in one text: insertRow(db, "Customize_Topup", "cardNo,FValue",
// {"C1", "5"}).
inline void insertRow(const QSqlDatabase& db, const QString& table, const QString& columns,
                      const QVariantList& values) {
    QVariantMap row;
    const QStringList names = columns.split(u',');
    for (qsizetype i = 0; i < names.size(); ++i)
        row.insert(names.at(i), values.value(i));
    insertRow(db, table, row);
}

// Report lines as the tests expect them: CR LF after every line, the last one included.
inline QString crlf(const QStringList& lines) {
    return lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
}

inline QStringList linesOf(const QString& text) {
    QStringList lines = text.split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace pondar::test
