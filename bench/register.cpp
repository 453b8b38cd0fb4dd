#include "register.h"

#include "ledger.h"

#include "members/membermodel.h"
#include "shell/database.h"

#include <pondar/error.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <memory>
#include <unistd.h>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace pondar::bench {

namespace {

// Resident memory of the process in MB.
double residentMb() {
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    const double pages = fields.size() > 1 ? fields.at(1).toDouble() : 0;
    return pages * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double timeMs(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

void figure(QTextStream& out, const QString& what, double value, double goal, const char* unit) {
    const double ratio = value / goal;
    out << what.leftJustified(46) << QString::number(value, 'f', 2).rightJustified(9)
        << QString::number(goal, 'f', 2).rightJustified(10)
        << QString(QString::number(ratio, 'f', 2) + u'x').rightJustified(8) << "  " << unit
        << (ratio < 1 ? "" : "  OVER") << Qt::endl;
}

void check(bool ok, const QString& what) {
    if (!ok)
        throw Error(u"register: "_s + what);
}

} // namespace

void registerFigures(QTextStream& out, const QString& file, int members, int runs) {
    const QString connection = u"register"_s;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, connection);
        db.setDatabaseName(file);
        if (!db.open())
            throw db::DatabaseError(u"cannot open "_s + file);
        db::createHostTables(db);
        auto count = db::exec(db, u"select count(*) from tloy_mt_member"_s);
        count.next();
        const int stored = count.value(0).toInt();
        count.close();
        if (stored != members) {
            db::exec(db, u"delete from tloy_mt_member"_s);
            check(db.transaction(), u"no transaction"_s);
            QSqlQuery insert(db);
            insert.prepare(u"INSERT INTO tloy_mt_member (MemberCode,MemberName,NonActive) "
                           "VALUES (?,?,0)"_s);
            for (int n = 0; n < members; ++n) {
                insert.bindValue(0, cardOf(n));
                insert.bindValue(1, nameOf(n));
                check(insert.exec(), u"cannot add members"_s);
            }
            check(db.commit(), u"cannot add members"_s);
        }

        std::vector<double> open, last, lastMb, search, save, leftMb;
        for (int run = 0; run < runs; ++run) {
            const double before = residentMb();
            std::unique_ptr<members::MemberTableModel> model;
            // As the screen opens: the model, the first window, the record count.
            open.push_back(timeMs([&] {
                model = std::make_unique<members::MemberTableModel>(db);
                model->showAll();
                check(model->select(), u"no first window"_s);
                check(model->totalCount() == members, u"wrong count"_s);
                check(model->first() == 0, u"no first record"_s);
            }));
            const double opened = residentMb();
            last.push_back(timeMs([&] {
                const int row = model->last();
                check(model->code(row) == cardOf(members - 1), u"last is not the last member"_s);
            }));
            lastMb.push_back(residentMb() - opened);
            // A search: the one member, and its count for the caption.
            const QString picked = cardOf(members * 3 / 4 + run);
            search.push_back(timeMs([&] {
                model->showOnly(picked);
                check(model->select() && model->rowCount() == 1, u"search found nobody"_s);
                model->totalCount();
            }));
            // A save of a member near the end, as the screen saves: the edit, the count, the row
            // of the member saved.
            model->showAll();
            check(model->select(), u"no first window"_s);
            const QString code = cardOf(members - 2 - run);
            save.push_back(timeMs([&] {
                const int row = model->findRow(code);
                check(row >= 0, u"member to save not found"_s);
                check(model->setData(model->index(row, model->fieldIndex(u"MemberName"_s)),
                                     QString(nameOf(members - 2 - run) + u" S"_s)),
                      u"cannot edit"_s);
                check(model->submitAll(), u"cannot save"_s);
                model->totalCount();
                check(model->findRow(code) >= 0, u"saved member not found"_s);
            }));
            model.reset();
            leftMb.push_back(residentMb() - before);
        }
        figure(out, u"register opens (ms)"_s, median(open), 100, "ms");
        figure(out, u"register, last record (ms)"_s, median(last), 100, "ms");
        figure(out, u"register, last record memory (MB)"_s, std::max(0.0, median(lastMb)), 30,
               "MB");
        figure(out, u"register, search (ms)"_s, median(search), 20, "ms");
        figure(out, u"register, save last member (ms)"_s, median(save), 20, "ms");
        figure(out, u"register, memory after close (MB)"_s, std::max(0.0, median(leftMb)), 5, "MB");
    }
    QSqlDatabase::removeDatabase(connection);
}

} // namespace pondar::bench
