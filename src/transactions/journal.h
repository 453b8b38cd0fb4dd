#pragma once

#include "transactions/posting.h"

#include <pondar/currency.h>

#include <QList>
#include <QSqlDatabase>
#include <QString>

namespace pondar {

// The till's own record of every Save, "pondar-journal.db" beside the settings file: an SQLite
// database that no other till shares. A Save is recorded, durably, before its card write; marked
// written once the card took it; posted once the ledger holds it; void when the card refused
// it. What is written but not posted is posted later by a replay, and what was recorded with no
// known outcome (the till stopped during the card write) is settled by the card itself at its
// next Connect. Every method throws pondar::Error naming the file and the reason.
class Journal final {
public:
    enum class State { Recorded = 0, Written = 1, Posted = 2, Void = 3 };

    struct Entry {
        qint64 id = 0;
        State state = State::Recorded;
        QString serial;      // the card the Save was for
        Currency oldBalance; // what the card held before
        Posting posting;     // the new balance is posting.plan.newValue
    };

    explicit Journal(const QString& iniPath);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    static QString pathFor(const QString& iniPath);
    const QString& path() const { return m_path; }

    // Recorded and on disk before it returns.
    qint64 record(const Posting& posting, const QString& serial, Currency oldBalance);
    void mark(qint64 id, State state);
    // Entries in a state, oldest first; only the card's when cardNo is given.
    QList<Entry> entries(State state, const QString& cardNo = {});

private:
    QSqlDatabase open();

    QString m_path;
    QString m_connection;
};

} // namespace pondar
