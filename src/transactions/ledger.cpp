#include "transactions/ledger.h"

#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"

#include <QSqlError>
#include <QSqlRecord>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

// A scrollable query for a model: QSqlQueryModel needs to seek back, which a forward-only
// query cannot. Rows still arrive only as the model asks for them.
QSqlQuery gridQuery(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    db::requireOpen(db);
    QSqlQuery query(db);
    if (!query.prepare(sql))
        throw db::DatabaseError(query.lastError().text() + u"\n\n"_s + sql);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        throw db::DatabaseError(query.lastError().text() + u"\n\n"_s + sql);
    return query;
}

} // namespace

MemberExtras LoadMemberExtras(const QSqlDatabase& db, const QString& cardNo) {
    MemberExtras extras;
    QSqlQuery member = db::exec(
        db, u"Select DownlineCode from tloy_mt_member where NonActive=0 and MemberCode=?"_s,
        {cardNo});
    if (member.next()) {
        extras.found = true;
        extras.introducer = member.value(0).toString();
    }
    extras.pending = pendingBalance(db, cardNo);
    return extras;
}

Currency pendingBalance(const QSqlDatabase& db, const QString& cardNo) {
    QSqlQuery q = db::exec(db,
                           u"Select sum(FValue) as PBal from Customize_Topup where CardNo=? "
                           "and UpdateStatus=0 group by CardNo"_s,
                           {cardNo});
    return q.next() ? db::readMoney(q.value(0)) : Currency();
}

void AddIntroducerCredit(const SessionSettings& session, Currency topUp, const QString& refNo) {
    // An empty code is stored as '' (not NULL), so the row still groups under "no introducer".
    const QString introducer = session.IntroducerCode.isNull() ? u""_s : session.IntroducerCode;
    db::exec(session.Conn,
             u"INSERT INTO Customize_Topup (cardNo,DateInput,UpdateStatus,FValue,TrsNo,RefTrsNo) "
             "VALUES (?,?,0,?,?,?)"_s,
             {introducer, bizDateValue(session.BzDate),
              db::bindMoney(topUp.percent(session.DownComm)),
              session.TrsNo.isNull() ? u""_s : session.TrsNo, refNo});
}

QSqlQuery pendingGridQuery(const QSqlDatabase& db, const QString& cardNo) {
    return gridQuery(db,
                     u"select DateInput as [Date],BillNo as [Ref],FValue as [Value] from "
                     "Customize_Topup where UpdateStatus=0 and CardNo=? order by DateInput"_s,
                     {cardNo});
}

QSqlQuery historyQuery(const QSqlDatabase& db, const QString& cardNo) {
    return gridQuery(db,
                     u"select Billtype as [Type],TrsDate as [Date],BillNo as [Receipt],"
                     "PValue as [Value],RefTrsNo as [Ref] from Customize_Transaction "
                     "where CardNo=? order by RefTrsNo"_s,
                     {cardNo});
}

QVariant LedgerModel::data(const QModelIndex& item, int role) const {
    QVariant value = QSqlQueryModel::data(item, role);
    if (role != Qt::DisplayRole || value.isNull())
        return value;
    if (item.column() == m_valueColumn) {
        try {
            return db::readMoney(value).format();
        } catch (const Error&) {
            return value; // a value no till could have written; shown as stored
        }
    }
    if (item.column() == m_dateColumn) {
        const QDateTime moment = QDateTime::fromString(value.toString(), u"yyyy-MM-dd HH:mm:ss"_s);
        if (moment.isValid())
            return displayDateTime(moment);
    }
    return value;
}

void LedgerModel::queryChange() {
    m_valueColumn = record().indexOf(u"Value"_s);
    m_dateColumn = record().indexOf(u"Date"_s);
}

} // namespace pondar
