#pragma once

#include "card/cardsim.h"
#include "shell/database.h"
#include "shell/inifile.h"
#include "support/fixtures.h"

#include <QDateTime>

namespace pondar::test {

// The moment every Save of these tests happens at.
inline const QDateTime TillMoment(QDate(2026, 11, 15), QTime(16, 33, 5));

// What the transaction tests start from: the settings file with the three rates, a database
// with staff S01, and the simulated reader.
struct TillBase {
    Fixture f;
    CardSim sim;

    TillBase() {
        writeFile(f.iniPath(), "[GeneralSetup]\r\nMemberComm=10\r\nDownComm=5\r\nServerComm=2\r\n");
        f.addStaff(QStringLiteral("S01"), QStringLiteral("Sam"));
    }

    void card(const QString& code, const QString& name, const QString& balance,
              std::array<card::uint8, 4> uid = {0x11, 0x22, 0x33, 0x44}) const {
        issueCard(sim, code, name, balance, uid);
    }
    // Member 000123 with 5.00 pending and a card of 20.00 on the reader.
    void maxWithPending(const QString& introducer = {}) {
        f.addMember(QStringLiteral("000123"), QStringLiteral("Max"), introducer);
        db::exec(f.db(), QStringLiteral("INSERT INTO Customize_Topup (cardNo,UpdateStatus,FValue) "
                                        "VALUES ('000123',0,5)"));
        card(QStringLiteral("000123"), QStringLiteral("Max"), QStringLiteral("20"));
    }
    QString cardValue() const {
        const QByteArray block = sim.block(card::ValueSector * 4);
        return QString::fromLatin1(block.left(block.indexOf('\0')));
    }
    QString handOff(const QString& key) const {
        return IniFile(f.iniPath()).read(QStringLiteral("TRANSACTION"), key);
    }
};

} // namespace pondar::test
