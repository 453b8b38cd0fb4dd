#include "members/membermodel.h"

#include "shell/database.h"

#include <QSqlError>
#include <QSqlQuery>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace pondar::members {

MemberTableModel::MemberTableModel(const QSqlDatabase& db, QObject* parent)
    : QSqlTableModel(parent, db) {
    db::requireOpen(db);
    setTable(u"tloy_mt_member"_s);
    if (lastError().isValid() || fieldIndex(u"MemberCode"_s) < 0)
        throw db::DatabaseError(u"The member table tloy_mt_member cannot be read.\n\n"_s +
                                lastError().text());
    setEditStrategy(QSqlTableModel::OnManualSubmit);
    setSort(fieldIndex(u"MemberCode"_s), Qt::AscendingOrder);
}

void MemberTableModel::showAll() {
    setFilter({});
    m_filterValues.clear();
}

void MemberTableModel::showOnly(const QString& code) {
    setFilter(u"Membercode=?"_s);
    m_filterValues = {code};
}

bool MemberTableModel::select() {
    // The base class would run selectStatement() as plain text; prepare it instead so that the
    // filter's placeholder takes the bound code. Pending edits go first, as they do there.
    revertAll();
    const QString sql = selectStatement();
    if (sql.isEmpty())
        return false;
    QSqlQuery query(database());
    if (!query.prepare(sql)) {
        setLastError(query.lastError());
        return false;
    }
    for (const QVariant& value : std::as_const(m_filterValues))
        query.addBindValue(value);
    if (!query.exec()) {
        setLastError(query.lastError());
        return false;
    }
    QSqlQueryModel::setQuery(std::move(query));
    return true;
}

qint64 MemberTableModel::totalCount() const {
    QString sql = u"SELECT COUNT(*) FROM "_s + tableName();
    if (!filter().isEmpty())
        sql += u" WHERE "_s + filter();
    QSqlQuery q = db::exec(database(), sql, m_filterValues);
    return q.next() ? q.value(0).toLongLong() : 0;
}

int MemberTableModel::fetchTo(int row) {
    while (row >= rowCount() && canFetchMore())
        fetchMore();
    return std::min(row, rowCount() - 1);
}

int MemberTableModel::fetchAll() {
    while (canFetchMore())
        fetchMore();
    return rowCount() - 1;
}

int MemberTableModel::findRow(const QString& code) {
    for (int row = 0;; ++row) {
        if (fetchTo(row) != row)
            return -1;
        if (this->code(row) == code)
            return row;
    }
}

QString MemberTableModel::code(int row) const {
    return data(index(row, fieldIndex(u"MemberCode"_s))).toString();
}

} // namespace pondar::members
