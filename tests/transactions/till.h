#pragma once

#include "card/cardsim.h"
#include "shell/database.h"
#include "shell/inifile.h"
#include "support/fixtures.h"
#include "transactions/ledger.h"
#include "transactions/save.h"

#include <QDateTime>

namespace pondar::test {

using namespace Qt::Literals::StringLiterals;

// The moment every Save of these tests happens at.
inline const QDateTime TillMoment(QDate(2026, 11, 15), QTime(16, 33, 5));

inline constexpr char RatesIni[] =
    "[GeneralSetup]\r\nMemberComm=10\r\nDownComm=5\r\nServerComm=2\r\n";

// What the transaction tests start from: the settings file with the three rates, a database
// with staff S01, and the simulated reader.
struct TillBase {
    Fixture f;
    CardSim sim;

    TillBase() {
        writeFile(f.iniPath(), RatesIni);
        f.addStaff(QStringLiteral("S01"), QStringLiteral("Sam"));
    }

    // A member's card on the reader, its balance backed by an opening ledger line (reference
    // "OPENING", which the tests leave out when they list what a Save posted).
    void card(const QString& code, const QString& name, const QString& balance,
              std::array<card::uint8, 4> uid = {0x11, 0x22, 0x33, 0x44}) const {
        issueCard(sim, code, name, balance, uid);
        db::exec(f.db(),
                 QStringLiteral("INSERT INTO Customize_Transaction (CardNo,Billtype,NewValue,"
                                "RefTrsNo) VALUES (?,'AIN',?,'OPENING')"),
                 {code, balance});
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

// A till's session on `db`: staff S01 at outlet OUT1, the rates, the clock at TillMoment.
inline SessionSettings tillSession(const QSqlDatabase& db, const QString& iniPath) {
    SessionSettings s;
    s.Conn = db;
    s.IniPath = iniPath;
    s.StaffCode = u"S01"_s;
    s.BzDate = u"15/11/2026"_s;
    s.OutletCode = u"OUT1"_s;
    s.TrsNo = u"T9"_s;
    s.BillNo = u"B7"_s;
    s.ServerComm = Currency::parse(u"2"_s);
    s.DownComm = 5;
    s.clock = [] { return TillMoment; };
    return s;
}

// What Connect does: read the card on the reader, then the member's extras, into the boxes.
inline bool connectCard(SessionSettings& s, TransactionBoxes& boxes, ConnectedCard& connected) {
    RecordingPrompts silent;
    card::MemberCard c(s, silent);
    card::CardData data;
    if (c.read(data) != card::ReadResult::Ok)
        return false;
    const MemberExtras extras = LoadMemberExtras(s.Conn, data.code);
    boxes.cardNo = data.code;
    boxes.name = data.name;
    boxes.balance = data.balance.format();
    boxes.pending = extras.pending.format();
    boxes.introducer = extras.introducer;
    boxes.staffCode = u"S01"_s;
    connected = {s.CardSerial, data.code, boxes.balance, extras.found};
    return true;
}

// A till without a screen: what Connect read, and the Save given the boxes.
struct SaveTill : TillBase {
    RecordingPrompts prompts;
    SessionSettings s = tillSession(f.db(), f.iniPath());
    TransactionBoxes boxes;
    ConnectedCard connected;

    SaveTill() { sim.attach(s); }
    void connect() {
        if (!connectCard(s, boxes, connected))
            qFatal("cannot read the card");
    }
    SaveOutcome save(TransactionMode mode) {
        return TransactionSave(s, prompts).save(mode, boxes, connected);
    }
};

} // namespace pondar::test
