#pragma once

#include <QDate>
#include <QSqlDatabase>
#include <QString>

#include <functional>

namespace pondar::bench {

// The size of a generated ledger. The defaults are a busy outlet after two years: fifty
// thousand members, a million card lines (with a commission and a log line for each top-up
// and each line), a hundred thousand pending top-ups waiting and as many already settled.
struct LedgerSize {
    int members = 50000;
    int lines = 1000000;
    int pending = 100000;
    int staff = 20;
    int days = 730;
    // Outlets the lines are spread over, OUT1 to OUTn.
    int sites = 1;
};

// The business days the ledger spans: firstDay() and the size's days after it.
QDate firstDay();

// Card number and name of member n (0-based), as the generator writes them.
QString cardOf(int n);
QString nameOf(int n);
// The serial of member n's registered card, as Connect reads it.
QString serialOf(int n);

// Outlet n (0-based) of a generated ledger: "OUT1", "OUT2", ...
QString outletOf(int n);

// Fills the component's tables and the host's member and staff tables, which must exist and be
// empty, with a deterministic ledger: lines are spread evenly over the days and stamped the
// business day at 00:00:00 as posting stamps them. Amounts are a canteen till's: a few top-ups
// of 5 to 50 and many purchases of 0.50 to 5.00 that never take a card below zero, so that every
// card's lines chain (each line's previous value is the card's balance) and a 30-day daily
// summary of a ten-million-line ledger still prints its totals in ten columns (withdrawals
// under a million, the widest negative amount that fits). Runs in one database transaction on `db`,
// which must be the generator's own connection. Throws db::DatabaseError.
void generateLedger(const QSqlDatabase& db, const LedgerSize& size,
                    const std::function<void(const QString&)>& progress = {});

} // namespace pondar::bench
