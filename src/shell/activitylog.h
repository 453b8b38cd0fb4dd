#pragma once

#include <QString>

namespace pondar {

struct SessionSettings;

// The description as stored: what is left of it after its quotes are doubled and the doubled
// text is cut to 300 characters, with the doubling undone (the statement binds it as a value).
QString logDescription(const QString& description);

// One line of the activity log: staff, business date, now, description.
void writeLog(const SessionSettings& session, const QString& description);

// Codes typed by the user may hold no single quote, blank or double quote.
bool isValidInput(const QString& text);

} // namespace pondar
