#pragma once

#include "transactions/posting.h"

#include <pondar/currency.h>

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace pondar {

struct SessionSettings;

// A Save that reached the card but not the database: what the operator and the recovery file
// are told.
struct UnpostedWrite {
    QDateTime moment;
    TransactionBoxes boxes; // as the operator left them, for whoever posts the lines by hand
    SavePlan plan;          // what the card took
    QString refNo;
    QStringList posted; // the steps committed before the failure
    QString error;      // the driver's text
    QString trsNo;
    QString billNo;
    QString outlet;
    QString bzDate;
};

// The recovery file: "pondar-recovery.txt" in the folder of the settings file.
QString recoveryFilePath(const QString& iniPath);

// Appends the record to the recovery file and returns the operator's message: which card,
// amount, new balance and reference were written to the card but not posted, the error, and
// where the record was kept (or that it could not be, and why). Never throws.
QString recordUnpostedWrite(const QString& iniPath, const UnpostedWrite& record) noexcept;

struct SaveOutcome {
    bool ok = false;
    QString refNo;   // the transaction's reference (also session.SlipRefNo on success)
    QString message; // when !ok: the operator's message, for a critical "Message" box
};

// Everything a Save does once the card holds its new value. The screen calls it right after a
// successful card write and then only shows what it returns:
//  1. TransactionOk = false;
//  2. PostTransaction (settlement, transaction line, commission in "TOPUP" mode, log line);
//  3. for a top-up ("IN"), AddIntroducerCredit on the top-up value;
//  4. TransactionOk = true;
//  5. WriteHandOff with ReturnFlag 1, the balance and pending as shown, the plan's amounts;
//  6. SlipRefNo = the reference, SlipAction = "PRINT".
// The screen then opens the slip, reads the card again, refreshes the history and closes.
// If a step of 2 or 3 fails, nothing is undone (the card keeps its value), TransactionOk stays
// false, no hand-off is written, the failure goes to the recovery file and `message` says so;
// the screen shows it and reads the card again so that the boxes show what the card holds.
SaveOutcome saveTransaction(SessionSettings& session, TransactionForm& form, const SavePlan& plan);

} // namespace pondar
