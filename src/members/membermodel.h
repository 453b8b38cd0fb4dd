#pragma once

#include <QSqlDatabase>
#include <QSqlTableModel>
#include <QString>
#include <QVariantList>

namespace pondar::members {

// The register's record source: tloy_mt_member in code order, either every member or the one
// picked in a search. Edits stay in the model until submitAll() (manual submit). The picked code
// is bound to the statement, never pasted into the filter text.
class MemberTableModel final : public QSqlTableModel {
public:
    explicit MemberTableModel(const QSqlDatabase& db, QObject* parent = nullptr);

    // Choose the record source; select() loads it.
    void showAll();
    void showOnly(const QString& code);

    // Drops every pending edit and loads the record source afresh.
    bool select() override;

    // Rows in the record source, counted by the database: the model itself only holds the rows
    // fetched so far.
    qint64 totalCount() const;

    // Fetches until the row exists (or the rows run out) and returns the row to use: row itself,
    // the last row when there are fewer, -1 when there are none.
    int fetchTo(int row);
    int fetchAll();
    // The row holding this member code, fetching as needed; -1 when it is not in the source.
    int findRow(const QString& code);

    QString code(int row) const;

protected:
    QString selectStatement() const override;

private:
    QVariantList m_filterValues;
    bool m_clearing = false;
};

} // namespace pondar::members
