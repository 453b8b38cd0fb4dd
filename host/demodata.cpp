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
            // Each member a person of their own: identity number (its last digit odd for a man),
            // address and telephone differ, so a search or a report tells them apart.
            const QString streets[] = {u"12 JALAN MERANTI"_s, u"7 LORONG BUNGA RAYA"_s,
                                       u"33 JALAN AMPANG"_s,  u"5 JALAN TUN RAZAK"_s,
                                       u"88 JALAN PUDU"_s,    u"21 PERSIARAN GURNEY"_s};
            const QString towns[] = {u"KUALA LUMPUR"_s, u"PETALING JAYA"_s, u"GEORGE TOWN"_s,
                                     u"JOHOR BAHRU"_s, u"IPOH"_s};
            int n = 0;
            for (const Member& m : members) {
                const bool man = qstrcmp(m.sex, "M") == 0;
                const QString ic = u"%1%2%3-%4-%5"_s.arg(62 + n * 3)
                                       .arg(1 + n % 12, 2, 10, QChar(u'0'))
                                       .arg(1 + n * 7 % 28, 2, 10, QChar(u'0'))
                                       .arg(n % 2 ? u"10"_s : u"14"_s)
                                       .arg(1000 + n * 374 + (man ? 1 : 0), 4, 10, QChar(u'0'));
                const QString phone =
                    u"01%1-%2"_s.arg(2 + n % 8).arg(3456789 + n * 104729 % 6000000);
                pondar::db::exec(
                    db,
                    u"INSERT INTO tloy_mt_member (MemberCode, MemberName, ResidentAdd1, "
                    "ResidentAdd2, IcNew, hpno, sex, MaritalStatus, EmailAdd, downlinecode, "
                    "NonActive, pendingbalance) VALUES (?,?,?,?,?,?,?,?,?,?,?,0)"_s,
                    {QString::fromLatin1(m.code), QString::fromLatin1(m.name), streets[n % 6],
                     towns[n % 5], ic, phone, QString::fromLatin1(m.sex), n % 3 ? u"M"_s : u"S"_s,
                     QString(QString::fromLatin1(m.code) + u"@example.com"_s),
                     m.introducer ? QVariant(QString::fromLatin1(m.introducer)) : QVariant(),
                     m.nonActive});
                ++n;
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
