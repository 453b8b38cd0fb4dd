#pragma once

#include <QString>

namespace pondar {

struct SessionSettings;

namespace card {
class CardPrompts;
}

namespace members {

// How a card issue ended. Only the ends a screen reports itself are told apart from a refusal.
enum class CardIssue {
    Declined,     // the operator did not want the card written, or not overwritten
    DeviceFailed, // no reader, no card, or the member sector refused the key
    Written,      // the member fields were sent to the card (their results are not checked)
};

// Writes the member just saved onto the card on the session's reader: serial, code, name, then
// the value 0 after its own question, and registers the card as the member's. A card carrying
// another member whose ledger balance is not 0 is overwritten only on the supervisor's password,
// its holder shown with the overwrite question; a blocked card is refused. Questions go through
// prompts; the caller reports DeviceFailed and Written. A name is cut to what the card's block
// holds. Throws pondar::Error for a card serial too long for its block.
CardIssue issueCard(SessionSettings& session, card::CardPrompts& prompts, const QString& code,
                    const QString& name);

} // namespace members
} // namespace pondar
