#pragma once

#include <QList>
#include <QSqlQuery>
#include <QSqlQueryModel>

namespace pondar {

// The screens' read-only grid over a statement: date columns shown "dd/mm/yyyy hh:mm:ss", money
// columns "#0.00" right-aligned, everything else as stored. Rows are fetched as the view
// scrolls, so a long ledger costs only what is on screen.
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

} // namespace pondar
