#pragma once

#include "shell/database.h"

#include <pondar/currency.h>

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringView>
#include <QVariant>
#include <QVariantList>

#include <optional>
#include <vector>

struct sqlite3_stmt;

namespace pondar::db {

// The rows of one statement, read forward column by column. On a connection of Qt's SQLite
// driver the statement runs on that connection's own SQLite handle and values are read where
// SQLite keeps them, with no QVariant or QString per value: reports print hundreds of thousands
// of lines and that per-value work was most of their cost. On other engines it is a forward-only
// QSqlQuery (db::exec). Values are bound as db::exec binds them. Throws DatabaseError.
//
// Read the rows to the end (or destroy the object) before running the next statement on the
// connection: an unfinished result keeps SQL Server's connection busy.
class Rows final {
public:
    Rows(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});
    ~Rows();
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    bool next();
    // The columns and their names as the statement gives them (aliases), until the last row.
    int columnCount() const;
    QString columnName(int column) const;
    // Whether the rows come straight from SQLite.
    bool native() const { return m_native; }

    bool isNull(int column) const;
    // The column as text, as QVariant::toString() gives it; valid until next().
    QStringView text(int column) const;
    // Appends text(column) as UTF-8 to `out`, straight from where SQLite keeps it when it can.
    void appendUtf8(QByteArray& out, int column) const;
    // The column as money, as db::readMoney() reads it.
    Currency money(int column) const;
    // The column as the Qt driver would give it (dates typed on ODBC, text on SQLite).
    QVariant value(int column) const;

private:
    void finish();
    void keep(int column, QString text) const;

    QSqlDatabase m_db;
    sqlite3_stmt* m_stmt = nullptr;
    bool m_done = false;
    bool m_native = false;
    QString m_sql;
    std::optional<Result> m_query; // on other engines
    // What text() returns points into these until next(): texts converted from SQLite's UTF-8
    // (a buffer per column, reused row after row), or QString values.
    mutable std::vector<std::vector<char16_t>> m_buffers;
    mutable std::vector<QString> m_texts;
};

} // namespace pondar::db
