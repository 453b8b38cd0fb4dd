#include "support/fixtures.h"

#include "shell/database.h"

#include <QSqlQuery>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace pondar::test {

Fixture::Fixture()
    : m_connection(u"test-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    db.setDatabaseName(path(u"host.db"_s));
    if (!db.open())
        qFatal("cannot open the test database");
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
    QSqlQuery q = db::exec(db(), sql, values);
    return q.next() ? q.value(0) : QVariant();
}

int Fixture::count(const QString& table) const {
    return scalar(u"SELECT COUNT(*) FROM "_s + table).toInt();
}

} // namespace pondar::test
