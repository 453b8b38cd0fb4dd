#include "transactions/save.h"

#include "shell/session.h"
#include "shell/text.h"
#include "transactions/handoff.h"
#include "transactions/ledger.h"

#include <pondar/error.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <exception>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

QString headline(const UnpostedWrite& r) {
    return r.posted.isEmpty()
               ? u"The card was written but the transaction was not posted to the database !!!"_s
               : u"The card was written but the transaction was only partly posted to the "
                 "database !!!"_s;
}

// The lines the operator sees; the file holds them too, with the error on one line.
QStringList summary(const UnpostedWrite& r, bool oneLineError) {
    return {
        u"Card No : "_s + r.cardNo + u" / "_s + r.name,
        u"Transaction : "_s + r.billType + u' ' + r.writeValue.format(),
        u"New Card Bal. : "_s + r.newValue.format(),
        u"Ref No : "_s + r.refNo,
        u"Posted before the error : "_s +
            (r.posted.isEmpty() ? u"nothing"_s : r.posted.join(u", "_s)),
        u"Error : "_s + (oneLineError ? r.error.simplified() : r.error.trimmed()),
    };
}

QString fileBlock(const UnpostedWrite& r) {
    QStringList lines;
    lines << isoDateTime(r.moment) + u' ' + headline(r);
    lines << summary(r, true);
    lines << u"Previous Bal. : "_s + r.previousValue.format()
          << u"Pending : "_s + r.pendingValue.format()
          << u"Topup : "_s + r.topUp + u"  Extra : "_s + r.extra << u"Staff Code : "_s + r.staffCode
          << u"Trs No : "_s + r.trsNo << u"Bill No : "_s + r.billNo << u"Outlet : "_s + r.outlet
          << u"Business Date : "_s + r.bzDate;
    return lines.join(u"\r\n"_s) + u"\r\n\r\n"_s;
}

// Appends the block; the reason when it could not.
QString append(const QString& path, const QString& block) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return file.errorString();
    const QByteArray bytes = block.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.flush())
        return file.errorString();
    return {};
}

QString errorText(const std::exception& e) {
    if (const auto* own = dynamic_cast<const Error*>(&e))
        return own->message();
    return QString::fromUtf8(e.what());
}

} // namespace

QString recoveryFilePath(const QString& iniPath) {
    return QFileInfo(iniPath).absoluteDir().filePath(u"pondar-recovery.txt"_s);
}

QString recordUnpostedWrite(const QString& iniPath, const UnpostedWrite& record) noexcept {
    try {
        const QString file = recoveryFilePath(iniPath);
        const QString failure = append(file, fileBlock(record));
        const QString path = QDir::toNativeSeparators(file);
        const QString where = failure.isEmpty()
                                  ? QString(u"These details were added to "_s + path + u'.')
                                  : u"These details could not be added to "_s + path + u" ("_s +
                                        failure + u"). Please note them down !!!"_s;
        return headline(record) + u"\n\n"_s + summary(record, false).join(u'\n') + u"\n\n"_s +
               where;
    } catch (...) {
        return u"The card was written but the transaction was not posted to the database !!!"_s;
    }
}

SaveOutcome saveTransaction(SessionSettings& session, TransactionForm& form, const SavePlan& plan) {
    SaveOutcome out;
    session.TransactionOk = false;
    const TransactionBoxes& b = form.boxes;
    QStringList posted;
    try {
        PostTransaction(session, form, plan, &posted);
        if (plan.billType == u"IN"_s) {
            AddIntroducerCredit(session, Currency::parse(b.topUp), form.currentRef);
            posted.append(u"introducer credit"_s);
        }
    } catch (const std::exception& e) {
        UnpostedWrite r;
        r.moment = session.now();
        r.cardNo = b.cardNo;
        r.name = b.name;
        r.billType = plan.billType;
        r.writeValue = plan.writeValue;
        r.newValue = plan.newValue;
        r.refNo = form.currentRef;
        r.posted = posted;
        r.error = errorText(e);
        r.previousValue = Currency::parse(b.balance);
        r.pendingValue = Currency::parse(b.pending);
        r.topUp = b.topUp;
        r.extra = b.extra;
        r.staffCode = b.staffCode;
        r.trsNo = session.TrsNo;
        r.billNo = session.BillNo;
        r.outlet = session.OutletCode;
        r.bzDate = session.BzDate;
        out.refNo = form.currentRef;
        out.message = recordUnpostedWrite(session.IniPath, r);
        return out;
    }

    session.TransactionOk = true;
    WriteHandOff(session.IniPath,
                 HandOff{b.cardNo, b.name, Currency::parse(b.balance), Currency::parse(b.pending),
                         plan.writeValue, plan.newValue, 1, form.currentRef});
    session.SlipRefNo = form.currentRef;
    session.SlipAction = u"PRINT"_s;
    out.ok = true;
    out.refNo = form.currentRef;
    return out;
}

} // namespace pondar
