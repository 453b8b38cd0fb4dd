#pragma once

#include "reports/slip.h"
#include "shell/modes.h"
#include "transactions/posting.h"

#include <pondar/currency.h>

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace pondar {

struct SessionSettings;

namespace card {
class CardPrompts;
}

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

// What Connect read, which a Save may write onto: that card, still holding that balance.
struct ConnectedCard {
    QString serial;  // CardSerial of the card read; empty when no card was read
    QString code;    // TXT(0)
    QString balance; // TXT(2), as shown
    bool memberFound = false;
};

struct SaveOutcome {
    enum class Status {
        Refused,    // stopped before the card was touched; `focus` names the box to correct
        NotWritten, // the card was not written (answered No, taken away, swapped, refused)
        Unposted,   // the card holds the new value but the database failed: `message` says what
                    // was written and where it was recorded
        Posted,     // on the card and in the database; `slip` is to be printed
    };
    Status status = Status::Refused;
    QString message; // for every status but Posted, a critical box with this text and title
    QString title = QStringLiteral("Message");
    int focus = txt::None;
    QString refNo;             // the transaction line's reference, once posting began
    reports::SlipRequest slip; // Posted: the slip of the line, printed at once
};

// The Save of the transaction screen, card first and database second:
//  1. the mode's planner checks the amounts (a refusal touches nothing);
//  2. Connect must have found an active member;
//  3. the card on the reader must be the one read, still holding the balance shown;
//  4. the value question, then the new balance onto the card;
//  5. PostTransaction, then for a top-up AddIntroducerCredit on the top-up value;
//  6. the hand-off with ReturnFlag 1, and the slip to print.
// A database failure in 5 undoes nothing (the card keeps its value): no hand-off is written and
// the record goes to the recovery file. The reader, the prompts, the clock and the database are
// the session's and the caller's, so the whole Save runs without a window.
class TransactionSave final {
public:
    TransactionSave(SessionSettings& session, card::CardPrompts& prompts);

    SaveOutcome save(TransactionMode mode, const TransactionBoxes& boxes,
                     const ConnectedCard& card);

    // Steps 5 and 6 alone, for a card that already holds the plan's new balance.
    SaveOutcome post(TransactionMode mode, const TransactionBoxes& boxes, const SavePlan& plan);

private:
    std::optional<SaveOutcome> cardRefused(const ConnectedCard& card);

    SessionSettings& m_session;
    card::CardPrompts& m_prompts;
};

} // namespace pondar
