#include "reports/eod.h"

#include "reports/reporttext.h"
#include "shell/database.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QDate>
#include <QSqlQuery>

#include <utility>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

namespace {

const QString EndLine = u"-------------End of Report--------------"_s;

struct Range {
    QDateTime start; // the from-date at 00:00:00
    QDateTime end;   // the to-date at 23:59:59
};

Range rangeOf(const EodRequest& request) {
    const QDate from = parseDate(request.fromText);
    const QDate to = parseDate(request.toText);
    if (!from.isValid() || !to.isValid())
        throw Error(u"Invalid Date Input !!!"_s);
    return {from.startOfDay(), QDateTime(to, QTime(23, 59, 59))};
}

void header(ReportText& out, const EodRequest& request, const QString& title,
            const QString& dateLine) {
    out.line(u"Outlet    : "_s + request.outlet);
    out.line(u"Report    : "_s + title);
    out.line(dateLine);
    out.line(u"Printed   : "_s + displayDateTime(request.printed));
    out.rule();
    out.line();
}

// Rule, total, empty line; the running total starts again from zero.
void closeBlock(ReportText& out, Currency& running) {
    out.rule();
    out.totalLine(running);
    out.line();
    running = {};
}

QString billTypeLabel(const QString& billType, const QString& previous) {
    if (billType == u"IN"_s)
        return u"TOPUP"_s;
    if (billType == u"OUT"_s)
        return u"WITHDRAW"_s;
    if (billType == u"AIN"_s)
        return u"ADJUSTMENT IN"_s;
    if (billType == u"AOT"_s)
        return u"ADJUSTMENT OUT"_s;
    if (billType == u"PED"_s)
        return u"PENDING TOPUP"_s;
    // An unknown code carries the label of the row before it, as the printed summary always has.
    return previous;
}

// The lines of one bill type, oldest first. `running` is not reset before the block: it still
// holds the by-type totals (or what the block before left), so the first block's total is
// by-type totals plus its lines. End-of-day figures have always been read that way.
void billLines(ReportText& out, const QSqlDatabase& db, const Range& range, const QString& billType,
               const QString& heading, Currency& running) {
    auto q = db::exec(db,
                      u"select TrsDate,BillNo,RefTrsNo,CardNo,Name,PValue "
                      "from Customize_Transaction WHERE TrsDate between ? and ? "
                      "and Billtype=? order by TrsDate"_s,
                      {range.start, range.end, billType});
    bool any = false;
    while (q.next()) {
        if (!any)
            out.line(heading);
        any = true;
        const Currency value = db::readMoney(q.value(5));
        out.line(dateText(q.value(0)) + u" #"_s + q.value(1).toString());
        out.line(u"RefNo# :"_s + q.value(2).toString());
        out.line(codeColumn(q.value(3).toString()) + nameColumn(q.value(4).toString()) +
                 rightAmount(value));
        out.line();
        running += value;
    }
    if (any)
        closeBlock(out, running);
}

// Rows of (code, name, amount) under a heading, with their total; `running` is where the total
// starts, so a block may carry on from the ones above it.
void codeNameAmountBlock(ReportText& out, db::Rows& q, const QString& heading,
                         Currency running = {}) {
    bool any = false;
    while (q.next()) {
        if (!any)
            out.line(heading);
        any = true;
        const Currency value = db::readMoney(q.value(2));
        out.line(codeColumn(q.value(0).toString()) + nameColumn(q.value(1).toString()) +
                 rightAmount(value));
        running += value;
    }
    if (any)
        closeBlock(out, running);
}

// Whether two card numbers are one group of a GROUP BY on this server: SQL Server compares
// without case (its usual collation) and ignores trailing blanks; SQLite compares exactly.
bool sameCard(db::Dialect dialect, const QVariant& a, const QVariant& b) {
    if (a.isNull() || b.isNull())
        return a.isNull() && b.isNull();
    if (dialect == db::Dialect::SQLite)
        return a.toString() == b.toString();
    auto key = [](const QVariant& v) {
        QString s = v.toString();
        while (s.endsWith(u' '))
            s.chop(1);
        return s;
    };
    return key(a).compare(key(b), Qt::CaseInsensitive) == 0;
}

} // namespace

QString dailySummary(const QSqlDatabase& db, const EodRequest& request) {
    const Range range = rangeOf(request);
    ReportText out;
    header(out, request, u"Daily Transaction summary"_s,
           u"BizDate   : "_s + request.fromText + u" to "_s + request.toText);

    Currency running;
    {
        // Rows come in whatever order the server groups them.
        auto q = db::exec(db,
                          u"select billtype,sum(PVALUE) as TBal from customize_transaction "
                          "where TrsDate between ? and ? Group by billtype"_s,
                          {range.start, range.end});
        QString label;
        while (q.next()) {
            label = billTypeLabel(q.value(0).toString(), label);
            const Currency total = db::readMoney(q.value(1));
            out.line(label + fill(30, label.size(), label) + rightAmount(total));
            running += total;
        }
        out.line();
    }

    billLines(out, db, range, u"IN"_s, u"[TOPUP / IN VALUE]"_s, running);
    billLines(out, db, range, u"OUT"_s, u"[WITHDRAW / OUT VALUE]"_s, running);

    {
        // The commission block covers the from-date alone, whatever the to-date: the lines
        // dated that business date, which posting stores at 00:00:00.
        auto q = db::exec(db,
                          u"select a.StaffCode,b.StaffName, sum(a.PValue) as TBal "
                          "from Customize_StaffComm as a left outer join tpay_mt_staff as b "
                          "on b.staffcode=a.staffcode WHERE a.TrsDate=? "
                          "group by a.StaffCode,b.staffname order by a.StaffCode"_s,
                          {range.start});
        codeNameAmountBlock(out, q, u"[STAFF COMMISSION]"_s, running);
    }

    out.line(EndLine);
    return out.text();
}

QString memberBalances(const QSqlDatabase& db, const EodRequest& request) {
    const Range range = rangeOf(request);
    ReportText out;
    header(out, request, u"Member Balances"_s, u"as at     : "_s + request.toText);

    auto moved = db::exec(db,
                          u"select CardNo,Name,sum(PValue) as TBal from Customize_Transaction "
                          "WHERE TrsDate between ? and ? group by cardno,name order by CardNo"_s,
                          {range.start, range.end});
    codeNameAmountBlock(out, moved, u"[MEMBER BALANCES]"_s);

    auto pending =
        db::exec(db,
                 u"select a.CardNo,b.membername,sum(a.FValue) as TBal from Customize_TopUp as a "
                 "left outer join tloy_mt_member as b on b.membercode=a.cardno "
                 "WHERE a.UpdateStatus=0 and (a.DateInput between ? and ?) "
                 "group by a.cardno, b.membername order by a.CardNo"_s,
                 {range.start, range.end});
    codeNameAmountBlock(out, pending, u"[PENDING TOPUP VALUE]"_s);

    out.line(EndLine);
    return out.text();
}

QString pendingDetails(const QSqlDatabase& db, const EodRequest& request) {
    rangeOf(request); // every pending top-up is listed, but the dates must still be dates
    ReportText out;
    header(out, request, u"Pending Topup Details"_s, u"as at     : "_s + request.toText);

    // One pass in card order instead of a statement per card: the same lines, at the cost of
    // the pending rows alone.
    auto q = db::exec(db, u"select a.CardNo,b.MemberName,a.DateInput,a.RefTrsNo,a.BillNo,a.FValue "
                          "from Customize_topup as a "
                          "left outer join tloy_mt_member as b on b.membercode=a.cardno "
                          "WHERE a.UpdateStatus=0 order by a.CardNo,a.DateInput"_s);
    const db::Dialect dialect = db::dialect(db);
    QVariant card;
    bool open = false;
    Currency running;
    while (q.next()) {
        if (!open || !sameCard(dialect, card, q.value(0))) {
            if (open)
                closeBlock(out, running);
            card = q.value(0);
            open = true;
            out.line(u"["_s + card.toString() + u"-"_s + q.value(1).toString() + u"]"_s);
        }
        const QVariant billNo = q.value(4);
        const Currency value = db::readMoney(q.value(5));
        out.line(u"Ref:"_s + q.value(3).toString());
        out.line(dateText(q.value(2)) +
                 (billNo.isNull() ? QString(20, u' ') : padColumn(billNo.toString(), 20)) +
                 rightAmount(value));
        out.line();
        running += value;
    }
    if (open)
        closeBlock(out, running);

    out.line(EndLine);
    return out.text();
}

QString staffCommission(const QSqlDatabase& db, const EodRequest& request) {
    const Range range = rangeOf(request);
    ReportText out;
    header(out, request, u"Staff Commission Details"_s,
           u"Date      : "_s + request.fromText + u" to "_s + request.toText);

    // A till has a handful of staff: one statement for each is cheap and reads only their lines.
    // The list is read whole first, as a connection serves one result at a time.
    std::vector<std::pair<QString, QString>> staff;
    {
        auto list = db::exec(db,
                             u"select a.StaffCode,b.StaffName,sum(a.PValue) as TBal "
                             "from Customize_StaffComm as a "
                             "left outer join tpay_mt_staff as b on b.staffcode=a.staffcode "
                             "WHERE a.TrsDate between ? and ? "
                             "group by a.staffcode,b.staffname order by a.staffcode"_s,
                             {range.start, range.end});
        while (list.next())
            staff.emplace_back(list.value(0).toString(), list.value(1).toString());
    }
    for (const auto& [code, name] : staff) {
        out.line(u"["_s + code + u"-"_s + name + u"]"_s);
        auto lines = db::exec(db,
                              u"select TrsDate,RefTrsNo,CardNo,Name,pValue "
                              "from Customize_StaffComm WHERE StaffCode=? and "
                              "TrsDate between ? and ? order by TrsDate"_s,
                              {code, range.start, range.end});
        Currency running;
        while (lines.next()) {
            const Currency value = db::readMoney(lines.value(4));
            out.line(u"Ref:"_s + lines.value(1).toString());
            out.line(dateText(lines.value(0)) + u" "_s + padColumn(lines.value(2).toString(), 10) +
                     lines.value(3).toString().left(20));
            out.line(u"Earning : "_s + QString(20, u' ') + rightAmount(value));
            out.line();
            running += value;
        }
        closeBlock(out, running);
    }

    out.line(EndLine);
    return out.text();
}

QString eodReport(EodReport report, const QSqlDatabase& db, const EodRequest& request) {
    switch (report) {
    case EodReport::DailySummary:
        return dailySummary(db, request);
    case EodReport::MemberBalances:
        return memberBalances(db, request);
    case EodReport::PendingDetails:
        return pendingDetails(db, request);
    case EodReport::StaffCommission:
        return staffCommission(db, request);
    }
    return {};
}

} // namespace pondar::reports
