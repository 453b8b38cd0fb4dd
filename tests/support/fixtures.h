#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

#include <memory>

namespace pondar::test {

// A temporary folder holding a database with the host tables and the component's tables, a
// settings file and a printer file. Each fixture has a connection of its own.
//
// The back end follows PONDAR_TEST_DB: unset, the Qt SQLite driver; "odbc", Qt's ODBC driver
// through unixODBC and the SQLite ODBC driver named in the odbcinst.ini that ODBCSYSINI points
// at, on the same kind of database file; "pgsql", Qt's PostgreSQL driver to a database of the
// fixture's own, made for it and dropped after it on the private cluster that ctest starts
// (PONDAR_PG_STATE names the file that tells where). CTest runs each database test every way.
class Fixture final {
public:
    Fixture();
    ~Fixture();
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;

    static bool overOdbc();
    static bool overPostgreSql();

    // A further connection, under the given name, to the same database (the caller removes it);
    // on pgsql as the given login when one is named.
    QSqlDatabase openAnother(const QString& connection, const QString& login = {}) const;
    // The fixture's database as the demo host's --pgsql takes it (pgsql only).
    QString postgreSqlOptions() const;

    QSqlDatabase db() const;
    QString path(const QString& name) const;
    QString iniPath() const { return path(QStringLiteral("pondar.ini")); }
    QString printerPath() const { return path(QStringLiteral("printer.prn")); }

    void addMember(const QString& code, const QString& name, const QString& introducer = {},
                   bool inactive = false);
    void addStaff(const QString& code, const QString& name, bool inactive = false);
    // Runs a statement and returns the first column of its first row (null when none), in the
    // form the SQLite driver gives it whichever back end runs (see plain()).
    QVariant scalar(const QString& sql, const QVariantList& values = {}) const;
    // Every row of a statement as plain() text, "|" between columns, "NULL" for a null, one
    // line per row.
    QString rows(const QString& sql, const QVariantList& values = {}) const;
    int count(const QString& table) const;

private:
    QTemporaryDir m_dir;
    QString m_connection;
    QString m_database; // pgsql: the database made for this fixture
};

// A value read from the database as the SQLite driver gives it: a date-time that the ODBC
// driver hands back typed becomes ISO text "yyyy-mm-dd hh:mm:ss"; anything else is unchanged.
// Lets one expectation serve both back ends.
QVariant plain(const QVariant& value);

// A whole file's bytes (empty when it cannot be read), and writing one (fails the test if not).
QByteArray readFile(const QString& path);
void writeFile(const QString& path, const QByteArray& bytes);

} // namespace pondar::test
