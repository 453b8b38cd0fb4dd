#include "reports/eod.h"

#include "reports/reporttext.h"
#include "shell/database.h"
#include "shell/rows.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QDate>

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
    db::Rows q(db,
               u"select TrsDate,BillNo,RefTrsNo,CardNo,Name,PValue "
               "from Customize_Transaction WHERE TrsDate between ? and ? "
               "and Billtype=? order by TrsDate"_s,
               {range.start, range.end, billType});
    bool any = false;
    while (q.next()) {
        if (!any)
            out.line(heading);
        any = true;
        const Currency value = q.money(5);
        out.date(q, 0).add(u" #").add(q.text(1)).end();
        out.add(u"RefNo# :").add(q.text(2)).end();
        out.code(q.text(3)).name(q.text(4)).amount(value).end();
        out.end();
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
        const Currency value = q.money(2);
        out.code(q.text(0)).name(q.text(1)).amount(value).end();
        running += value;
    }
    if (any)
        closeBlock(out, running);
}

// Whether two card numbers are one group of a GROUP BY on this server: SQL Server compares
// without case (its usual collation) and ignores trailing blanks; SQLite compares exactly.
bool sameCard(db::Dialect dialect, bool aNull, QStringView a, bool bNull, QStringView b) {
    if (aNull || bNull)
        return aNull && bNull;
    if (dialect == db::Dialect::SQLite)
        return a == b;
    auto key = [](QStringView s) {
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
        db::Rows q(db,
                   u"select billtype,sum(PVALUE) as TBal from customize_transaction "
                   "where TrsDate between ? and ? Group by billtype"_s,
                   {range.start, range.end});
        QString label;
        while (q.next()) {
            label = billTypeLabel(q.text(0).toString(), label);
            const Currency total = q.money(1);
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
        db::Rows q(db,
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

    db::Rows moved(db,
                   u"select CardNo,Name,sum(PValue) as TBal from Customize_Transaction "
                   "WHERE TrsDate between ? and ? group by cardno,name order by CardNo"_s,
                   {range.start, range.end});
    codeNameAmountBlock(out, moved, u"[MEMBER BALANCES]"_s);

    db::Rows pending(
        db,
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
    db::Rows q(db, u"select a.CardNo,b.MemberName,a.DateInput,a.RefTrsNo,a.BillNo,a.FValue "
                   "from Customize_topup as a "
                   "left outer join tloy_mt_member as b on b.membercode=a.cardno "
                   "WHERE a.UpdateStatus=0 order by a.CardNo,a.DateInput"_s);
    const db::Dialect dialect = db::dialect(db);
    QString card;
    bool cardNull = false;
    bool open = false;
    Currency running;
    while (q.next()) {
        if (!open || !sameCard(dialect, cardNull, card, q.isNull(0), q.text(0))) {
            if (open)
                closeBlock(out, running);
            card = q.text(0).toString();
            cardNull = q.isNull(0);
            open = true;
            out.add(u"[").add(card).add(u"-").add(q.text(1)).add(u"]").end();
        }
        const Currency value = q.money(5);
        out.add(u"Ref:").add(q.text(3)).end();
        out.date(q, 2);
        if (q.isNull(4))
            out.blanks(20);
        else
            out.padded(q.text(4), 20);
        out.amount(value).end();
        out.end();
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
    // The list is read to its end first, since SQL Server runs one result at a time on a
    // connection.
    struct Staff {
        QString code;
        QString name;
    };
    std::vector<Staff> staff;
    {
        db::Rows list(db,
                      u"select a.StaffCode,b.StaffName,sum(a.PValue) as TBal "
                      "from Customize_StaffComm as a "
                      "left outer join tpay_mt_staff as b on b.staffcode=a.staffcode "
                      "WHERE a.TrsDate between ? and ? "
                      "group by a.staffcode,b.staffname order by a.staffcode"_s,
                      {range.start, range.end});
        while (list.next())
            staff.push_back({list.text(0).toString(), list.text(1).toString()});
    }
    for (const Staff& member : staff) {
        out.add(u"[").add(member.code).add(u"-").add(member.name).add(u"]").end();
        db::Rows lines(db,
                       u"select TrsDate,RefTrsNo,CardNo,Name,pValue "
                       "from Customize_StaffComm WHERE StaffCode=? and "
                       "TrsDate between ? and ? order by TrsDate"_s,
                       {member.code, range.start, range.end});
        Currency running;
        while (lines.next()) {
            const Currency value = lines.money(4);
            out.add(u"Ref:").add(lines.text(1)).end();
            out.date(lines, 0)
                .add(u" ")
                .padded(lines.text(2), 10)
                .add(lines.text(3).left(20))
                .end();
            out.add(u"Earning : ").blanks(20).amount(value).end();
            out.end();
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
