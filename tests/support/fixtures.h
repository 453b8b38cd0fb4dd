#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

#include <memory>

namespace pondar::test {

// A temporary folder holding an SQLite database with the host tables and the component's
// tables, a settings file and a printer file. Each fixture has a connection of its own.
class Fixture final {
public:
    Fixture();
    ~Fixture();
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;

    QSqlDatabase db() const;
    QString path(const QString& name) const;
    QString iniPath() const { return path(QStringLiteral("pondar.ini")); }
    QString printerPath() const { return path(QStringLiteral("printer.prn")); }

    void addMember(const QString& code, const QString& name, const QString& introducer = {},
                   bool inactive = false);
    void addStaff(const QString& code, const QString& name, bool inactive = false);
    // Runs a statement and returns the first column of its first row (null when none).
    QVariant scalar(const QString& sql, const QVariantList& values = {}) const;
    int count(const QString& table) const;

private:
    QTemporaryDir m_dir;
    QString m_connection;
};

} // namespace pondar::test
