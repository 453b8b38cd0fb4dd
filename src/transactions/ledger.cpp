#include "transactions/ledger.h"

#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "transactions/posting.h"

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

void AddIntroducerCredit(const QSqlDatabase& db, const Posting& p, Currency topUp) {
    // An empty code is stored as '' (not NULL), so the row still groups under "no introducer".
    const QString& introducer = p.boxes.introducer;
    db::exec(db,
             u"INSERT INTO Customize_Topup (cardNo,DateInput,UpdateStatus,FValue,TrsNo,RefTrsNo) "
             "VALUES (?,?,0,?,?,?)"_s,
             {introducer.isNull() ? u""_s : introducer, bizDateValue(p.bzDate),
              db::bindMoney(topUp.percent(p.downComm)), p.trsNo.isNull() ? u""_s : p.trsNo,
              p.refNo});
}

LedgerBalance ledgerBalance(const QSqlDatabase& db, const QString& cardNo) {
    auto q = db::exec(
        db,
        db::firstRowOnly(db, u"SELECT NewValue,RefTrsNo,Billtype,PValue FROM Customize_Transaction "
                             "WHERE CardNo=? AND Billtype<>'PED' ORDER BY ID DESC"_s),
        {cardNo});
    LedgerBalance out;
    if (q.next()) {
        out.balance = db::readMoney(q.value(0));
        out.lastRef = q.value(1).toString();
        out.lastType = q.value(2).toString();
        out.lastValue = db::readMoney(q.value(3));
    }
    return out;
}

PendingRows pendingRows(const QSqlDatabase& db, const QString& cardNo) {
    auto q = db::exec(db,
                      u"SELECT ID,FValue FROM Customize_Topup WHERE CardNo=? AND UpdateStatus=0 "
                      "ORDER BY ID"_s,
                      {cardNo});
    PendingRows out;
    while (q.next()) {
        out.ids.append(q.value(0).toLongLong());
        out.sum += db::readMoney(q.value(1));
    }
    return out;
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
