#include "transactions/journal.h"

#include "shell/text.h"

#include <pondar/error.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

[[noreturn]] void fail(const QString& path, const QString& why) {
    throw Error(u"The till's journal "_s + QDir::toNativeSeparators(path) +
                u" cannot be written: "_s + why);
}

QSqlQuery run(const QSqlDatabase& db, const QString& path, const QString& sql,
              const QVariantList& values = {}) {
    QSqlQuery q(db);
    if (!q.prepare(sql))
        fail(path, q.lastError().text());
    for (const QVariant& v : values)
        q.addBindValue(v);
    if (!q.exec())
        fail(path, q.lastError().text());
    return q;
}

} // namespace

Journal::Journal(const QString& iniPath)
    : m_path(pathFor(iniPath))
    , m_connection(u"pondar-journal-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)) {}

Journal::~Journal() {
    if (QSqlDatabase::contains(m_connection)) {
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
    }
}

QString Journal::pathFor(const QString& iniPath) {
    return QFileInfo(iniPath).absoluteDir().filePath(u"pondar-journal.db"_s);
}

QSqlDatabase Journal::open() {
    if (QSqlDatabase::contains(m_connection)) {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        if (db.isOpen())
            return db;
    }
    QSqlDatabase db = QSqlDatabase::contains(m_connection)
                          ? QSqlDatabase::database(m_connection, false)
                          : QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    db.setDatabaseName(m_path);
    if (!db.open())
        fail(m_path, db.lastError().text());
    // WAL: a commit is one flush of the log, and readers never wait for the writer.
    run(db, m_path, u"PRAGMA journal_mode=WAL"_s);
    run(db, m_path, u"PRAGMA synchronous=FULL"_s);
    run(db, m_path,
        u"CREATE TABLE IF NOT EXISTS entry (id INTEGER PRIMARY KEY AUTOINCREMENT, "
        "state INTEGER NOT NULL, card TEXT NOT NULL, serial TEXT NOT NULL, "
        "old_balance TEXT NOT NULL, new_balance TEXT NOT NULL, recorded TEXT NOT NULL, "
        "posting TEXT NOT NULL)"_s);
    run(db, m_path, u"CREATE INDEX IF NOT EXISTS entry_state ON entry (state, card, id)"_s);
    return db;
}

qint64 Journal::record(const Posting& posting, const QString& serial, Currency oldBalance) {
    QSqlDatabase db = open();
    const QByteArray json = QJsonDocument(posting.toJson()).toJson(QJsonDocument::Compact);
    QSqlQuery q = run(db, m_path,
                      u"INSERT INTO entry (state,card,serial,old_balance,new_balance,recorded,"
                      "posting) VALUES (?,?,?,?,?,?,?)"_s,
                      {int(State::Recorded), posting.boxes.cardNo, serial,
                       oldBalance.toShortString(), posting.plan.newValue.toShortString(),
                       isoDateTime(posting.moment), QString::fromUtf8(json)});
    return q.lastInsertId().toLongLong();
}

void Journal::mark(qint64 id, State state) {
    QSqlDatabase db = open();
    // Only the record before the card write must survive a power cut: a lost "written" leaves
    // the card to tell at its next Connect, a lost "posted" a replay that finds the lines in place.
    run(db, m_path, u"PRAGMA synchronous=NORMAL"_s);
    run(db, m_path, u"UPDATE entry SET state=? WHERE id=?"_s, {int(state), id});
    run(db, m_path, u"PRAGMA synchronous=FULL"_s);
}

QList<Journal::Entry> Journal::entries(State state, const QString& cardNo) {
    QSqlDatabase db = open();
    QSqlQuery q =
        cardNo.isNull()
            ? run(db, m_path,
                  u"SELECT id,serial,old_balance,posting FROM entry WHERE state=? ORDER BY id"_s,
                  {int(state)})
            : run(db, m_path,
                  u"SELECT id,serial,old_balance,posting FROM entry WHERE state=? AND card=? "
                  "ORDER BY id"_s,
                  {int(state), cardNo});
    QList<Entry> out;
    while (q.next()) {
        Entry e;
        e.id = q.value(0).toLongLong();
        e.state = state;
        e.serial = q.value(1).toString();
        e.oldBalance = Currency::parse(q.value(2).toString());
        e.posting =
            Posting::fromJson(QJsonDocument::fromJson(q.value(3).toString().toUtf8()).object());
        out.append(e);
    }
    return out;
}

} // namespace pondar
