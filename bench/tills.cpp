#include "tills.h"

#include "shell/database.h"
#include "shell/session.h"
#include "transactions/journal.h"
#include "transactions/ledger.h"
#include "transactions/save.h"

#include <pondar/error.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlError>
#include <QTemporaryDir>
#include <QTextStream>

#include <memory>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace pondar::bench {

namespace {

const int CardsPerTill = 50;
const QString Introducer = u"BINTRO"_s;

QString tillCard(int till, int card) {
    return u"B%1-%2"_s.arg(till).arg(card);
}

QSqlDatabase connect(const QString& name, const QString& connection) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, name);
    if (const QString error = db::setPostgreSqlConnection(db, connection); !error.isEmpty())
        throw db::DatabaseError(error);
    if (!db.open())
        throw db::DatabaseError(u"cannot open the PostgreSQL database: "_s + db.lastError().text());
    return db;
}

} // namespace

int runTillWorker(int till, const QString& connection, int milliseconds) {
    QSqlDatabase db = connect(u"till"_s, connection);
    QTemporaryDir temp;
    SessionSettings session;
    session.Conn = db;
    session.IniPath = temp.filePath(u"pondar.ini"_s);
    session.StaffCode = u"S01"_s;
    session.BzDate = u"15/11/2026"_s;
    session.OutletCode = u"OUT%1"_s.arg(till);
    session.ServerComm = Currency::parse(u"1"_s);
    session.DownComm = 5;
    session.MemberComm = 10;
    QDateTime clock(QDate(2026, 11, 15), QTime(8, 0));
    session.clock = [&clock] { return clock; };

    // A Save's database and journal work, the card write aside, on this till's own cards in
    // turn; their introducer is every till's.
    qint64 saves = 0;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds) {
        const int card = int(saves % CardsPerTill);
        if (card == 0)
            clock = clock.addSecs(1);
        const QString cardNo = tillCard(till, card);
        const MemberExtras extras = LoadMemberExtras(db, cardNo);
        TransactionBoxes boxes;
        boxes.cardNo = cardNo;
        boxes.name = cardNo;
        boxes.balance = u"100.00"_s;
        boxes.staffCode = u"S01"_s;
        boxes.introducer = extras.introducer;
        boxes.topUp = u"50.00"_s;
        db::Transaction tx(db, cardNo);
        const PendingRows pending = pendingRows(db, cardNo);
        boxes.pending = pending.sum.format();
        const SavePlan plan = *planTopUp(boxes).plan;
        const Posting posting =
            makePosting(session, TransactionMode::TopUp, boxes, plan, pending.ids, pending.sum);
        Journal& journal = journalOf(session);
        const qint64 entry = journal.record(posting, u"V11223344S"_s, Currency());
        journal.mark(entry, Journal::State::Written);
        PostTransaction(db, posting);
        tx.commit();
        journal.mark(entry, Journal::State::Posted);
        ++saves;
    }
    QTextStream(stdout) << saves << Qt::endl;
    return 0;
}

int runTills(int maxTills, const QString& connection, int milliseconds, const QString& program) {
    QTextStream out(stdout);
    {
        QSqlDatabase db = connect(u"bench-tills"_s, connection);
        db::createHostTables(db);
        db::ensureSchema(db);
        if (!db::hasRow(db, u"SELECT 1 FROM tloy_mt_member WHERE MemberCode=?"_s, {Introducer})) {
            db::Transaction tx(db);
            db::exec(db, u"INSERT INTO tpay_mt_staff (StaffCode,StaffName) VALUES ('S01','Sam')"_s);
            db::exec(db, u"INSERT INTO tloy_mt_member (MemberCode,MemberName) VALUES (?,?)"_s,
                     {Introducer, Introducer});
            for (int t = 0; t < 64; ++t)
                for (int c = 0; c < CardsPerTill; ++c)
                    db::exec(db,
                             u"INSERT INTO tloy_mt_member (MemberCode,MemberName,downlinecode) "
                             "VALUES (?,?,?)"_s,
                             {tillCard(t, c), tillCard(t, c), Introducer});
            tx.commit();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(u"bench-tills"_s);

    out << QString(u"tills"_s).leftJustified(8) << QString(u"Saves"_s).rightJustified(9)
        << QString(u"Saves/s"_s).rightJustified(10) << QString(u"ratio to 1"_s).rightJustified(12)
        << Qt::endl;
    double one = 0;
    for (int tills = 1; tills <= std::min(maxTills, 64); tills *= 2) {
        std::vector<std::unique_ptr<QProcess>> workers;
        for (int t = 0; t < tills; ++t) {
            workers.push_back(std::make_unique<QProcess>());
            workers.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
            workers.back()->start(program,
                                  {u"--till-worker"_s, QString::number(t), u"--pgsql"_s, connection,
                                   u"--seconds"_s, QString::number(milliseconds / 1000.0)});
        }
        qint64 saves = 0;
        for (auto& w : workers) {
            if (!w->waitForFinished(milliseconds + 120000) || w->exitCode() != 0)
                throw Error(u"a till process failed"_s);
            saves += w->readAllStandardOutput().trimmed().toLongLong();
        }
        const double perSecond = saves * 1000.0 / milliseconds;
        if (tills == 1)
            one = perSecond;
        out << QString::number(tills).leftJustified(8) << QString::number(saves).rightJustified(9)
            << QString::number(perSecond, 'f', 1).rightJustified(10)
            << QString::number(one > 0 ? perSecond / one : 0, 'f', 2).rightJustified(12)
            << Qt::endl;
    }
    return 0;
}

} // namespace pondar::bench
