#include "reports/grids.h"

#include "reports/reporttext.h"
#include "shell/database.h"
#include "shell/rows.h"
#include "shell/text.h"
#include "shell/textgrid.h"

#include <QSqlError>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

db::Statement memberLookup(const QString& typed) {
    return {u"Select MemberCode as [CardNo],MemberName as [Name] from tloy_mt_member"
            " where NonActive=0 and   MemberCode like ? order by MemberCode"_s,
            {QString(typed + u'%')}};
}

void memberTransactions(TextGridModel& grid, const QSqlDatabase& db, const QString& cardNo,
                        QDate from, QDate to) {
    // From one second past midnight: a line stamped at midnight of the from-date is left out,
    // as this report always did.
    db::Rows rows(db,
                  u"select ID,Billtype as [Type],TrsDate as [Date],BillNo as [Ref],"
                  "PValue as [Value], RefTrsNo as [TrsNo] from Customize_Transaction "
                  "where CardNo=? and TrsDate between ? and ? order by TrsDate"_s,
                  {cardNo, QDateTime(from, QTime(0, 0, 1)), QDateTime(to, QTime(23, 59, 59))});
    grid.load(rows, {2}, {4}); // Date, Value
}

void logLines(TextGridModel& grid, const QSqlDatabase& db, QDate bizDate) {
    db::Rows rows(db,
                  u"Select a.ActualDate as 'Date',a.StaffCode as 'Staff',"
                  "b.StaffName as 'Name',a.Description from customize_Log as a "
                  "left outer join tpay_mt_staff as b on b.staffcode=a.staffcode "
                  "where a.bizDate=? order by a.ActualDate"_s,
                  {bizDate.startOfDay()});
    grid.load(rows, {0}, {}); // Date
}

} // namespace pondar::reports
