#pragma once

#include "card/balance.h"

#include <pondar/currency.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlQueryModel>
#include <QString>

namespace pondar {

struct SessionSettings;

// What the transaction screen learns about a card's member after Connect.
struct MemberExtras {
    bool found = false; // an active member holds this code
    QString introducer; // DownlineCode, empty when none
    Currency pending;   // the card's pending top-ups
};

// The member's introducer and the card's pending total. The screen shows both and copies the
// introducer into session.IntroducerCode, which the introducer credit reads.
MemberExtras LoadMemberExtras(const QSqlDatabase& db, const QString& cardNo);

// The card's pending total is the one the balance display shows.
using card::pendingBalance;

// Credits session.IntroducerCode with topUp x DownComm / 100 as a pending top-up under the
// top-up's reference. The row is written even with no introducer (an empty card number) and
// with DownComm 0 (a row of 0), as the reports expect one row per top-up.
void AddIntroducerCredit(const SessionSettings& session, Currency topUp, const QString& refNo);

// The grids' statements, executed and ready for a model: the card's pending top-ups
// (columns Date, Ref, Value) and its transaction history (Type, Date, Receipt, Value, Ref).
QSqlQuery pendingGridQuery(const QSqlDatabase& db, const QString& cardNo);
QSqlQuery historyQuery(const QSqlDatabase& db, const QString& cardNo);

// A read-only model over one of those queries that shows the "Value" column as "#0.00" and the
// "Date" column as "dd/mm/yyyy hh:mm:ss". Rows are fetched as the view scrolls.
class LedgerModel final : public QSqlQueryModel {
public:
    using QSqlQueryModel::QSqlQueryModel;
    QVariant data(const QModelIndex& item, int role = Qt::DisplayRole) const override;

protected:
    void queryChange() override;

private:
    int m_valueColumn = -1;
    int m_dateColumn = -1;
};

} // namespace pondar
