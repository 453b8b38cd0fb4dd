#pragma once

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QVariant>

namespace pondar {

// Windows-1252, the code page of card blocks, printer bytes and the settings file. Characters
// that the code page cannot hold become "?".
QByteArray toAnsi(const QString& text);
QString fromAnsi(const QByteArray& bytes);

// Control bytes (below 32, and 127) steer printers and split lines of the settings file; texts
// from a card or a box never carry one into either.
bool hasControlByte(const QByteArray& bytes);
QString withoutControls(const QString& text);

// The till's Val: the number at the start of a text, as a double (rates of the settings file).
double leadingNumber(const QString& text);

// "dd/mm/yyyy" as typed and as the host passes the business date; "yyyy-mm-dd" is taken too.
QDate parseDate(const QString& text);

// Date-times as ISO text, which SQLite and SQL Server both order correctly. Statements bind
// QDateTime values instead (db::bindValue picks the engine's form).
QString isoDateTime(const QDateTime& moment);
QString isoDayStart(QDate day);
QString isoDayEnd(QDate day);

// The business date as a value to bind: that day at 00:00:00 (a QDateTime), or the text as given
// when the host passed something that is not a date.
QVariant bizDateValue(const QString& bzDate);

// The default date-time conversion of the screens and reports: "dd/mm/yyyy hh:mm:ss".
QString displayDateTime(const QDateTime& moment);

} // namespace pondar
