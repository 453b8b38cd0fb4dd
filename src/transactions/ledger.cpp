#include "transactions/ledger.h"

#include "members/memberdata.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"

#include <QSqlRecord>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

MemberExtras LoadMemberExtras(const QSqlDatabase& db, const QString& cardNo) {
    MemberExtras extras;
    {
        // Let the result go before the next statement: SQL Server serves one at a time.
        QSqlQuery member = db::exec(
            db, u"Select DownlineCode from tloy_mt_member where NonActive=0 and MemberCode=?"_s,
            {cardNo});
        if (member.next()) {
            extras.found = true;
            extras.introducer = member.value(0).toString();
        }
    }
    extras.pending = pendingBalance(db, cardNo);
    return extras;
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
    return members::openForGrid(
        db,
        u"select DateInput as [Date],BillNo as [Ref],FValue as [Value] from "
        "Customize_Topup where UpdateStatus=0 and CardNo=? order by DateInput"_s,
        {cardNo});
}

QSqlQuery historyQuery(const QSqlDatabase& db, const QString& cardNo) {
    return members::openForGrid(db,
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
        const QDateTime moment = db::readDateTime(value);
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
