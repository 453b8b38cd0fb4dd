#pragma once

#include <pondar/currency.h>

#include <QSqlDatabase>
#include <QString>

#include <optional>

namespace pondar {

struct SessionSettings;

namespace card {
class CardPrompts;
}

// What every screen shows for a card the supervisor blocked.
inline const QString CardBlockedText = QStringLiteral("Card Blocked !!! Please see the Supervisor");

// A card's standing in Customize_Card: its latest row, found by the card's serial.
enum class CardStatus { Unknown, Active, Blocked };
CardStatus cardStatus(const QSqlDatabase& db, const QString& serial);

// Registers the card with this serial as the member's active card, logged. A card written
// again for someone else leaves its former row blocked, so the row of a card's last issue is
// the only one that counts.
void registerCard(SessionSettings& session, const QString& cardNo, const QString& serial,
                  const QString& remark = {});

// At Connect: false for a blocked card. A card issued before cards were registered is
// registered now, when it carries a member's code.
bool admitCard(SessionSettings& session, const QString& serial, const QString& cardNo,
               bool memberFound);

// A member other than the one a card is about to be written for, whose code the card carries
// and whose ledger balance is not 0: overwriting that card strands the member's value.
struct CardHolder {
    QString code;
    QString name;
    Currency balance;
    QString detail() const; // "Card No : ... / ...\nBalance : ..."
};
std::optional<CardHolder> valueHolder(SessionSettings& session, const QString& codeOnCard,
                                      const QString& newCode);

// The outcome of a supervisor's action: the text of its "Message" box.
struct SupervisorResult {
    bool done = false;
    QString message;
};

// Blocks the member's registered active card, logged.
SupervisorResult blockCard(SessionSettings& session, const QString& memberCode,
                           const QString& remark);

// For a member whose card is blocked and who has no active card: writes the card on the reader
// with the member's code, name and ledger balance and registers it active. No ledger line: the
// ledger balance does not move.
SupervisorResult issueReplacementCard(SessionSettings& session, card::CardPrompts& prompts,
                                      const QString& memberCode);

// Voids the latest ledger line of the card on the reader, when it is of this business date and
// the card matches its ledger: the card gets its previous balance back first, then one database
// transaction posts the reversing lines (never deleting a row). Nothing is posted when the card
// could not be written.
SupervisorResult voidLastTransaction(SessionSettings& session, card::CardPrompts& prompts);

} // namespace pondar
