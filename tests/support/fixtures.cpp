#include "support/fixtures.h"

#include "shell/database.h"

#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace pondar::test {

namespace {

// The driver's name in the odbcinst.ini that the test build writes.
const QString OdbcDriver = u"Pondar SQLite3"_s;

} // namespace

Fixture::Fixture()
    : m_connection(u"test-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    QSqlDatabase db;
    if (overOdbc()) {
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
}

bool Fixture::overOdbc() {
    return qEnvironmentVariable("PONDAR_TEST_DB") == u"odbc"_s;
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
    return q.next() ? plain(q.value(0)) : QVariant();
}

QString Fixture::rows(const QString& sql, const QVariantList& values) const {
    auto q = db::exec(db(), sql, values);
    QStringList out;
    while (q.next()) {
        QStringList cells;
        for (int i = 0; i < q.record().count(); ++i)
            cells << (q.isNull(i) ? u"NULL"_s : plain(q.value(i)).toString());
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
