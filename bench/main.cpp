// Times the end-of-day reports, the member report and log grids, the slip and a Save on a large
// generated ledger. Usage:
//   pondar-bench [--db FILE] [--members N] [--lines N] [--pending N] [--days N] [--runs N]
// FILE is generated when it holds no ledger yet and reused afterwards (default: a temporary
// file). --sync sets SQLite's synchronous mode for the timings; with FULL, the default, a Save
// waits for the disk at each of its statements. Figures are milliseconds, the median and the
// slowest of the runs.
//   pondar-bench --tills N --pgsql "host=... dbname=... user=..." [--seconds S]
// times Saves per second for 1, 2, 4, ... N till processes at once against one PostgreSQL
// database (tables and members made there when missing), with the ratio to one till.

#include "ledger.h"
#include "tills.h"

#include "reports/eod.h"
#include "reports/grids.h"
#include "reports/reporttext.h"
#include "reports/slip.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "transactions/handoff.h"
#include "transactions/journal.h"
#include "transactions/ledger.h"
#include "transactions/save.h"

#include <pondar/error.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

QTextStream out(stdout);

// Runs `work` `runs` times; `work` returns how many rows or lines it produced.
void timeIt(const QString& what, int runs, const std::function<qint64()>& work) {
    std::vector<double> ms;
    qint64 rows = 0;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        rows = work();
        ms.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(ms.begin(), ms.end());
    out << what.leftJustified(46) << QString::number(rows).rightJustified(9)
        << QString::number(ms[ms.size() / 2], 'f', 1).rightJustified(10)
        << QString::number(ms.back(), 'f', 1).rightJustified(10) << Qt::endl;
}

qint64 lineCount(const QString& text) {
    return text.count(u"\r\n"_s);
}

qint64 drain(QSqlQuery&& q) {
    qint64 n = 0;
    while (q.next())
        ++n;
    return n;
}

qint64 rowCount(const QSqlDatabase& db, const QString& table) {
    auto q = db::exec(db, u"select count(*) from "_s + table);
    return q.next() ? q.value(0).toLongLong() : 0;
}

} // namespace

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
    const QCommandLineOption sync(u"sync"_s,
                                  u"SQLite synchronous mode for the timings (FULL, NORMAL, OFF)."_s,
                                  u"mode"_s, u"FULL"_s);
    const QCommandLineOption runs(u"runs"_s, u"Runs of each timing."_s, u"n"_s, u"5"_s);
    const QCommandLineOption tills(u"tills"_s, u"Till processes at most, on PostgreSQL."_s, u"n"_s);
    const QCommandLineOption pgsql(u"pgsql"_s, u"PostgreSQL connection for --tills."_s,
                                   u"connection"_s);
    const QCommandLineOption seconds(u"seconds"_s, u"Seconds of each --tills timing."_s, u"s"_s,
                                     u"5"_s);
    const QCommandLineOption worker(u"till-worker"_s, u"(internal) one till of --tills."_s, u"n"_s);
    parser.addOptions(
        {dbOption, members, lines, pending, days, sync, runs, tills, pgsql, seconds, worker});
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
    const int n = std::max(1, parser.value(runs).toInt());

    QTemporaryDir temp;
    const QString file =
        parser.isSet(dbOption) ? parser.value(dbOption) : temp.filePath(u"ledger.db"_s);

    try {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"bench"_s);
        db.setDatabaseName(file);
        if (!db.open())
            throw db::DatabaseError(u"cannot open "_s + file);
        db::createHostTables(db);
        db::ensureSchema(db);
        if (rowCount(db, u"Customize_Transaction"_s) == 0) {
            QElapsedTimer timer;
            timer.start();
            db::exec(db, u"PRAGMA synchronous=OFF"_s);
            bench::generateLedger(
                db, size, [](const QString& step) { out << "generating: " << step << Qt::endl; });
            out << "generated in " << timer.elapsed() / 1000 << " s" << Qt::endl;
        }
        const QString syncMode = parser.value(sync).toUpper();
        if (!QStringList{u"FULL"_s, u"NORMAL"_s, u"OFF"_s}.contains(syncMode))
            throw Error(u"--sync takes FULL, NORMAL or OFF"_s);
        db::exec(db, u"PRAGMA synchronous="_s + syncMode);
        out << "synchronous=" << syncMode << ", ledger " << file << " ("
            << QFileInfo(file).size() / (1024 * 1024)
            << " MB): " << rowCount(db, u"Customize_Transaction"_s) << " card lines, "
            << rowCount(db, u"Customize_Topup"_s) << " top-up rows, "
            << rowCount(db, u"Customize_StaffComm"_s) << " commission lines, "
            << rowCount(db, u"Customize_Log"_s) << " log lines, "
            << rowCount(db, u"tloy_mt_member"_s) << " members" << Qt::endl
            << Qt::endl;

        auto last = db::exec(db, u"select max(TrsDate) from Customize_Transaction"_s);
        last.next();
        const QDate lastDay = reports::dbDateTime(last.value(0)).date();
        last.close();
        const QDate day = lastDay.addDays(-size.days / 2);
        const QString dayText = day.toString(u"dd/MM/yyyy"_s);
        const QString monthEnd = day.addDays(29).toString(u"dd/MM/yyyy"_s);
        const QDateTime printed = QDateTime::currentDateTime();

        out << QString(u"what"_s).leftJustified(46) << QString(u"rows"_s).rightJustified(9)
            << QString(u"median ms"_s).rightJustified(10) << QString(u"max ms"_s).rightJustified(10)
            << Qt::endl;
        const std::pair<reports::EodReport, QString> eod[] = {
            {reports::EodReport::DailySummary, u"daily summary"_s},
            {reports::EodReport::MemberBalances, u"member balances"_s},
            {reports::EodReport::StaffCommission, u"staff commission"_s}};
        for (const auto& [report, name] : eod) {
            timeIt(name + u", one day (text lines)"_s, n, [&] {
                return lineCount(
                    reports::eodReport(report, db, {u"OUT1"_s, dayText, dayText, printed}));
            });
            timeIt(name + u", 30 days (text lines)"_s, n, [&] {
                return lineCount(
                    reports::eodReport(report, db, {u"OUT1"_s, dayText, monthEnd, printed}));
            });
        }
        timeIt(u"pending details, every pending (text lines)"_s, n, [&] {
            return lineCount(reports::pendingDetails(db, {u"OUT1"_s, dayText, dayText, printed}));
        });

        const QString card = bench::cardOf(7);
        timeIt(u"member report grid, one card, 30 days"_s, n,
               [&] { return drain(reports::memberTransactions(db, card, day, day.addDays(29))); });
        timeIt(u"member report grid, one card, all days"_s, n, [&] {
            return drain(reports::memberTransactions(db, card, bench::firstDay(), lastDay));
        });
        timeIt(u"log viewer grid, one business date"_s, n,
               [&] { return drain(reports::logLines(db, day)); });

        auto someRef = db::exec(
            db, u"select RefTrsNo from Customize_Transaction where Billtype='IN' and TrsDate=?"_s,
            {isoDayStart(day)});
        someRef.next();
        const QString ref = someRef.value(0).toString();
        someRef.close();
        timeIt(u"transaction slip by reference"_s, n, [&] {
            return lineCount(reports::transactionSlip(db, ref, TransactionMode::TopUp));
        });

        // A Save's database and journal work, the card write aside: the pending top-ups read
        // again, the journal record, settlement, transaction line, commission, introducer credit
        // and log line in one transaction, the journal marks; the statements alone are timed
        // too. Each run takes another member with pending top-ups, as a till would.
        SessionSettings session;
        session.Conn = db;
        session.IniPath = temp.filePath(u"pondar.ini"_s);
        session.StaffCode = u"S01"_s;
        session.BzDate = lastDay.toString(u"dd/MM/yyyy"_s);
        session.OutletCode = u"OUT1"_s;
        session.ServerComm = Currency::parse(u"1"_s);
        session.DownComm = 5;
        session.MemberComm = 10;
        QDateTime clock(lastDay, QTime(20, 0));
        session.clock = [&clock] { return clock; };
        int member = 0;
        auto save = [&](TransactionMode mode, bool statementsOnly) {
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
            db::Transaction tx(db);
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
            const Posting posting =
                makePosting(session, mode, boxes, plan, pending.ids, pending.sum);
            Journal& journal = journalOf(session);
            const qint64 entry =
                statementsOnly ? 0 : journal.record(posting, u"V11223344S"_s, Currency());
            if (!statementsOnly)
                journal.mark(entry, Journal::State::Written);
            PostTransaction(db, posting);
            tx.commit();
            if (!statementsOnly)
                journal.mark(entry, Journal::State::Posted);
            return qint64(1);
        };
        timeIt(u"connect look-ups (introducer, pending total)"_s, n,
               [&] { return qint64(LoadMemberExtras(db, bench::cardOf(member + 1)).found); });
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
                session.IniPath,
                HandOff{bench::cardOf(1), bench::nameOf(1), {}, {}, {}, {}, 1, u"R"_s}));
        });
    } catch (const Error& e) {
        std::fprintf(stderr, "pondar-bench: %s\n", qPrintable(e.message()));
        return 1;
    }
    QSqlDatabase::removeDatabase(u"bench"_s);
    return 0;
}
