#pragma once

#include "shell/modes.h"
#include "transactions/saveplan.h"

#include <pondar/currency.h>

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace pondar {

struct SessionSettings;

// Everything one Save puts into the database, fixed before the card is written: the journal
// keeps it, so that the same lines can be posted later, exactly once, by whichever till replays
// it.
struct Posting {
    TransactionMode mode = TransactionMode::TopUp;
    TransactionBoxes boxes;    // as the operator left them; pending is what this Save settles
    SavePlan plan;             // the card's new balance includes the pending top-ups settled
    QString refNo;             // of every line of the Save
    QList<qint64> pendingRows; // the Customize_Topup rows this Save settles
    Currency pending;          // their sum
    QDateTime moment;          // when the Save was made: settlement date, log time
    // The session's particulars at the time.
    QString staffCode;
    QString bzDate;
    QString outlet;
    QString trsNo;
    QString billNo;
    Currency serverComm;
    double downComm = 0.0;

    QJsonObject toJson() const;
    // Throws pondar::Error for a record that is not a posting.
    static Posting fromJson(const QJsonObject& json);
};

// The posting of a Save in `mode` made now, from the boxes, the plan and the pending rows the
// Save settles.
Posting makePosting(const SessionSettings& session, TransactionMode mode,
                    const TransactionBoxes& boxes, const SavePlan& plan,
                    const QList<qint64>& pendingRows, Currency pending);

// Posts a Save whose card write has succeeded, all on db, inside the caller's transaction:
//  1. when pending is not 0: a "PED" line of that amount, then exactly the pending rows the Save
//     read marked settled with DateUpdate = the Save's moment;
//  2. the transaction line;
//  3. in mode "TOPUP" only: the staff commission line, top-up x ServerComm / 100;
//  4. for a top-up ("IN"): the introducer credit (AddIntroducerCredit);
//  5. the activity-log line.
// Does nothing when the transaction line is in the ledger already, so a replay never doubles a
// Save. Throws db::DatabaseError at the first failing step. `done`, when given, receives a short
// name for each step.
void PostTransaction(const QSqlDatabase& db, const Posting& posting, QStringList* done = nullptr);

// Whether the Save's transaction line is in the ledger.
bool isPosted(const QSqlDatabase& db, const Posting& posting);

// The activity-log text of a posting, by mode and bill type; empty when none applies.
QString transactionLogText(TransactionMode mode, BillType billType, const TransactionBoxes& boxes);

} // namespace pondar
