#pragma once

#include <pondar/currency.h>

#include <QDateTime>
#include <QString>
#include <QStringView>
#include <QVariant>

namespace pondar::db {
class Rows;
}

namespace pondar::reports {

inline constexpr int AmountWidth = 10;

// The 40-column slip and report text: CR LF line ends, rules of 40 hyphens.
class ReportText final {
public:
    void line(const QString& text = {});
    void rule();
    // "Total :   ", 20 blanks and the amount in the last 10 columns.
    void totalLine(Currency total);
    const QString& text() const { return m_text; }

    // A line written in place, piece by piece, for the reports that print lines per row: the
    // same columns as the free functions below give, without a string per piece. end() closes
    // the line.
    ReportText& add(QStringView text);
    ReportText& blanks(qsizetype count);
    ReportText& amount(Currency amount, int width = AmountWidth);
    ReportText& code(QStringView code, int width = 10);
    ReportText& name(QStringView name, int width = 20);
    ReportText& padded(QStringView text, int width);
    // A date column as dateText() prints it.
    ReportText& date(const db::Rows& rows, int column);
    void end();

private:
    QString m_text;
};

// The blanks that fill a column of `width` after (or before) `used` characters. A column
// that cannot hold its text is an error: the printed report would be misaligned, so it is not
// finished.
QString fill(int width, qsizetype used, const QString& what);

// An amount "#0.00" right-aligned in `width` columns.
QString rightAmount(Currency amount, int width = AmountWidth);
// A code trimmed, cut to `width` and padded to it; longer than `width` after trimming is an error.
QString codeColumn(const QString& code, int width = 10);
// A name cut to `width`, followed by `width` minus the length of its trimmed form in blanks (so
// a name with outer blanks pushes the amount right, as the printed reports always did); longer
// than `width` after trimming is an error.
QString nameColumn(const QString& name, int width = 20);
// A text cut to `width` and padded with blanks to it.
QString padColumn(const QString& text, int width);

// Date columns as the driver hands them back: ISO text (SQLite) or a date-time (SQL Server).
QDateTime dbDateTime(const QVariant& value);
// "dd/mm/yyyy"; the stored text when it is no date, "" for null.
QString dateText(const QVariant& value);
// The default date-time conversion "dd/mm/yyyy hh:mm:ss"; the stored text when it is no date.
QString dateTimeText(const QVariant& value);
// "#0.00", or "" for null (a missing amount prints nothing, it is not zero).
QString moneyText(const QVariant& value);

} // namespace pondar::reports
