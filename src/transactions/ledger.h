#pragma once

#include "card/balance.h"

#include <pondar/currency.h>

#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

namespace pondar {

struct SessionSettings;
struct Posting;

// What the transaction screen learns about a card's member after Connect.
struct MemberExtras {
    bool found = false; // an active member holds this code
    QString introducer; // DownlineCode, empty when none
    Currency pending;   // the card's pending top-ups
};

// The member's introducer and the card's pending total.
MemberExtras LoadMemberExtras(const QSqlDatabase& db, const QString& cardNo);

// The card's pending total is the one the balance display shows.
using card::pendingBalance;

// Credits the member's introducer with topUp x DownComm / 100 as a pending top-up under the
// top-up's reference. The row is written even with no introducer (an empty card number) and
// with DownComm 0 (a row of 0), as the reports expect one row per top-up.
void AddIntroducerCredit(const QSqlDatabase& db, const Posting& posting, Currency topUp);

// A card's balance by the ledger: NewValue of its latest line that is not a settlement ("PED"),
// or 0 with no line. That line's reference comes along.
struct LedgerBalance {
    Currency balance;
    QString lastRef;
    QString lastType;   // that line's bill type code
    Currency lastValue; // and the value it moved
};
LedgerBalance ledgerBalance(const QSqlDatabase& db, const QString& cardNo);

// The card's pending top-ups, read inside a Save's transaction: which rows, and their sum.
struct PendingRows {
    QList<qint64> ids;
    Currency sum;
};
PendingRows pendingRows(const QSqlDatabase& db, const QString& cardNo);

// The grids' statements, executed and ready for a model: the card's pending top-ups
// (columns Date, Ref, Value) and its transaction history (Type, Date, Receipt, Value, Ref).
QSqlQuery pendingGridQuery(const QSqlDatabase& db, const QString& cardNo);
QSqlQuery historyQuery(const QSqlDatabase& db, const QString& cardNo);

} // namespace pondar
