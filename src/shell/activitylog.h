#pragma once

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

namespace pondar {

struct SessionSettings;

// The description as stored: what is left of it after its quotes are doubled and the doubled
// text is cut to 300 characters, with the doubling undone (the statement binds it as a value).
QString logDescription(const QString& description);

// One line of the activity log: staff, business date, now, description.
void writeLog(const SessionSettings& session, const QString& description);
// The same with its particulars given, for a line written on another's behalf (a replay).
void writeLog(const QSqlDatabase& db, const QString& staffCode, const QString& bzDate,
              const QDateTime& moment, const QString& description);

// Codes typed by the user may hold no single quote, blank or double quote.
bool isValidInput(const QString& text);

} // namespace pondar
