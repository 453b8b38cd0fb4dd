#include "members/membermodel.h"

#include "shell/database.h"

#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
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
    m_window = Window::Start;
    m_anchor.clear();
}

void MemberTableModel::showOnly(const QString& code) {
    m_window = Window::Only;
    m_anchor = code;
}

QString MemberTableModel::selectStatement() const {
    const QString table = tableName();
    if (m_clearing)
        return u"SELECT * FROM "_s + table + u" WHERE 1=0"_s;
    // The first rows in an order: TOP on SQL Server, LIMIT on SQLite.
    const bool sqlServer = db::dialect(database()) == db::Dialect::SqlServer;
    const QString page = QString::number(PageRows);
    auto firstRows = [&](const QString& where, const QString& order) -> QString {
        return sqlServer ? u"SELECT TOP "_s + page + u" * FROM "_s + table + where +
                               u" ORDER BY MemberCode "_s + order
                         : u"SELECT * FROM "_s + table + where + u" ORDER BY MemberCode "_s +
                               order + u" LIMIT "_s + page;
    };
    // A window counted back from its end, put back in code order.
    auto inOrder = [](const QString& sql) -> QString {
        return u"SELECT * FROM ("_s + sql + u") AS w ORDER BY MemberCode"_s;
    };
    switch (m_window) {
    case Window::Start:
        return firstRows({}, u"ASC"_s);
    case Window::From:
        return firstRows(u" WHERE MemberCode>=?"_s, u"ASC"_s);
    case Window::Through:
        return inOrder(firstRows(u" WHERE MemberCode<=?"_s, u"DESC"_s));
    case Window::End:
        return inOrder(firstRows({}, u"DESC"_s));
    case Window::Only:
        return u"SELECT * FROM "_s + table + u" WHERE Membercode=? ORDER BY MemberCode"_s;
    }
    return {};
}

bool MemberTableModel::select() {
    // The base class runs its statement as plain text, which cannot take a bound code. Let it
    // drop its cached edits (submitted ones included) over an empty result, then load the
    // window with the code bound.
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
    if (m_window == Window::From || m_window == Window::Through || m_window == Window::Only)
        query.addBindValue(m_anchor);
    if (!query.exec()) {
        setLastError(query.lastError());
        return false;
    }
    QSqlQueryModel::setQuery(std::move(query));
    // A window is small: hold it whole, so that no result stays open on the connection.
    while (canFetchMore())
        fetchMore();
    return true;
}

bool MemberTableModel::load(Window window, const QString& anchor) {
    m_window = window;
    m_anchor = anchor;
    if (!select())
        throw db::DatabaseError(lastError().text());
    return rowCount() > 0;
}

qint64 MemberTableModel::totalCount() const {
    QString sql = u"SELECT COUNT(*) FROM "_s + tableName();
    QVariantList values;
    if (m_window == Window::Only) {
        sql += u" WHERE Membercode=?"_s;
        values = {m_anchor};
    }
    auto q = db::exec(database(), sql, values);
    return q.next() ? q.value(0).toLongLong() : 0;
}

int MemberTableModel::first() {
    if (m_window == Window::Only)
        return rowCount() > 0 ? 0 : -1;
    return load(Window::Start) ? 0 : -1;
}

int MemberTableModel::last() {
    if (m_window == Window::Only)
        return rowCount() - 1;
    return load(Window::End) ? rowCount() - 1 : -1;
}

int MemberTableModel::next(int row) {
    if (row < 0)
        return first();
    if (row + 1 < rowCount())
        return row + 1;
    // Members may follow, unless the window ends the source: the next window starts at this
    // row's member. A window counted back from a member ends at that member, never at the end.
    if (m_window == Window::Only || m_window == Window::End ||
        (m_window != Window::Through && rowCount() < PageRows))
        return row;
    if (!load(Window::From, code(row)))
        return first();
    return std::min(1, rowCount() - 1);
}

int MemberTableModel::previous(int row) {
    if (row > 0)
        return row - 1;
    if (row < 0)
        return first();
    if (m_window == Window::Only || m_window == Window::Start ||
        (m_window == Window::Through && rowCount() < PageRows))
        return row;
    if (!load(Window::Through, code(row)))
        return first();
    return std::max(rowCount() - 2, 0);
}

int MemberTableModel::findRow(const QString& code) {
    if (m_window == Window::Only) {
        for (int row = 0; row < rowCount(); ++row) {
            if (this->code(row) == code)
                return row;
        }
        return -1;
    }
    if (load(Window::From, code) && this->code(0) == code)
        return 0;
    load(Window::Start);
    return -1;
}

int MemberTableModel::fetchTo(int row) {
    while (row >= rowCount() && canFetchMore())
        fetchMore();
    return std::min(row, rowCount() - 1);
}

QString MemberTableModel::code(int row) const {
    return data(index(row, fieldIndex(u"MemberCode"_s))).toString();
}

} // namespace pondar::members
