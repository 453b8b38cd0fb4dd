#pragma once

#include "shell/database.h"

#include <QSqlDatabase>
#include <QStringList>
#include <QVariantList>

namespace pondar::test {

// Inserts one row; money may be given as text: insertRow(db, "Customize_Topup", "cardNo,FValue",
// {"C1", "5"}).
inline void insertRow(const QSqlDatabase& db, const QString& table, const QString& columns,
                      const QVariantList& values) {
    const QStringList marks(values.size(), QStringLiteral("?"));
    db::exec(db,
             QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + columns +
                 QStringLiteral(") VALUES (") + marks.join(u',') + QStringLiteral(")"),
             values);
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
