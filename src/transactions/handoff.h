#pragma once

#include <pondar/currency.h>

#include <QDateTime>
#include <QString>

#include <cstdint>

namespace pondar {

// A transaction's reference number: "ddmmyyyyhhmmss-CARDNO-INTRODUCER" of the given moment,
// card number and introducer code trimmed. Two Saves on one card in the same second share it;
// a member without an introducer gives a number ending in "-".
QString MakeRefNo(const QDateTime& moment, const QString& cardNo, const QString& introducer);

// The outcome handed back to the host in section TRANSACTION of the settings file.
struct HandOff {
    QString cardNo;   // as shown on the screen
    QString cardName; // as shown on the screen
    Currency oldValue;
    Currency pendingValue;
    Currency writeValue;
    Currency newValue;
    std::int16_t returnFlag = 1;
    QString refNo;
    bool posted = true; // false: the card holds the value, the ledger has it only in the journal
};

// Writes CardNo, CardName, OldValue, PenValue, WriteValue, NewValue, ReturnFlag,
// ReturnRefTrsNo and Posted ("1" or "0") in this order, amounts in their shortest form (150, 12.5,
// 0). False when the file could not be written; like the host's own writer, callers go on
// regardless.
bool WriteHandOff(const QString& iniPath, const HandOff& handOff);

} // namespace pondar
