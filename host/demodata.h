#pragma once

#include <QSqlDatabase>
#include <QString>

// The demo host's data folder: an SQLite database with the host tables (unless the host is given
// an ODBC connection instead), a settings file, the simulated reader's folder and a printer file.
// The host tables get demo members and staff when they are empty, on whichever connection.
struct DemoData {
    explicit DemoData(QString folder);

    QString folder;
    QString database; // the SQLite file, when the host is given no ODBC connection
    QString settings;
    QString cards;
    QString printer;

    // Creates whatever is missing, the host tables on the given connection; returns an error
    // text, empty on success.
    QString prepare(const QSqlDatabase& db) const;
};
