#pragma once

#include "shell/database.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantList>

namespace pondar {

namespace members {

// The lookup grid's statements (code, name).
// Active members other than the one on screen whose code begins with what was typed.
db::Statement introducerLookup(const QString& ownCode, const QString& typed);
// Every member, by code.
db::Statement memberSearchLookup();
// Active staff, by code.
db::Statement staffLookup();

// A member's posted card movements, oldest first: Type, Date, Ref, Value.
QSqlQuery memberHistory(const QSqlDatabase& db, const QString& code);

bool memberExists(const QSqlDatabase& db, const QString& code);

// Whether the member has top-up or card transaction rows, which forbid removing the member.
bool hasTransactions(const QSqlDatabase& db, const QString& code);

struct StaffMatch {
    bool found = false;
    QVariant name; // null when the row holds no name
};
// An active staff member with this code.
StaffMatch findActiveStaff(const QSqlDatabase& db, const QString& code);

// Texts of the register.
QString cardName(const QString& memberName); // what the card's name field receives
QString removeLogLine(const QString& code, const QString& name);
QString newMemberLogLine(const QString& code, const QString& name);
QString updateLogLine(const QString& code, const QString& name);
QString recordCountCaption(qint64 count);
QString removeQuestion(const QString& name);

// Grid widths are given in twips; the screens run at 15 twips to the pixel.
int twipsToPixels(int twips);

} // namespace members
} // namespace pondar
