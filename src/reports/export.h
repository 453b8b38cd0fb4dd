#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class QAbstractItemModel;

namespace pondar::reports {

// A grid as a spreadsheet reads it: UTF-8 with a byte-order mark, a header row of the captions,
// then every row as the grid shows it (dates and amounts formatted), CR LF line ends. A field
// holding a comma, a quote or a line break is quoted with its quotes doubled; one that a
// spreadsheet would run as a formula (=, +, @, or - before a non-digit) is prefixed with '.
// Rows the model has not fetched yet are fetched first. Hidden columns are left out.
QByteArray csvBytes(QAbstractItemModel& model, const QList<int>& hiddenColumns = {});

// An end-of-day report as a text file: the 40-column text in Windows-1252 with its CR LF line
// ends, the last line ended too: what the printer gets, without its control codes.
QByteArray reportFileBytes(const QString& reportText);

// Replaces the file at path with bytes, all or nothing. Throws pondar::Error saying what failed.
void writeExport(const QString& path, const QByteArray& bytes);

} // namespace pondar::reports
