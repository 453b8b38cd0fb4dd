#include "shell/gridmodel.h"

#include "shell/database.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QSqlError>

namespace pondar {

GridModel::GridModel(QObject* parent)
    : QSqlQueryModel(parent) {}

void GridModel::load(QSqlQuery&& query, QList<int> dateColumns, QList<int> moneyColumns) {
    m_dateColumns = std::move(dateColumns);
    m_moneyColumns = std::move(moneyColumns);
    setQuery(std::move(query));
    if (lastError().isValid())
        throw db::DatabaseError(lastError().text());
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
    const bool date = m_dateColumns.contains(index.column());
    const bool money = m_moneyColumns.contains(index.column());
    if (role == Qt::TextAlignmentRole && money)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    const QVariant value = QSqlQueryModel::data(index, role);
    if (role != Qt::DisplayRole || value.isNull() || (!date && !money))
        return value;
    if (date) {
        const QDateTime moment = db::readDateTime(value);
        return moment.isValid() ? displayDateTime(moment) : value.toString();
    }
    try {
        return db::readMoney(value).format();
    } catch (const Error&) {
        return value; // a value no till could have written; shown as stored
    }
}

} // namespace pondar
