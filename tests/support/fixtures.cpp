#include "support/fixtures.h"

#include "shell/database.h"

#include <QFile>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace pondar::test {

namespace {

// The driver's name in the odbcinst.ini that the test build writes.
const QString OdbcDriver = u"Pondar SQLite3"_s;

// The folder of the private cluster's socket, which the cluster's start wrote into the file
// that PONDAR_PG_STATE names.
QString postgreSqlSocket() {
    const QString state = qEnvironmentVariable("PONDAR_PG_STATE");
    if (state.isEmpty())
        qFatal("PONDAR_TEST_DB=pgsql needs PONDAR_PG_STATE: run the test through ctest");
    const QString dir = QString::fromUtf8(readFile(state)).trimmed();
    if (dir.isEmpty())
        qFatal("the private PostgreSQL cluster is not running (%s)", qPrintable(state));
    return dir;
}

QSqlDatabase postgreSql(const QString& connection, const QString& database) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, connection);
    db.setHostName(postgreSqlSocket());
    db.setUserName(u"pondar"_s);
    db.setDatabaseName(database);
    return db;
}

// Runs one statement on a connection of its own to the cluster's maintenance database.
void onCluster(const QString& sql) {
    const QString name = u"cluster-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
    {
        QSqlDatabase admin = postgreSql(name, u"postgres"_s);
        if (!admin.open())
            qFatal("cannot reach the private PostgreSQL cluster: %s",
                   qPrintable(admin.lastError().text()));
        QSqlQuery q(admin);
        if (!q.exec(sql))
            qFatal("%s: %s", qPrintable(sql), qPrintable(q.lastError().text()));
        admin.close();
    }
    QSqlDatabase::removeDatabase(name);
}

// A decimal column that a server hands back as exact text ("5.0000"), as the SQLite driver gives
// the same value ("5"), so that one expectation serves every back end.
QVariant plainCell(const db::Result& q, int column) {
    const QVariant value = q.value(column);
    if (value.isNull() || value.typeId() != QMetaType::QString ||
        q.record().field(column).metaType().id() != QMetaType::Double)
        return plain(value);
    QString text = value.toString();
    if (text.contains(u'.')) {
        while (text.endsWith(u'0'))
            text.chop(1);
        if (text.endsWith(u'.'))
            text.chop(1);
    }
    return text == u"-0"_s ? u"0"_s : text;
}

} // namespace

Fixture::Fixture()
    : m_connection(u"test-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    QSqlDatabase db;
    if (overPostgreSql()) {
        // A database of its own, so fixtures never see each other's rows.
        m_database = u"t_"_s + QUuid::createUuid().toString(QUuid::Id128);
        onCluster(u"CREATE DATABASE "_s + m_database);
        db = postgreSql(m_connection, m_database);
    } else if (overOdbc()) {
        if (qEnvironmentVariableIsEmpty("ODBCSYSINI"))
            qFatal("PONDAR_TEST_DB=odbc needs ODBCSYSINI: run the test through ctest");
        db = QSqlDatabase::addDatabase(u"QODBC"_s, m_connection);
        // Timeout: wait for a lock as the Qt SQLite driver does, rather than fail at once.
        db.setDatabaseName(u"DRIVER={"_s + OdbcDriver + u"};Database="_s + path(u"host.db"_s) +
                           u";Timeout=5000;"_s);
    } else {
        db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
        db.setDatabaseName(path(u"host.db"_s));
    }
    if (!db.open())
        qFatal("cannot open the test database: %s", qPrintable(db.lastError().text()));
    db::createHostTables(db);
    db::ensureSchema(db);
}

Fixture::~Fixture() {
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
    if (!m_database.isEmpty())
        onCluster(u"DROP DATABASE IF EXISTS "_s + m_database + u" WITH (FORCE)"_s);
}

bool Fixture::overOdbc() {
    return qEnvironmentVariable("PONDAR_TEST_DB") == u"odbc"_s;
}

bool Fixture::overPostgreSql() {
    return qEnvironmentVariable("PONDAR_TEST_DB") == u"pgsql"_s;
}

QSqlDatabase Fixture::openAnother(const QString& connection, const QString& login) const {
    QSqlDatabase db;
    if (overPostgreSql()) {
        db = postgreSql(connection, m_database);
        if (!login.isEmpty())
            db.setUserName(login);
    } else {
        const QSqlDatabase own = this->db();
        db = QSqlDatabase::addDatabase(own.driverName(), connection);
        db.setDatabaseName(own.databaseName());
    }
    if (!db.open())
        qFatal("cannot open a second connection: %s", qPrintable(db.lastError().text()));
    return db;
}

QString Fixture::postgreSqlOptions() const {
    return u"host="_s + postgreSqlSocket() + u" dbname="_s + m_database + u" user=pondar"_s;
}

QSqlDatabase Fixture::db() const {
    return QSqlDatabase::database(m_connection, false);
}

QString Fixture::path(const QString& name) const {
    return m_dir.filePath(name);
}

void Fixture::addMember(const QString& code, const QString& name, const QString& introducer,
                        bool inactive) {
    db::exec(
        db(),
        u"INSERT INTO tloy_mt_member (MemberCode, MemberName, downlinecode, NonActive) "
        "VALUES (?,?,?,?)"_s,
        {code, name, introducer.isEmpty() ? QVariant() : QVariant(introducer), inactive ? 1 : 0});
}

void Fixture::addStaff(const QString& code, const QString& name, bool inactive) {
    db::exec(db(), u"INSERT INTO tpay_mt_staff (StaffCode, StaffName, NonActive) VALUES (?,?,?)"_s,
             {code, name, inactive ? 1 : 0});
}

QVariant Fixture::scalar(const QString& sql, const QVariantList& values) const {
    auto q = db::exec(db(), sql, values);
    return q.next() ? plainCell(q, 0) : QVariant();
}

QString Fixture::rows(const QString& sql, const QVariantList& values) const {
    auto q = db::exec(db(), sql, values);
    QStringList out;
    while (q.next()) {
        QStringList cells;
        for (int i = 0; i < q.record().count(); ++i)
            cells << (q.isNull(i) ? u"NULL"_s : plainCell(q, i).toString());
        out << cells.join(u'|');
    }
    return out.join(u'\n');
}

int Fixture::count(const QString& table) const {
    return scalar(u"SELECT COUNT(*) FROM "_s + table).toInt();
}

QVariant plain(const QVariant& value) {
    if (value.typeId() == QMetaType::QDateTime && !value.isNull())
        return value.toDateTime().toString(u"yyyy-MM-dd HH:mm:ss"_s);
    return value;
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
             qPrintable(path));
}

} // namespace pondar::test
