#pragma once

#include <pondar/currency.h>

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace pondar {

namespace card {
class ReaderLibrary;
}
class Journal;

// What lives as long as the component: the particulars StartApp was given, the rates of the
// settings file, the host's connection, the reader and the clock. Screens get it passed in;
// nothing reaches it through a global. What one screen decides for another travels as a return
// value, never through here.
struct SessionSettings {
    // StartApp particulars, in the order StartApp sets them.
    QString StaffCode;
    QString ConnString;
    QString Printer;
    QString OutletCode;
    QString BzDate;
    QString IniPath;

    // From the settings file's GeneralSetup section.
    double MemberComm = 0.0;
    double DownComm = 0.0;
    Currency ServerComm;
    bool LedgerCheck = true; // "0" switches the card-vs-ledger check off
    Currency MaxBalance;     // the most a card may hold; 0: no ceiling

    QSqlDatabase Conn;
    Currency AppValue; // the host's proposed amount; 0 in the main menu
    QString TrsNo;
    QString BillNo;

    // Reader fields. Reader is the reader library in use, made on first use from PONDAR_READER.
    std::shared_ptr<card::ReaderLibrary> Reader;
    int ReaderPort = 1;
    std::int16_t ReaderHandle = -1;
    std::int16_t ReaderStatus = 0;
    std::uint16_t LoginSector = 0;
    QString CardSerial;
    QString DefFF = QStringLiteral("FF"); // the login key text; its first two hex digits

    // The till's journal of Saves, opened on first use beside the settings file.
    std::shared_ptr<Journal> TillJournal;

    // The clock of reference numbers, log lines and slips; tests fix it.
    std::function<QDateTime()> clock;
    QDateTime now() const { return clock ? clock() : QDateTime::currentDateTime(); }
};

// Loading at start: the reader port, ReturnFlag reset to "0", then the three rates and the
// business date. Throws pondar::Error, naming the culprit, when the file cannot be written, a
// rate is negative or not finite, or the business date is not a real date.
void loadSettings(SessionSettings& session);

} // namespace pondar
