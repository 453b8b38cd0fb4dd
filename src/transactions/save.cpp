#include "transactions/save.h"

#include "card/membercard.h"
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
        u"Transaction : "_s + billTypeCode(r.plan.billType) + u' ' + r.plan.writeValue.format(),
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

namespace {

const QString NotAMember = u"Member either inactive or not Found in Database !!!"_s;
const QString WriteFailed = u"Error Writing to Card !!!"_s;

SaveOutcome stopped(SaveOutcome::Status status, const QString& message,
                    const QString& title = u"Message"_s, int focus = txt::None) {
    SaveOutcome out;
    out.status = status;
    out.message = message;
    out.title = title;
    out.focus = focus;
    return out;
}

} // namespace

TransactionSave::TransactionSave(SessionSettings& session, card::CardPrompts& prompts)
    : m_session(session)
    , m_prompts(prompts) {}

SaveOutcome TransactionSave::save(TransactionMode mode, const TransactionBoxes& boxes,
                                  const ConnectedCard& card) {
    using Status = SaveOutcome::Status;
    SaveDecision decision;
    switch (mode) {
    case TransactionMode::TopUp:
        decision = planTopUp(boxes);
        break;
    case TransactionMode::Withdraw:
        decision = planWithdraw(boxes);
        break;
    case TransactionMode::Adjustment:
        decision = planAdjustment(boxes);
        break;
    case TransactionMode::Enquiry:
        return stopped(Status::Refused, u"Nothing to save !!!"_s, u"message"_s);
    }
    if (!decision.plan) {
        const SaveRefusal& r = decision.refusal;
        return stopped(Status::Refused, r.text, r.title, r.focus);
    }
    // Without a member read by Connect there is no balance to build on.
    if (!card.memberFound)
        return stopped(Status::Refused, NotAMember);
    const SavePlan& plan = *decision.plan;
    if (std::optional<SaveOutcome> refused = cardRefused(card))
        return *refused;
    card::MemberCard writer(m_session, m_prompts);
    if (!writer.confirmAndWriteValue(plan.billType, plan.writeValue, plan.newValue))
        return stopped(Status::NotWritten, WriteFailed);
    return post(mode, boxes, plan);
}

// The card on the reader must be the one Connect read, still holding the balance shown: a card
// swapped or topped up elsewhere in between would otherwise receive another card's value.
std::optional<SaveOutcome> TransactionSave::cardRefused(const ConnectedCard& connected) {
    using Status = SaveOutcome::Status;
    card::SilentPrompts silent;
    card::MemberCard check(m_session, silent);
    card::CardData data;
    if (check.read(data) != card::ReadResult::Ok)
        return stopped(Status::NotWritten, WriteFailed);
    if (m_session.CardSerial != connected.serial || data.code != connected.code ||
        data.balance.format() != connected.balance)
        return stopped(Status::NotWritten,
                       u"Card on the reader is not the card read, press Connect again !!!"_s);
    return std::nullopt;
}

SaveOutcome TransactionSave::post(TransactionMode mode, const TransactionBoxes& boxes,
                                  const SavePlan& plan) {
    SaveOutcome out;
    TransactionForm form{boxes, {}};
    QStringList posted;
    try {
        PostTransaction(m_session, mode, form, plan, &posted);
        if (plan.billType == BillType::In) {
            AddIntroducerCredit(m_session, boxes.introducer, Currency::parse(boxes.topUp),
                                form.currentRef);
            posted.append(u"introducer credit"_s);
        }
    } catch (const std::exception& e) {
        const UnpostedWrite r{m_session.now(),
                              boxes,
                              plan,
                              form.currentRef,
                              posted,
                              errorText(e),
                              m_session.TrsNo,
                              m_session.BillNo,
                              m_session.OutletCode,
                              m_session.BzDate};
        out.status = SaveOutcome::Status::Unposted;
        out.refNo = form.currentRef;
        out.message = recordUnpostedWrite(m_session.IniPath, r);
        return out;
    }

    WriteHandOff(m_session.IniPath,
                 HandOff{boxes.cardNo, boxes.name, Currency::parse(boxes.balance),
                         Currency::parse(boxes.pending), plan.writeValue, plan.newValue, 1,
                         form.currentRef});
    out.status = SaveOutcome::Status::Posted;
    out.refNo = form.currentRef;
    out.slip = reports::SlipRequest{reports::TransactionSlip{form.currentRef, mode}, true};
    return out;
}

} // namespace pondar
