#pragma once

#include "reports/slip.h"
#include "shell/modes.h"
#include "transactions/ledger.h"
#include "transactions/posting.h"

#include <pondar/currency.h>

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace pondar {

struct SessionSettings;
class Journal;

namespace card {
class CardPrompts;
}

// A Save that reached the card but not the database: what the operator and the recovery file
// are told.
struct UnpostedWrite {
    QDateTime moment;
    Posting posting; // what the card took, and every line still to post
    QString error;   // the driver's text
};

// The recovery file: "pondar-recovery.txt" in the folder of the settings file.
QString recoveryFilePath(const QString& iniPath);

// Appends the record to the recovery file and returns the operator's message: which card,
// amount, new balance and reference were written to the card but not posted yet, the error, and
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
        Unposted,   // the card holds the new value; the database failed and the Save waits in
                    // the journal. The customer owes it: the host hears true, with Posted "0".
        Posted,     // on the card and in the database; `slip` is to be printed
    };
    Status status = Status::Refused;
    QString message; // for every status but Posted, a critical box with this text and title
    QString title = QStringLiteral("Message");
    int focus = txt::None;
    QString refNo;             // the transaction's reference, once the card was written
    reports::SlipRequest slip; // Posted: the slip of the line, printed at once
};

// The card-vs-ledger check of one card.
struct CardLedgerCheck {
    bool matches = true;
    Currency card;
    Currency ledger;
    QString lastRef;
    // "Card Balance does not match the Database !!!" with both values and the last reference.
    QString message() const;
};

// The Save of the transaction screen, card first and database second:
//  1. the mode's planner checks the amounts and the site's balance ceiling (a refusal touches
//     nothing);
//  2. Connect must have found an active member;
//  3. the value question;
//  4. the card on the reader must be the one read, still holding the balance shown;
//  5. one database transaction: the card's balance must match its ledger balance and the card
//     must not be blocked, the pending top-ups are read again (their sum goes onto the card),
//     the posting is recorded in the journal, the card is written, the lines are posted, and
//     all of it commits together;
//  6. the hand-off with ReturnFlag 1, and the slip to print.
// A database failure after the card write rolls the lines back: the Save waits in the journal
// and is posted exactly once by the next replay. The reader, the prompts, the clock and the
// database are the session's and the caller's, so the whole Save runs without a window.
class TransactionSave final {
public:
    // Where a test stops the till as if it had lost power: after the card write, before the
    // journal knows it; or with the lines posted, before the commit.
    enum class Step { CardWritten, LinesPosted };

    TransactionSave(SessionSettings& session, card::CardPrompts& prompts);

    SaveOutcome save(TransactionMode mode, const TransactionBoxes& boxes,
                     const ConnectedCard& card);

    std::function<void(Step)> faultAt;

private:
    std::optional<SaveOutcome> cardRefused(const ConnectedCard& card);
    void reach(Step step) const;

    SessionSettings& m_session;
    card::CardPrompts& m_prompts;
};

// The session's journal, opened on first use.
Journal& journalOf(SessionSettings& session);

// The card's ledger balance, moved on by its Saves that wait in the journal.
LedgerBalance ledgerBalanceOf(SessionSettings& session, const QString& cardNo);

// Compares a card's balance with its ledger balance; a difference is written to the activity
// log. Always matches with the check switched off.
CardLedgerCheck checkCardAgainstLedger(SessionSettings& session, const QString& cardNo,
                                       Currency cardBalance);

// Posts every Save the journal holds as written but not posted, each in a transaction of its own;
// a Save already in the ledger is only marked. Returns a line for each Save posted now.
QStringList replayJournal(SessionSettings& session);

// At a card's Connect: its Saves recorded with no known card outcome are settled by the balance
// the card holds, the new one meaning posted, the old one void. Returns a line for each posted.
QStringList settleOpenSaves(SessionSettings& session, const QString& cardNo, Currency cardBalance);

// The operator's message for what a replay posted.
QString replayMessage(const QStringList& posted);

// The supervisor's two ways out of a card that does not match its ledger, both logged. The
// first writes the ledger balance onto the card Connect read (false when the card could not be
// written); the second posts the difference as an "AIN" or "AOT" line with Remark
// "Card/Database difference", after checking inside its transaction that the ledger is still
// what the supervisor was shown.
bool writeLedgerBalanceToCard(SessionSettings& session, card::CardPrompts& prompts,
                              const ConnectedCard& card, const CardLedgerCheck& check);
void postCardDifference(SessionSettings& session, const TransactionBoxes& boxes,
                        const CardLedgerCheck& check);

} // namespace pondar
