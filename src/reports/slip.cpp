#include "reports/slip.h"

#include "reports/reporttext.h"
#include "shell/database.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QFile>
#include <QSqlRecord>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

namespace {

QString typeWord(const QString& billType) {
    if (billType == u"IN"_s)
        return u"Top Up"_s;
    if (billType == u"OUT"_s)
        return u"Withdraw"_s;
    if (billType == u"AIN"_s || billType == u"AOT"_s)
        return u"Adjustment"_s;
    return {};
}

// A null amount is not 0 here: the line is left out, as for a zero one.
bool nonZero(const QVariant& value) {
    return !value.isNull() && !db::readMoney(value).isZero();
}

} // namespace

QString transactionSlip(const QSqlDatabase& db, const QString& refNo,
                        std::optional<TransactionMode> mode) {
    auto q = db::exec(
        db, u"Select * from Customize_Transaction where Billtype <> 'PED' AND RefTrsNo=?"_s,
        {refNo});
    if (!q.next())
        return {};
    const QSqlRecord row = q.record();
    const auto value = [&row](const QString& column) { return row.value(column); };

    ReportText slip;
    slip.rule();
    slip.line(u"       ** TRANSACTION SUMMARY **"_s);
    slip.rule();
    slip.line();
    slip.line(u"Type     : "_s + typeWord(value(u"Billtype"_s).toString()));
    slip.line(u"RefNo#   : "_s + refNo);
    slip.line(u"Date     : "_s + dateTimeText(value(u"TrsDate"_s)));
    slip.line(u"Card No# : "_s + value(u"CardNo"_s).toString());
    if (!value(u"Name"_s).isNull())
        slip.line(u"Name     : "_s + value(u"Name"_s).toString());
    if (!value(u"Remark"_s).isNull())
        slip.line(u"Desc.    : "_s + value(u"Remark"_s).toString());
    slip.line(u"Previous Value : "_s + moneyText(value(u"PreviousValue"_s)));

    if (!mode)
        mode = modeOfLine(value(u"Billtype"_s).toString());
    const QVariant pending = value(u"PendingValue"_s);
    if (mode == TransactionMode::TopUp) {
        if (nonZero(pending))
            slip.line(u"Pending Topup  : "_s + moneyText(pending));
        slip.line(u"Topup Value    : "_s + moneyText(value(u"TopupValue"_s)));
        if (nonZero(value(u"ExtraValue"_s)))
            slip.line(u"Extra Value    : "_s + moneyText(value(u"ExtraValue"_s)));
        slip.line(u"New Balance    : "_s + moneyText(value(u"NewValue"_s)));
    } else if (mode == TransactionMode::Withdraw || mode == TransactionMode::Adjustment) {
        // These labels are one column narrower than the top-up ones; slips always looked so.
        if (nonZero(pending))
            slip.line(u"Pending Topup : "_s + moneyText(pending));
        slip.line(
            (mode == TransactionMode::Withdraw ? u"Withdraw Value: "_s : u"Adjusted Value: "_s) +
            moneyText(value(u"PValue"_s)));
        slip.line(u"New Balance   : "_s + moneyText(value(u"NewValue"_s)));
    }
    slip.rule();
    slip.line();
    return slip.text();
}

QString enquirySlip(const QString& cardNo, const QString& name, Currency balance,
                    const QDateTime& now) {
    ReportText slip;
    slip.rule();
    slip.line(u"       ** ENQUIRY SUMMARY **"_s);
    slip.rule();
    slip.line();
    slip.line(u"Type     : Enquiry"_s);
    slip.line(u"Date     : "_s + displayDateTime(now));
    slip.line(u"Card No# : "_s + cardNo);
    slip.line(u"Name     : "_s + name);
    slip.line(u"Balance  : "_s + balance.format());
    slip.rule();
    slip.line();
    return slip.text();
}

QByteArray printerBytes(const QString& text) {
    QByteArray bytes("\x1b\x40\r\n");
    bytes += toAnsi(text);
    bytes += "\r\n";
    bytes += QByteArray("\x1d\x56\x42\x00", 4);
    return bytes;
}

void printText(const QString& target, const QString& text) {
    if (target.isEmpty())
        throw Error(u"No printer is set up for this till."_s);
    QFile printer(target);
    if (!printer.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw Error(u"Cannot open the printer \""_s + target + u"\": "_s + printer.errorString());
    const QByteArray bytes = printerBytes(text);
    if (printer.write(bytes) != bytes.size() || !printer.flush())
        throw Error(u"Cannot write to the printer \""_s + target + u"\": "_s +
                    printer.errorString());
}

} // namespace pondar::reports
