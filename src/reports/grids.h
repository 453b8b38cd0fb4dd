#pragma once

#include "shell/database.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

namespace pondar::reports {

// The lookup statement of the member report's code box: active members whose code begins with
// what was typed, bound as a value.
db::Statement memberLookup(const QString& typed);

// One member's lines (every bill type) from the from-date at 00:00:01 to the to-date at
// 23:59:59, oldest first; columns ID, Type, Date, Ref, Value, TrsNo. The card number is
// matched exactly. A scrollable query, ready for a grid model.
QSqlQuery memberTransactions(const QSqlDatabase& db, const QString& cardNo, QDate from, QDate to);

// The activity log of one business date in the order written, with the staff member's name
// (empty when the staff row is missing); columns Date, Staff, Name, Description.
QSqlQuery logLines(const QSqlDatabase& db, QDate bizDate);

} // namespace pondar::reports
