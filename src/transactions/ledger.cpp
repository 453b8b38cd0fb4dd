#include "transactions/ledger.h"

#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar {

MemberExtras LoadMemberExtras(const QSqlDatabase& db, const QString& cardNo) {
    MemberExtras extras;
    {
        // Let the result go before the next statement: SQL Server serves one at a time.
        auto member = db::exec(
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

void AddIntroducerCredit(const SessionSettings& session, const QString& introducer, Currency topUp,
                         const QString& refNo) {
    // An empty code is stored as '' (not NULL), so the row still groups under "no introducer".
    db::exec(session.Conn,
             u"INSERT INTO Customize_Topup (cardNo,DateInput,UpdateStatus,FValue,TrsNo,RefTrsNo) "
             "VALUES (?,?,0,?,?,?)"_s,
             {introducer.isNull() ? u""_s : introducer, bizDateValue(session.BzDate),
              db::bindMoney(topUp.percent(session.DownComm)),
              session.TrsNo.isNull() ? u""_s : session.TrsNo, refNo});
}

QSqlQuery pendingGridQuery(const QSqlDatabase& db, const QString& cardNo) {
    return db::scrollable(db,
                          u"select DateInput as [Date],BillNo as [Ref],FValue as [Value] from "
                          "Customize_Topup where UpdateStatus=0 and CardNo=? order by DateInput"_s,
                          {cardNo});
}

QSqlQuery historyQuery(const QSqlDatabase& db, const QString& cardNo) {
    return db::scrollable(db,
                          u"select Billtype as [Type],TrsDate as [Date],BillNo as [Receipt],"
                          "PValue as [Value],RefTrsNo as [Ref] from Customize_Transaction "
                          "where CardNo=? order by RefTrsNo"_s,
                          {cardNo});
}

} // namespace pondar
