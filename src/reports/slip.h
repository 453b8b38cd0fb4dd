#pragma once

#include "shell/modes.h"

#include <pondar/currency.h>

#include <QByteArray>
#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

#include <optional>
#include <variant>

namespace pondar::reports {

// The slip of a posted line, by reference. The value block follows the mode of the screen that
// posted it; a reprint that does not know it takes the mode of the line's bill type.
struct TransactionSlip {
    QString refNo;
    std::optional<TransactionMode> mode;
};
// The slip of a balance enquiry, from what the transaction screen shows.
struct EnquirySlip {
    QString cardNo;
    QString name;
    Currency balance;
};
// What the slip screen is asked for; printAtOnce prints it without a preview.
struct SlipRequest {
    std::variant<TransactionSlip, EnquirySlip> slip;
    bool printAtOnce = false;
};

// The slip of a posted transaction: the first non-"PED" line with that reference. The value
// block follows the mode (top-up, withdraw, adjustment), not the line's bill type; an enquiry
// prints none. Without a mode, the line's bill type chooses. Empty when no such line exists.
QString transactionSlip(const QSqlDatabase& db, const QString& refNo,
                        std::optional<TransactionMode> mode);

// The slip of a balance enquiry, from what the transaction screen shows.
QString enquirySlip(const QString& cardNo, const QString& name, Currency balance,
                    const QDateTime& now);

// What goes to the slip printer: ESC "@", CR LF, the text in Windows-1252, CR LF, GS "V" 66 0
// (feed and partial cut).
QByteArray printerBytes(const QString& text);

// Writes printerBytes(text) to the printer target (a file or a device such as /dev/usb/lp0),
// replacing what a file held. Throws pondar::Error saying what failed.
void printText(const QString& target, const QString& text);

} // namespace pondar::reports
