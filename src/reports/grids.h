#pragma once

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlQueryModel>
#include <QString>

namespace pondar::reports {

// The lookup statement of the member report's code box: active members whose code begins with
// what was typed. The lookup grid takes a statement text, so a quote typed in the box is
// doubled here and can never end the literal.
QString memberLookupQuery(const QString& typed);

// One member's lines (every bill type) from the from-date at 00:00:01 to the to-date at
// 23:59:59, oldest first; columns ID, Type, Date, Ref, Value, TrsNo. The card number is
// matched exactly. A scrollable query, ready for a grid model.
QSqlQuery memberTransactions(const QSqlDatabase& db, const QString& cardNo, QDate from, QDate to);

// The activity log of one business date in the order written, with the staff member's name
// (empty when the staff row is missing); columns Date, Staff, Name, Description.
QSqlQuery logLines(const QSqlDatabase& db, QDate bizDate);

// A read-only grid model that shows date columns in the default conversion and money columns
// "#0.00" right-aligned. Rows are fetched as the view scrolls.
class GridModel final : public QSqlQueryModel {
    Q_OBJECT
public:
    explicit GridModel(QObject* parent = nullptr);
    // Throws db::DatabaseError when the model cannot take the query.
    void load(QSqlQuery&& query, QList<int> dateColumns, QList<int> moneyColumns);
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    QList<int> m_dateColumns;
    QList<int> m_moneyColumns;
};

} // namespace pondar::reports
