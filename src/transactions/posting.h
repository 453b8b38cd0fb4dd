#pragma once

#include "transactions/saveplan.h"

#include <QString>
#include <QStringList>

namespace pondar {

struct SessionSettings;

// The transaction screen's state that posting reads and updates.
struct TransactionForm {
    TransactionBoxes boxes;
    QString currentRef; // the reference number made last; after posting, the transaction line's
};

// Posts a Save whose card write has succeeded, from a screen in `mode`, each line a statement of
// its own on session.Conn (no database transaction on the host's connection):
//  1. when pending (TXT 10) > 0: a "PED" line of that amount under a new reference, then every
//     Customize_Topup row of the card marked settled with DateUpdate = now;
//  2. the transaction line under a new reference, which becomes form.currentRef;
//  3. in mode "TOPUP" only: the staff commission line, top-up x ServerComm / 100;
//  4. the activity-log line.
// Throws db::DatabaseError (or CurrencyError) at the first failing step; the steps before it
// stay posted. `done`, when given, receives a short name for each step once it is committed.
void PostTransaction(const SessionSettings& session, TransactionMode mode, TransactionForm& form,
                     const SavePlan& plan, QStringList* done = nullptr);

// The activity-log text of a posting, by mode and bill type; empty when none applies.
QString transactionLogText(TransactionMode mode, BillType billType, const TransactionBoxes& boxes);

} // namespace pondar
