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
        u"Card No : "_s + r.boxes.cardNo + u" / "_s + r.boxes.name,
        u"Transaction : "_s + r.plan.billType + u' ' + r.plan.writeValue.format(),
        u"New Card Bal. : "_s + r.plan.newValue.format(),
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
    lines << u"Previous Bal. : "_s + Currency::parse(r.boxes.balance).format()
          << u"Pending : "_s + Currency::parse(r.boxes.pending).format()
          << u"Topup : "_s + r.boxes.topUp + u"  Extra : "_s + r.boxes.extra
          << u"Staff Code : "_s + r.boxes.staffCode << u"Trs No : "_s + r.trsNo
          << u"Bill No : "_s + r.billNo << u"Outlet : "_s + r.outlet
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
        const UnpostedWrite r{session.now(),
                              b,
                              plan,
                              form.currentRef,
                              posted,
                              errorText(e),
                              session.TrsNo,
                              session.BillNo,
                              session.OutletCode,
                              session.BzDate};
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
