#pragma once

#include <pondar/currency.h>

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>
#include <QVariantList>

#include <cstdint>
#include <functional>
#include <memory>

namespace pondar {

namespace card {
class ReaderLibrary;
}

// The values every screen shares for the life of the component: the particulars StartApp was
// given, the rates of the settings file, and what one screen hands to the next. Screens get it
// passed in; nothing reaches it through a global.
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

    QSqlDatabase Conn;
    bool TransactionOk = false;
    Currency AppValue;
    QString TrsNo;
    QString BillNo;
    QString TransactionMode;

    // Handed between screens.
    bool DialogAccepted = false;
    QString LookupQuery;
    // Values bound, in order, to LookupQuery's "?" placeholders. The lookup grid empties them
    // once it has run the query, so a caller that sets only LookupQuery binds nothing.
    QVariantList LookupValues;
    QString CurrentCode;
    QString CurrentName;
    QString CommStaffCode;
    QString CommStaffName;
    QString SlipRefNo;
    QString SlipAction;
    // What the transaction screen shows, for the enquiry slip (SlipRefNo "ENQUIRY").
    QString EnquiryCardNo;
    QString EnquiryName;
    Currency EnquiryBalance;
    QString IntroducerCode;  // the member's introducer, read by the transaction screen
    QString CurrentCardNo;   // the card last read by the balance display
    QString ConfirmQuestion; // the last card-value question asked

    // Reader fields. Reader is the reader library in use, made on first use from PONDAR_READER.
    std::shared_ptr<card::ReaderLibrary> Reader;
    int ReaderPort = 1;
    std::int16_t ReaderHandle = -1;
    std::int16_t ReaderStatus = 0;
    std::uint16_t LoginSector = 0;
    std::uint16_t LoggedSector = 0;
    QString CardSerial;
    QString DefFF = QStringLiteral("FF"); // the login key text; its first two hex digits

    // The clock of reference numbers, log lines and slips; tests fix it.
    std::function<QDateTime()> clock;
    QDateTime now() const { return clock ? clock() : QDateTime::currentDateTime(); }
};

// Loading at start: the reader port, ReturnFlag reset to "0", then the three rates and the
// business date. Throws pondar::Error, naming the culprit, when the file cannot be written, a
// rate is negative or not finite, or the business date is not a real date.
void loadSettings(SessionSettings& session);

} // namespace pondar
