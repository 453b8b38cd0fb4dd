#pragma once

#include <pondar/currency.h>

#include <QByteArray>
#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

namespace pondar::reports {

// The slip of a posted transaction: the first non-"PED" line with that reference. The value
// block follows the card screen's mode ("TOPUP", "WITHDRAW", "ADJUSTMENT"), not the line's bill
// type; any other mode prints none. Empty when no such line exists.
QString transactionSlip(const QSqlDatabase& db, const QString& refNo, const QString& mode);

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
