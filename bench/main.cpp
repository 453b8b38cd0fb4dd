// Measures the reports, the member register, the card exchanges and a Save on a large generated
// ledger, each beside its floor. Usage:
//   pondar-bench [--db FILE] [--members N] [--lines N] [--pending N] [--days N] [--sites N]
//                [--runs N] [--flat-db FILE --flat-lines N [--saves]]
// FILE is generated when it holds no ledger yet and reused afterwards (default: a temporary
// file). Report figures are the median milliseconds of the runs beside the floor: the same
// statements with the same values stepped through the SQLite C API, every column read, run
// interleaved with the reports, in processor time of the thread; the ratio is report over floor.
// --flat-db adds a second, smaller ledger and prints the cost per printed line on both, and one
// Save's database and journal work on both, with the ledger in the system's cache and without it;
// --saves prints only the Save. --sync sets SQLite's synchronous mode for the Save timings; with
// FULL, the default, a Save waits for the disk at its commit and at its journal record.
//   pondar-bench --tills N --pgsql "host=... dbname=... user=..." [--seconds S]
// times Saves per second for 1, 2, 4, ... N till processes at once against one PostgreSQL
// database (tables and members made there when missing), with the ratio to one till.

#include "cardcount.h"
#include "floor.h"
#include "ledger.h"
#include "register.h"
#include "tills.h"

#include "reports/eod.h"
#include "reports/grids.h"
#include "reports/reporttext.h"
#include "reports/slip.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "shell/textgrid.h"
#include "transactions/handoff.h"
#include "transactions/journal.h"
#include "transactions/ledger.h"
#include "transactions/save.h"
#include "transactions/supervisor.h"

#include <pondar/error.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

#include <sqlite3.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

QTextStream out(stdout);

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The processor time of this thread: the machine's other work does not count against a figure.
double cpuMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

double msSince(const QElapsedTimer& timer) {
    return double(timer.nsecsElapsed()) / 1e6;
}

// Runs `work` `runs` times; `work` returns how many rows or lines it produced.
void timeIt(const QString& what, int runs, const std::function<qint64()>& work) {
    std::vector<double> ms;
    qint64 rows = 0;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        rows = work();
        ms.push_back(msSince(timer));
    }
    std::sort(ms.begin(), ms.end());
    out << what.leftJustified(46) << QString::number(rows).rightJustified(9)
        << QString::number(ms[ms.size() / 2], 'f', 1).rightJustified(10)
        << QString::number(ms.back(), 'f', 1).rightJustified(10) << Qt::endl;
}

qint64 lineCount(const QString& text) {
    return text.count(u"\r\n"_s);
}

qint64 rowCount(const QSqlDatabase& db, const QString& table) {
    auto q = db::exec(db, u"select count(*) from "_s + table);
    return q.next() ? q.value(0).toLongLong() : 0;
}

QString iso(const QDateTime& moment) {
    return moment.toString(u"yyyy-MM-dd HH:mm:ss"_s);
}

// One figure against its floor: a piece of work and the statements it runs.
struct FloorCase {
    QString what;
    // Gives the rows shown, or leaves the report in `text` (its lines are counted after the
    // clock stops) and gives -1.
    std::function<qint64(QString& text)> work;
    std::vector<bench::Statement> floor;
};

struct FloorResult {
    qint64 lines = 0;
    double ms = 0;
    double floorMs = 0;
    double ratio() const { return floorMs > 0 ? ms / floorMs : 0; }
    double usPerLine() const { return lines > 0 ? ms * 1000 / double(lines) : 0; }
    // The report's own work per line: what the engine does grows with the ledger for report and
    // floor alike (deeper indexes, fewer pages cached).
    double usBeyondFloor() const { return lines > 0 ? (ms - floorMs) * 1000 / double(lines) : 0; }
};

// The work and its floor, interleaved run by run so that both see the same cache and load.
// Before timing, the statements the work runs are compared with the floor's: a floor that no
// longer matches its report is a bench fault, not a figure.
FloorResult measure(bench::Floor& floor, const FloorCase& c, int runs) {
    QString text;
    const QStringList ran = floor.traced([&] { c.work(text); });
    const QStringList mine = floor.expanded(c.floor);
    if (ran != mine)
        throw Error(c.what + u": the floor's statements are not the ones run:\n  ran:   "_s +
                    ran.join(u"\n         "_s) + u"\n  floor: "_s + mine.join(u"\n         "_s));
    std::vector<double> ms;
    std::vector<double> floorMs;
    FloorResult result;
    // Each goes first every other run, so that neither always finds the other's pages cached.
    for (int i = 0; i < runs; ++i) {
        for (int turn = 0; turn < 2; ++turn) {
            const double t0 = cpuMs();
            if ((turn + i) % 2 == 0) {
                result.lines = c.work(text);
                ms.push_back(cpuMs() - t0);
            } else {
                floor.run(c.floor);
                floorMs.push_back(cpuMs() - t0);
            }
        }
    }
    if (result.lines < 0)
        result.lines = lineCount(text);
    result.ms = median(ms);
    result.floorMs = median(floorMs);
    return result;
}

void floorHeader() {
    out << QString(u"what"_s).leftJustified(46) << QString(u"lines"_s).rightJustified(9)
        << QString(u"ms"_s).rightJustified(10) << QString(u"floor ms"_s).rightJustified(10)
        << QString(u"ratio"_s).rightJustified(8) << u"  goal"_s << Qt::endl;
}

void floorLine(const QString& what, const FloorResult& r, double goal) {
    out << what.leftJustified(46) << QString::number(r.lines).rightJustified(9)
        << QString::number(r.ms, 'f', 2).rightJustified(10)
        << QString::number(r.floorMs, 'f', 2).rightJustified(10)
        << QString(QString::number(r.ratio(), 'f', 2) + u'x').rightJustified(8) << u"  <= "_s
        << QString::number(goal, 'f', 2) << u'x' << (r.ratio() <= goal ? "" : "  OVER") << Qt::endl;
}

// Opens (and generates when empty) a ledger database under its own connection name.
QSqlDatabase openLedger(const QString& name, const QString& file, const bench::LedgerSize& size) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
    db.setDatabaseName(file);
    if (!db.open())
        throw db::DatabaseError(u"cannot open "_s + file);
    db::createHostTables(db);
    db::ensureSchema(db);
    if (rowCount(db, u"Customize_Transaction"_s) == 0) {
        QElapsedTimer timer;
        timer.start();
        db::exec(db, u"PRAGMA synchronous=OFF"_s);
        bench::generateLedger(db, size, [&](const QString& step) {
            out << "generating " << QFileInfo(file).fileName() << ": " << step << Qt::endl;
        });
        out << "generated in " << timer.elapsed() / 1000 << " s" << Qt::endl;
    }
    return db;
}

void describe(const QSqlDatabase& db, const QString& file) {
    out << "ledger " << file << " (" << QFileInfo(file).size() / (1024 * 1024)
        << " MB): " << rowCount(db, u"Customize_Transaction"_s) << " card lines, "
        << rowCount(db, u"Customize_Topup"_s) << " top-up rows, "
        << rowCount(db, u"Customize_StaffComm"_s) << " commission lines, "
        << rowCount(db, u"Customize_Log"_s) << " log lines, " << rowCount(db, u"tloy_mt_member"_s)
        << " members" << Qt::endl;
}

// The days a ledger spans.
std::pair<QDate, QDate> ledgerDays(const QSqlDatabase& db) {
    auto q = db::exec(db, u"select min(TrsDate), max(TrsDate) from Customize_Transaction"_s);
    q.next();
    return {reports::dbDateTime(q.value(0)).date(), reports::dbDateTime(q.value(1)).date()};
}

// The end-of-day reports over a range, with their floors: the statements each report runs,
// with the values it binds.
std::vector<FloorCase> eodCases(const QSqlDatabase& db, const QString& label, QDate from, QDate to,
                                const QDateTime& printed) {
    const reports::EodRequest request{u"OUT1"_s, from.toString(u"dd/MM/yyyy"_s),
                                      to.toString(u"dd/MM/yyyy"_s), printed};
    const QString start = iso(from.startOfDay());
    const QString end = iso(QDateTime(to, QTime(23, 59, 59)));
    auto report = [db, request](reports::EodReport which) {
        return [db, request, which](QString& text) {
            text = reports::eodReport(which, db, request);
            return qint64(-1);
        };
    };
    std::vector<FloorCase> cases;

    const QString lines = u"select TrsDate,BillNo,RefTrsNo,CardNo,Name,PValue "
                          "from Customize_Transaction WHERE TrsDate between ? and ? "
                          "and Billtype=? order by TrsDate"_s;
    cases.push_back({u"daily summary, "_s + label,
                     report(reports::EodReport::DailySummary),
                     {{u"select billtype,sum(PVALUE) as TBal from customize_transaction "
                       "where TrsDate between ? and ? Group by billtype"_s,
                       {start, end}},
                      {lines, {start, end, u"IN"_s}},
                      {lines, {start, end, u"OUT"_s}},
                      {u"select a.StaffCode,b.StaffName, sum(a.PValue) as TBal "
                       "from Customize_StaffComm as a left outer join tpay_mt_staff as b "
                       "on b.staffcode=a.staffcode WHERE a.TrsDate=? "
                       "group by a.StaffCode,b.staffname order by a.StaffCode"_s,
                       {start}}}});

    cases.push_back(
        {u"member balances, "_s + label,
         report(reports::EodReport::MemberBalances),
         {{u"select CardNo,Name,sum(PValue) as TBal from Customize_Transaction "
           "WHERE TrsDate between ? and ? group by cardno,name order by CardNo"_s,
           {start, end}},
          {u"select a.CardNo,b.membername,sum(a.FValue) as TBal from Customize_TopUp as a "
           "left outer join tloy_mt_member as b on b.membercode=a.cardno "
           "WHERE a.UpdateStatus=0 and (a.DateInput between ? and ?) "
           "group by a.cardno, b.membername order by a.CardNo"_s,
           {start, end}}}});

    // The staff list first, then each one's lines.
    const QString staffList = u"select a.StaffCode,b.StaffName,sum(a.PValue) as TBal "
                              "from Customize_StaffComm as a "
                              "left outer join tpay_mt_staff as b on b.staffcode=a.staffcode "
                              "WHERE a.TrsDate between ? and ? "
                              "group by a.staffcode,b.staffname order by a.staffcode"_s;
    std::vector<bench::Statement> commission{{staffList, {start, end}}};
    auto staff = db::exec(db, staffList, {from.startOfDay(), QDateTime(to, QTime(23, 59, 59))});
    QStringList codes;
    while (staff.next())
        codes.append(staff.value(0).toString());
    staff.close();
    for (const QString& code : std::as_const(codes))
        commission.push_back({u"select TrsDate,RefTrsNo,CardNo,Name,pValue "
                              "from Customize_StaffComm WHERE StaffCode=? and "
                              "TrsDate between ? and ? order by TrsDate"_s,
                              {code, start, end}});
    cases.push_back(
        {u"staff commission, "_s + label, report(reports::EodReport::StaffCommission), commission});
    return cases;
}

FloorCase pendingCase(const QSqlDatabase& db, QDate day, const QDateTime& printed) {
    const QString text = day.toString(u"dd/MM/yyyy"_s);
    return {u"pending details, every pending"_s,
            [db, text, printed](QString& report) {
                report = reports::pendingDetails(db, {u"OUT1"_s, text, text, printed});
                return qint64(-1);
            },
            {{u"select a.CardNo,b.MemberName,a.DateInput,a.RefTrsNo,a.BillNo,a.FValue "
              "from Customize_topup as a "
              "left outer join tloy_mt_member as b on b.membercode=a.cardno "
              "WHERE a.UpdateStatus=0 order by a.CardNo,a.DateInput"_s,
              {}}}};
}

std::vector<FloorCase> gridCases(const QSqlDatabase& db, const QString& card, QDate first,
                                 QDate last, QDate day) {
    const QString cardSql = u"select ID,Billtype as [Type],TrsDate as [Date],BillNo as [Ref],"
                            "PValue as [Value], RefTrsNo as [TrsNo] from Customize_Transaction "
                            "where CardNo=? and TrsDate between ? and ? order by TrsDate"_s;
    // A screen keeps its grid model and loads it again at each search.
    auto grid = std::make_shared<TextGridModel>();
    return {
        {u"member report grid, one card, all days"_s,
         [db, card, first, last, grid](QString&) {
             reports::memberTransactions(*grid, db, card, first, last);
             return qint64(grid->rowCount());
         },
         {{cardSql,
           {card, iso(QDateTime(first, QTime(0, 0, 1))),
            iso(QDateTime(last, QTime(23, 59, 59)))}}}},
        {u"log viewer grid, one business date"_s,
         [db, day, grid](QString&) {
             reports::logLines(*grid, db, day);
             return qint64(grid->rowCount());
         },
         {{u"Select a.ActualDate as 'Date',a.StaffCode as 'Staff',"
           "b.StaffName as 'Name',a.Description from customize_Log as a "
           "left outer join tpay_mt_staff as b on b.staffcode=a.staffcode "
           "where a.bizDate=? order by a.ActualDate"_s,
           {iso(day.startOfDay())}}}},
    };
}

// The card that has the most lines: the member report at its largest.
QString busiestCard(const QSqlDatabase& db) {
    auto q = db::exec(db, u"select CardNo from Customize_Transaction group by CardNo "
                          "order by count(*) desc limit 1"_s);
    return q.next() ? q.value(0).toString() : bench::cardOf(0);
}

// Reports at the floor: each end-of-day report for one day and for 30 days, pending details,
// the member report grid and the log viewer, each beside its floor.
void reportFigures(const QSqlDatabase& db, int runs, const QString& only) {
    bench::Floor floor(db);
    const auto [first, last] = ledgerDays(db);
    const QDate day = first.addDays(first.daysTo(last) / 2);
    const QDateTime printed = QDateTime::currentDateTime();
    std::vector<FloorCase> cases = eodCases(db, u"one day"_s, day, day, printed);
    for (FloorCase& c : eodCases(db, u"30 days"_s, day, day.addDays(29), printed))
        cases.push_back(std::move(c));
    cases.push_back(pendingCase(db, day, printed));
    for (FloorCase& c : gridCases(db, busiestCard(db), first, last, day))
        cases.push_back(std::move(c));
    floorHeader();
    for (const FloorCase& c : cases) {
        if (c.what.contains(only))
            floorLine(c.what, measure(floor, c, runs), 1.3);
    }
}

// Cost per printed line of the 30-day reports on two ledgers of different sizes: flat when the
// work follows the lines printed, not the size of the ledger.
void flatFigures(const QSqlDatabase& big, const QSqlDatabase& small, int runs) {
    auto perLine = [runs](const QSqlDatabase& db) {
        bench::Floor floor(db);
        const auto [first, last] = ledgerDays(db);
        const QDate from = first.addDays(std::max<qint64>(0, first.daysTo(last) - 29));
        std::vector<FloorResult> results;
        for (const FloorCase& c : eodCases(db, {}, from, last, QDateTime::currentDateTime()))
            results.push_back(measure(floor, c, runs));
        return results;
    };
    const qint64 bigLines = rowCount(big, u"Customize_Transaction"_s);
    const qint64 smallLines = rowCount(small, u"Customize_Transaction"_s);
    const std::vector<FloorResult> a = perLine(small);
    const std::vector<FloorResult> b = perLine(big);
    const QString names[] = {u"daily summary"_s, u"member balances"_s, u"staff commission"_s};
    out << Qt::endl
        << QString(u"us per printed line, last 30 days"_s).leftJustified(36)
        << QString(QString::number(smallLines) + u" lines"_s).rightJustified(16)
        << QString(QString::number(bigLines) + u" lines"_s).rightJustified(16)
        << QString(u"ratio"_s).rightJustified(8) << Qt::endl;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double ratio = a[i].usPerLine() > 0 ? b[i].usPerLine() / a[i].usPerLine() : 0;
        out << names[i].leftJustified(36)
            << QString(QString::number(a[i].usPerLine(), 'f', 3) + u" ("_s +
                       QString::number(a[i].lines) + u")"_s)
                   .rightJustified(16)
            << QString(QString::number(b[i].usPerLine(), 'f', 3) + u" ("_s +
                       QString::number(b[i].lines) + u")"_s)
                   .rightJustified(16)
            << QString(QString::number(ratio, 'f', 2) + u'x').rightJustified(8)
            << u"   beyond the floor "_s << QString::number(a[i].usBeyondFloor(), 'f', 3)
            << u" -> "_s << QString::number(b[i].usBeyondFloor(), 'f', 3) << Qt::endl;
    }
}

// Reader exchanges of a Connect and of a Save's card part on the simulated reader, beside the
// fewest that can do the job.
void cardFigures() {
    const bench::CardCounts counts = bench::countCardExchanges();
    out << Qt::endl
        << QString(u"card exchanges (select/login/read/write)"_s).leftJustified(46)
        << QString(u"count"_s).rightJustified(9) << QString(u"fewest"_s).rightJustified(10)
        << QString(u"ratio"_s).rightJustified(8) << u"  goal"_s << Qt::endl;
    auto line = [](const QString& what, const bench::Exchanges& e, int fewest) {
        const double ratio = double(e.total()) / fewest;
        out << QString(what + u" ("_s + e.text() + u")"_s).leftJustified(46)
            << QString::number(e.total()).rightJustified(9)
            << QString::number(fewest).rightJustified(10)
            << QString(QString::number(ratio, 'f', 2) + u'x').rightJustified(8) << u"  <= 1.20x"_s
            << (ratio <= 1.2 ? "" : "  OVER") << Qt::endl;
    };
    line(u"Connect"_s, counts.connect, bench::FewestConnect);
    line(u"Save, card part"_s, counts.save, bench::FewestSave);
}

} // namespace

// Wall time, median of `runs`: a Save's cost is mostly its flushes to disk.
double medianMs(int runs, const std::function<void()>& work) {
    std::vector<double> ms;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        ms.push_back(msSince(timer));
    }
    std::sort(ms.begin(), ms.end());
    return ms[ms.size() / 2];
}

// SQLite's own counters of one connection: pages it wrote, and pages it had to read from the file
// (from the system's cache or the disk) because its own cache did not hold them.
struct PageCounts {
    int written = 0;
    int read = 0;
};

sqlite3* sqliteHandle(const QSqlDatabase& db) {
    const QVariant handle = db.driver()->handle();
    return *static_cast<sqlite3* const*>(handle.constData());
}

PageCounts pageCounts(const QSqlDatabase& db, bool reset) {
    PageCounts c;
    int high = 0;
    sqlite3_db_status(sqliteHandle(db), SQLITE_DBSTATUS_CACHE_WRITE, &c.written, &high, reset);
    sqlite3_db_status(sqliteHandle(db), SQLITE_DBSTATUS_CACHE_MISS, &c.read, &high, reset);
    return c;
}

// A Save's database and journal work, the card write aside: the ledger balance and the card's
// status, the pending top-ups read again, the journal record, settlement, transaction line,
// commission, introducer credit and log line in one transaction, the journal marks; with
// statementsOnly, the statements alone. Each Save takes another member with pending top-ups, as a
// till would.
struct SaveBench {
    QSqlDatabase db;
    SessionSettings session;
    QDateTime clock;
    int member = 0;
    double lastMs = 0; // the last Save's own time, without the Connect look-up before it

    SaveBench(const QSqlDatabase& ledger, const QString& iniPath, QDate lastDay)
        : db(ledger)
        , clock(lastDay, QTime(20, 0)) {
        session.Conn = db;
        session.IniPath = iniPath;
        session.StaffCode = u"S01"_s;
        session.BzDate = lastDay.toString(u"dd/MM/yyyy"_s);
        session.OutletCode = u"OUT1"_s;
        session.ServerComm = Currency::parse(u"1"_s);
        session.DownComm = 5;
        session.MemberComm = 10;
        session.clock = [this] { return clock; };
        // After the last Save of an earlier run: a reference already in the ledger is a Save
        // already posted, which the posting skips, and that would time nothing.
        auto last =
            db::exec(db, u"select ActualDate from Customize_Log order by ID desc limit 1"_s);
        if (last.next())
            clock = std::max(clock, reports::dbDateTime(last.value(0)).addSecs(1));
    }

    qint64 save(TransactionMode mode, bool statementsOnly) {
        clock = clock.addSecs(1);
        member += 3; // every third member has an introducer
        const QString cardNo = bench::cardOf(member);
        const MemberExtras extras = LoadMemberExtras(db, cardNo);
        TransactionBoxes boxes;
        boxes.cardNo = cardNo;
        boxes.name = bench::nameOf(member);
        boxes.balance = u"100.00"_s;
        boxes.staffCode = u"S01"_s;
        boxes.introducer = extras.introducer;
        pageCounts(db, true);
        QElapsedTimer timer;
        timer.start();
        db::Transaction tx(db, cardNo);
        // The checks a Save makes before the card is written; their answers do not matter here.
        ledgerBalanceOf(session, cardNo);
        cardStatus(db, bench::serialOf(member));
        const PendingRows pending = pendingRows(db, cardNo);
        boxes.pending = pending.sum.format();
        SavePlan plan;
        if (mode == TransactionMode::TopUp) {
            boxes.topUp = u"50.00"_s;
            boxes.extra = u"5.00"_s;
            plan = *planTopUp(boxes).plan;
        } else {
            boxes.withdraw = u"20.00"_s;
            plan = *planWithdraw(boxes).plan;
        }
        const Posting posting = makePosting(session, mode, boxes, plan, pending.ids, pending.sum);
        Journal& journal = journalOf(session);
        const qint64 entry =
            statementsOnly ? 0 : journal.record(posting, u"V11223344S"_s, Currency());
        if (!statementsOnly)
            journal.mark(entry, Journal::State::Written);
        PostTransaction(db, posting);
        tx.commit();
        if (!statementsOnly)
            journal.mark(entry, Journal::State::Posted);
        lastMs = msSince(timer);
        return 1;
    }
};

// Drops the ledger from the system's cache and from the connection's, so that the next Save reads
// from the disk what it needs: a till whose ledger the server has not touched for a while.
void dropCaches(const QSqlDatabase& db, const QString& file) {
    db::exec(db, u"PRAGMA shrink_memory"_s);
    const int fd = ::open(QFile::encodeName(file).constData(), O_RDONLY);
    if (fd >= 0) {
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

// Reads the ledger file once into the system's cache: a busy server holds its ledger there.
void warmCache(const QString& file) {
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return;
    std::vector<char> buffer(1 << 20);
    while (f.read(buffer.data(), qint64(buffer.size())) > 0) {
    }
}

struct SaveTiming {
    std::vector<double> warm, cold, written, read;

    void check() const {
        if (median(written) == 0)
            throw Error(u"the timed Saves posted nothing"_s);
    }
};

// One ledger's Saves for the comparison, each with its own till folder for the journal.
struct SaveSide {
    QTemporaryDir folder;
    QString file;
    SaveBench saves;
    SaveTiming timing;

    SaveSide(const QSqlDatabase& db, const QString& ledgerFile, const QString& syncMode)
        : file(ledgerFile)
        , saves(db, folder.filePath(u"pondar.ini"_s), ledgerDays(db).second) {
        db::exec(db, u"PRAGMA synchronous="_s + syncMode);
        saves.save(TransactionMode::TopUp, false); // the journal file and the statements made once
    }
    void warm() {
        saves.save(TransactionMode::TopUp, false);
        timing.warm.push_back(saves.lastMs);
        timing.written.push_back(pageCounts(saves.db, false).written);
    }
    void cold() {
        dropCaches(saves.db, file);
        saves.save(TransactionMode::TopUp, false);
        timing.cold.push_back(saves.lastMs);
        timing.read.push_back(pageCounts(saves.db, false).read);
    }
};

// The two ledgers' Saves take turns, so that whatever else the machine does falls on both alike.
void compareSaves(SaveSide& big, SaveSide& small, int runs) {
    warmCache(big.file);
    warmCache(small.file);
    for (int i = 0; i < runs; ++i) {
        big.warm();
        small.warm();
    }
    for (int i = 0; i < runs; ++i) {
        big.cold();
        small.cold();
    }
    big.timing.check();
    small.timing.check();
}

void printSaves(const SaveTiming& big, const SaveTiming& small, const QString& bigLines,
                const QString& smallLines) {
    out << QString(u"Save, database and journal"_s).leftJustified(34) << bigLines.rightJustified(14)
        << smallLines.rightJustified(14) << QString(u"ratio"_s).rightJustified(8) << u"  goal"_s
        << Qt::endl;
    const auto line = [](const QString& what, double b, double s, int decimals,
                         const QString& goal) {
        out << what.leftJustified(34) << QString::number(b, 'f', decimals).rightJustified(14)
            << QString::number(s, 'f', decimals).rightJustified(14)
            << QString(QString::number(b / s, 'f', 2) + u'x').rightJustified(8) << goal << Qt::endl;
    };
    const double bigMs = median(big.warm);
    const double smallMs = median(small.warm);
    const bool fast = bigMs <= 2.5 && bigMs <= 1.1 * smallMs;
    line(u"median ms, ledger in memory"_s, bigMs, smallMs, 2,
         u"  <= 2.50 ms and <= 1.10x"_s + (fast ? u""_s : u"  OVER"_s));
    line(u"pages written"_s, median(big.written), median(small.written), 0, {});
    line(u"median ms, ledger on disk only"_s, median(big.cold), median(small.cold), 2,
         u"  (no goal: the disk's seek time)"_s);
    line(u"pages read from the file"_s, median(big.read), median(small.read), 0, {});
}

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const bench::LedgerSize defaults;
    const QCommandLineOption dbOption(u"db"_s, u"Ledger database file."_s, u"file"_s);
    const QCommandLineOption members(u"members"_s, u"Members."_s, u"n"_s,
                                     QString::number(defaults.members));
    const QCommandLineOption lines(u"lines"_s, u"Card lines."_s, u"n"_s,
                                   QString::number(defaults.lines));
    const QCommandLineOption pending(u"pending"_s, u"Pending top-ups."_s, u"n"_s,
                                     QString::number(defaults.pending));
    const QCommandLineOption days(u"days"_s, u"Business days."_s, u"n"_s,
                                  QString::number(defaults.days));
    const QCommandLineOption sites(u"sites"_s, u"Outlets the lines are spread over."_s, u"n"_s,
                                   QString::number(defaults.sites));
    const QCommandLineOption flatDb(
        u"flat-db"_s, u"A second, smaller ledger for the cost per printed line."_s, u"file"_s);
    const QCommandLineOption flatLines(u"flat-lines"_s, u"Card lines of the second ledger."_s,
                                       u"n"_s, u"10000"_s);
    const QCommandLineOption sync(u"sync"_s,
                                  u"SQLite synchronous mode for the Save (FULL, NORMAL, OFF)."_s,
                                  u"mode"_s, u"FULL"_s);
    const QCommandLineOption runs(u"runs"_s, u"Runs of each timing."_s, u"n"_s, u"5"_s);
    const QCommandLineOption registerMembersOption(
        u"register-members"_s, u"Members in the register's own table."_s, u"n"_s, u"100000"_s);
    const QCommandLineOption only(
        u"only"_s, u"Measure only the reports whose name holds this text."_s, u"text"_s);
    const QCommandLineOption savesOnly(
        u"saves"_s, u"Only the Save on both ledgers (with --flat-db), in memory and on disk."_s);
    const QCommandLineOption tills(u"tills"_s, u"Till processes at most, on PostgreSQL."_s, u"n"_s);
    const QCommandLineOption pgsql(u"pgsql"_s, u"PostgreSQL connection for --tills."_s,
                                   u"connection"_s);
    const QCommandLineOption seconds(u"seconds"_s, u"Seconds of each --tills timing."_s, u"s"_s,
                                     u"5"_s);
    const QCommandLineOption worker(u"till-worker"_s, u"(internal) one till of --tills."_s, u"n"_s);
    parser.addOptions({dbOption, members, lines, pending, days, sites, flatDb, flatLines, sync,
                       runs, only, registerMembersOption, savesOnly, tills, pgsql, seconds,
                       worker});
    parser.process(app);

    if (parser.isSet(tills) || parser.isSet(worker)) {
        try {
            if (!parser.isSet(pgsql))
                throw Error(u"--tills runs against a server: give --pgsql"_s);
            const int ms = std::max(100, int(parser.value(seconds).toDouble() * 1000));
            if (parser.isSet(worker))
                return bench::runTillWorker(parser.value(worker).toInt(), parser.value(pgsql), ms);
            return bench::runTills(std::max(1, parser.value(tills).toInt()), parser.value(pgsql),
                                   ms, QCoreApplication::applicationFilePath());
        } catch (const Error& e) {
            std::fprintf(stderr, "pondar-bench: %s\n", qPrintable(e.message()));
            return 1;
        }
    }

    bench::LedgerSize size;
    size.members = std::max(10, parser.value(members).toInt());
    size.lines = std::max(100, parser.value(lines).toInt());
    size.pending = std::max(10, parser.value(pending).toInt());
    size.days = std::max(2, parser.value(days).toInt());
    size.sites = std::max(1, parser.value(sites).toInt());
    const int n = std::max(1, parser.value(runs).toInt());

    const int registerMembers = std::max(10, parser.value(registerMembersOption).toInt());

    QTemporaryDir temp;
    // The register's members live beside the ledger, made once for each size.
    const QString registerFile =
        (parser.isSet(dbOption) ? QFileInfo(parser.value(dbOption)).absolutePath() : temp.path()) +
        u"/register-"_s + QString::number(registerMembers) + u".db"_s;
    const QString file =
        parser.isSet(dbOption) ? parser.value(dbOption) : temp.filePath(u"ledger.db"_s);

    try {
        const QString syncMode = parser.value(sync).toUpper();
        if (!QStringList{u"FULL"_s, u"NORMAL"_s, u"OFF"_s}.contains(syncMode))
            throw Error(u"--sync takes FULL, NORMAL or OFF"_s);
        QSqlDatabase db = openLedger(u"bench"_s, file, size);
        describe(db, file);
        out << Qt::endl;
        const bool saveOnly = parser.isSet(savesOnly);
        if (!saveOnly)
            reportFigures(db, n, parser.value(only));
        if (parser.isSet(only))
            return 0;
        if (saveOnly && !parser.isSet(flatDb))
            throw Error(u"--saves compares two ledgers: give --flat-db"_s);

        // The Save on both ledgers, the small one's connection kept open until then.
        const auto saveFigures = [&] {
            SaveSide big(db, file, syncMode);
            SaveSide small(QSqlDatabase::database(u"flat"_s), parser.value(flatDb), syncMode);
            compareSaves(big, small, n);
            out << Qt::endl;
            printSaves(big.timing, small.timing, QString::number(size.lines) + u" lines"_s,
                       parser.value(flatLines) + u" lines"_s);
        };
        if (parser.isSet(flatDb)) {
            // A younger site: the same members and lines per day, fewer days.
            bench::LedgerSize small = size;
            small.lines = std::max(100, parser.value(flatLines).toInt());
            const double scale = double(small.lines) / size.lines;
            small.days = std::max(2, int(size.days * scale));
            small.pending = std::max(10, int(size.pending * scale));
            QSqlDatabase smallDb = openLedger(u"flat"_s, parser.value(flatDb), small);
            if (!saveOnly)
                flatFigures(db, smallDb, n);
        }
        if (saveOnly) {
            saveFigures();
            return 0;
        }

        out << Qt::endl
            << QString(u"member register, "_s + QString::number(registerMembers) + u" members"_s)
                   .leftJustified(46)
            << QString(u"measured"_s).rightJustified(9) << QString(u"goal"_s).rightJustified(10)
            << QString(u"ratio"_s).rightJustified(8) << Qt::endl;
        bench::registerFigures(out, registerFile, registerMembers, n);

        cardFigures();
        out << Qt::endl;

        db::exec(db, u"PRAGMA synchronous="_s + syncMode);
        const auto [firstDay, lastDay] = ledgerDays(db);
        out << "synchronous=" << syncMode << Qt::endl;
        out << QString(u"what"_s).leftJustified(46) << QString(u"rows"_s).rightJustified(9)
            << QString(u"median ms"_s).rightJustified(10) << QString(u"max ms"_s).rightJustified(10)
            << Qt::endl;
        const QDate day = firstDay.addDays(firstDay.daysTo(lastDay) / 2);
        auto someRef = db::exec(
            db, u"select RefTrsNo from Customize_Transaction where Billtype='IN' and TrsDate=?"_s,
            {isoDayStart(day)});
        someRef.next();
        const QString ref = someRef.value(0).toString();
        someRef.close();
        timeIt(u"transaction slip by reference"_s, n, [&] {
            return lineCount(reports::transactionSlip(db, ref, TransactionMode::TopUp));
        });

        SaveBench saves(db, temp.filePath(u"pondar.ini"_s), lastDay);
        const auto save = [&](TransactionMode mode, bool statementsOnly) {
            return saves.save(mode, statementsOnly);
        };
        int member = 0;
        timeIt(u"connect look-ups (introducer, pending total)"_s, n,
               [&] { return qint64(LoadMemberExtras(db, bench::cardOf(++member)).found); });
        timeIt(u"connect card registry look-up"_s, n, [&] {
            return qint64(cardStatus(db, bench::serialOf(member)) == CardStatus::Active);
        });
        timeIt(u"Save, top-up settling pending, statements"_s, n,
               [&] { return save(TransactionMode::TopUp, true); });
        timeIt(u"Save, withdrawal, statements"_s, n,
               [&] { return save(TransactionMode::Withdraw, true); });
        timeIt(u"Save, top-up settling pending, whole"_s, n,
               [&] { return save(TransactionMode::TopUp, false); });
        timeIt(u"Save, withdrawal, whole"_s, n,
               [&] { return save(TransactionMode::Withdraw, false); });
        timeIt(u"hand-off to the settings file alone"_s, n, [&] {
            return qint64(WriteHandOff(
                temp.filePath(u"pondar.ini"_s),
                HandOff{bench::cardOf(1), bench::nameOf(1), {}, {}, {}, {}, 1, u"R"_s}));
        });
        if (parser.isSet(flatDb))
            saveFigures();
    } catch (const Error& e) {
        std::fprintf(stderr, "pondar-bench: %s\n", qPrintable(e.message()));
        return 1;
    }
    QSqlDatabase::removeDatabase(u"flat"_s);
    QSqlDatabase::removeDatabase(u"bench"_s);
    return 0;
}
