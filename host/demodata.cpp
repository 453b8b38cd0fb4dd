#include "demodata.h"

#include "shell/database.h"
#include "shell/inifile.h"

#include <QDir>
#include <QSqlQuery>

using namespace Qt::Literals::StringLiterals;

DemoData::DemoData(QString dir)
    : folder(std::move(dir))
    , database(folder + u"/pondar-demo.db"_s)
    , settings(folder + u"/pos.ini"_s)
    , cards(folder + u"/cards"_s)
    , printer(folder + u"/printer.prn"_s) {}

QString DemoData::prepare(const QSqlDatabase& db) const {
    QDir().mkpath(cards);
    try {
        pondar::db::createHostTables(db);
        if (!pondar::db::hasRow(db, u"SELECT 1 FROM tloy_mt_member"_s)) {
            struct Member {
                const char* code;
                const char* name;
                const char* introducer;
                int nonActive;
                const char* sex;
            };
            const Member members[] = {
                {"000001", "TAN AH KOW", nullptr, 0, "M"},
                {"000002", "SITI AMINAH", "000001", 0, "F"},
                {"000003", "RAJESH KUMAR", "000001", 0, "M"},
                {"000004", "LIM MEI LING", "000002", 0, "F"},
                {"000005", "MUHAMMAD FAIZ", nullptr, 0, "M"},
                {"000006", "WONG KAR WAI", "000005", 0, "M"},
                {"000007", "NUR AISYAH", "000005", 0, "F"},
                {"000008", "CHAN SIEW LAN", nullptr, 1, "F"},
                {"000009", "DAVID OBRIEN", "000003", 0, "M"},
                {"000010", "PRIYA DEVI", nullptr, 0, "F"},
                {"000011", "GOH CHENG HOCK", "000010", 0, "M"},
                {"000012", "FARAH HANIM BINTI AZMAN", "000010", 0, "F"},
            };
            for (const Member& m : members) {
                pondar::db::exec(
                    db,
                    u"INSERT INTO tloy_mt_member (MemberCode, MemberName, ResidentAdd1, "
                    "ResidentAdd2, IcNew, hpno, sex, MaritalStatus, EmailAdd, downlinecode, "
                    "NonActive, pendingbalance) VALUES (?,?,?,?,?,?,?,?,?,?,?,0)"_s,
                    {QString::fromLatin1(m.code), QString::fromLatin1(m.name),
                     u"12 JALAN MERANTI"_s, u"KUALA LUMPUR"_s, u"800101-14-5555"_s,
                     u"012-3456789"_s, QString::fromLatin1(m.sex), u"S"_s,
                     QString(QString::fromLatin1(m.code) + u"@example.com"_s),
                     m.introducer ? QVariant(QString::fromLatin1(m.introducer)) : QVariant(),
                     m.nonActive});
            }
        }
        if (!pondar::db::hasRow(db, u"SELECT 1 FROM tpay_mt_staff"_s)) {
            for (const auto& [code, name, nonActive] :
                 {std::tuple{u"S001"_s, u"ALICE TAN"_s, 0},
                  std::tuple{u"S002"_s, u"BALA KRISHNAN"_s, 0},
                  std::tuple{u"S003"_s, u"CHONG WEI (LEFT)"_s, 1}}) {
                pondar::db::exec(db,
                                 u"INSERT INTO tpay_mt_staff (StaffCode, StaffName, NonActive) "
                                 "VALUES (?,?,?)"_s,
                                 {code, name, nonActive});
            }
        }
    } catch (const pondar::Error& e) {
        return e.message();
    }
    const pondar::IniFile ini(settings);
    if (ini.read(u"GeneralSetup"_s, u"MemberComm"_s).isEmpty()) {
        ini.write(u"GeneralSetup"_s, u"MemberComm"_s, u"10"_s);
        ini.write(u"GeneralSetup"_s, u"DownComm"_s, u"5"_s);
        ini.write(u"GeneralSetup"_s, u"ServerComm"_s, u"2"_s);
    }
    return {};
}
