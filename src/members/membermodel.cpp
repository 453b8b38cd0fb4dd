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

// The values go first: setting the filter re-selects a loaded model at once.
void MemberTableModel::showAll() {
    m_filterValues.clear();
    setFilter({});
}

void MemberTableModel::showOnly(const QString& code) {
    m_filterValues = {code};
    setFilter(u"Membercode=?"_s);
}

QString MemberTableModel::selectStatement() const {
    if (m_clearing)
        return u"SELECT * FROM "_s + tableName() + u" WHERE 1=0"_s;
    return QSqlTableModel::selectStatement();
}

bool MemberTableModel::select() {
    if (m_filterValues.isEmpty())
        return QSqlTableModel::select();
    // The base class runs its statement as plain text, which cannot take the bound code. Let it
    // drop its cached edits (submitted ones included) over an empty result, then load the rows
    // with the code bound.
    m_clearing = true;
    const bool cleared = QSqlTableModel::select();
    m_clearing = false;
    if (!cleared)
        return false;
    QSqlQuery query(database());
    if (!query.prepare(selectStatement())) {
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
    auto q = db::exec(database(), sql, m_filterValues);
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
