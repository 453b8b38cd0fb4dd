#pragma once

#include <pondar/currency.h>

#include <QSqlDatabase>
#include <QString>

namespace pondar {
struct SessionSettings;
}

namespace pondar::card {

// The four boxes of the balance display; all empty while no readable member card is on the
// reader.
struct BalanceTexts {
    QString cardNo;
    QString name;
    QString balance;
    QString pending;
    // The card's latest ledger line: a display that sees it change shows what just happened.
    QString lastRef;
    QString lastLine; // "Top Up 110.00"
};

// One look at the reader, silent whatever fails. A card whose balance cannot be read still
// shows its number, name and pending top-ups. A blocked card shows its number and, in the name
// box, "Card Blocked !!! Please see the Supervisor"; nothing else.
BalanceTexts pollBalance(SessionSettings& session);

// The card's top-ups not yet written to it; 0 when there are none.
Currency pendingBalance(const QSqlDatabase& db, const QString& cardNo);

} // namespace pondar::card
