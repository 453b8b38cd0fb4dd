#pragma once

#include <QSqlDatabase>
#include <QString>

// The demo host's data folder: an SQLite database with the host tables, a settings file, the
// simulated reader's folder and a printer file. Created with demo members and staff on first run.
struct DemoData {
    explicit DemoData(QString folder);

    QString folder;
    QString database;
    QString settings;
    QString cards;
    QString printer;

    // Creates whatever is missing; returns an error text, empty on success.
    QString prepare(const QSqlDatabase& db) const;
};
