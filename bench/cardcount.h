#pragma once

#include <QString>

namespace pondar::bench {

// Reader exchanges: the calls that reach the card.
struct Exchanges {
    int selects = 0;
    int logins = 0;
    int reads = 0;
    int writes = 0;
    int total() const { return selects + logins + reads + writes; }
    QString text() const;
};

// The fewest that can do the job. A Connect selects once, logs in to the record's sector and the
// value's sector once each and reads serial, code, name and value. A Save's card part checks the
// card is the one Connect read (a Connect's exchanges) and writes the value in the sector it is
// still logged in to; the read-back belongs to the write, inside the back end.
inline constexpr int FewestConnect = 1 + 2 + 4;
inline constexpr int FewestSave = FewestConnect + 1;

struct CardCounts {
    Exchanges connect;
    Exchanges save;
};

// Issues a member card on a simulated reader in a temporary folder, then counts the exchanges
// of a Connect (MemberCard::read) and of a Save's card part (a read as the same-card check, then
// MemberCard::confirmAndWriteValue). Throws pondar::Error when either fails.
CardCounts countCardExchanges();

} // namespace pondar::bench
