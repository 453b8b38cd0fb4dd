#pragma once

#include "shell/database.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>

namespace pondar {
class TextGridModel;
}

namespace pondar::reports {

// The lookup statement of the member report's code box: active members whose code begins with
// what was typed, bound as a value.
db::Statement memberLookup(const QString& typed);

// Loads into the grid one member's lines (every bill type) from the from-date at 00:00:01 to
// the to-date at 23:59:59, oldest first; columns ID, Type, Date, Ref, Value, TrsNo. The card
// number is matched exactly. Throws db::DatabaseError.
void memberTransactions(TextGridModel& grid, const QSqlDatabase& db, const QString& cardNo,
                        QDate from, QDate to);

// Loads into the grid the activity log of one business date in the order written, with the
// staff member's name (empty when the staff row is missing); columns Date, Staff, Name,
// Description. Throws db::DatabaseError.
void logLines(TextGridModel& grid, const QSqlDatabase& db, QDate bizDate);

} // namespace pondar::reports
