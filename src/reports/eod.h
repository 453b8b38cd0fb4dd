#pragma once

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

namespace pondar::reports {

// What an end-of-day report is asked for: the outlet, the two dates as typed ("dd/mm/yyyy";
// they are printed as typed), and the moment printed on it.
struct EodRequest {
    QString outlet;
    QString fromText;
    QString toText;
    QDateTime printed;
};

enum class EodReport { DailySummary, MemberBalances, PendingDetails, StaffCommission };

// The four end-of-day reports as 40-column text with CR LF line ends. Each costs in proportion
// to the rows it reads in the range, whatever the size of the ledger. They throw pondar::Error
// for a date that is not valid or a value too wide for its column (the report is then not
// finished), and db::DatabaseError when a statement fails.
QString eodReport(EodReport report, const QSqlDatabase& db, const EodRequest& request);

QString dailySummary(const QSqlDatabase& db, const EodRequest& request);
QString memberBalances(const QSqlDatabase& db, const EodRequest& request);
QString pendingDetails(const QSqlDatabase& db, const EodRequest& request);
QString staffCommission(const QSqlDatabase& db, const EodRequest& request);

} // namespace pondar::reports
