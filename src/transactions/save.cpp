#include "transactions/save.h"

#include "card/membercard.h"
#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "transactions/handoff.h"
#include "transactions/journal.h"
#include "transactions/supervisor.h"

#include <pondar/error.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <exception>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

const QString NotAMember = u"Member either inactive or not Found in Database !!!"_s;
const QString WriteFailed = u"Error Writing to Card !!!"_s;
const QString Headline =
    u"The card was written but the transaction was not posted to the database !!!"_s;

// The lines the operator sees; the file holds them too, with the error on one line.
QStringList summary(const UnpostedWrite& r, bool oneLineError) {
    const Posting& p = r.posting;
    return {
        u"Card No : "_s + p.boxes.cardNo + u" / "_s + p.boxes.name,
        u"Transaction : "_s + billTypeCode(p.plan.billType) + u' ' + p.plan.writeValue.format(),
        u"New Card Bal. : "_s + p.plan.newValue.format(),
        u"Ref No : "_s + p.refNo,
        u"Error : "_s + (oneLineError ? r.error.simplified() : r.error.trimmed()),
    };
}

QString fileBlock(const UnpostedWrite& r) {
    const Posting& p = r.posting;
    QStringList lines;
    lines << isoDateTime(r.moment) + u' ' + Headline;
    lines << summary(r, true);
    lines << u"Previous Bal. : "_s + Currency::parse(p.boxes.balance).format()
          << u"Pending : "_s + p.pending.format()
          << u"Topup : "_s + p.boxes.topUp + u"  Extra : "_s + p.boxes.extra
          << u"Staff Code : "_s + p.boxes.staffCode << u"Trs No : "_s + p.trsNo
          << u"Bill No : "_s + p.billNo << u"Outlet : "_s + p.outlet
          << u"Business Date : "_s + p.bzDate;
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

SaveOutcome stopped(SaveOutcome::Status status, const QString& message,
                    const QString& title = u"Message"_s, int focus = txt::None) {
    SaveOutcome out;
    out.status = status;
    out.message = message;
    out.title = title;
    out.focus = focus;
    return out;
}

SaveDecision planFor(TransactionMode mode, const TransactionBoxes& boxes, Currency maxBalance) {
    switch (mode) {
    case TransactionMode::TopUp:
        return withinCeiling(planTopUp(boxes), maxBalance, txt::TopUp);
    case TransactionMode::Withdraw:
        return planWithdraw(boxes);
    case TransactionMode::Adjustment:
        return withinCeiling(planAdjustment(boxes), maxBalance, txt::AdjustIn);
    case TransactionMode::Enquiry:
        break;
    }
    SaveDecision nothing;
    nothing.refusal = SaveRefusal{u"Nothing to save !!!"_s, u"message"_s, txt::None};
    return nothing;
}

CardLedgerCheck compare(SessionSettings& session, const QString& cardNo, Currency card) {
    CardLedgerCheck check;
    check.card = card;
    if (!session.LedgerCheck)
        return check;
    const LedgerBalance ledger = ledgerBalanceOf(session, cardNo);
    check.ledger = ledger.balance;
    check.lastRef = ledger.lastRef;
    check.matches = card == ledger.balance;
    return check;
}

void logMismatch(SessionSettings& session, const QString& cardNo, const CardLedgerCheck& c) {
    writeLog(session, u"Card Balance does not match the Database : CardNo : "_s + cardNo +
                          u" Card "_s + c.card.format() + u" Database "_s + c.ledger.format() +
                          u" Last Ref "_s + c.lastRef);
}

QString describe(const Posting& p) {
    return u"CardNo : "_s + p.boxes.cardNo + u" / "_s + p.boxes.name + u"  "_s +
           billTypeCode(p.plan.billType) + u' ' + p.plan.writeValue.format() +
           u"  New Card Bal. : "_s + p.plan.newValue.format() + u"  Ref No : "_s + p.refNo;
}

// Posts one journal entry in a transaction of its own; true when its lines were not in the
// ledger before.
bool postEntry(SessionSettings& session, Journal& journal, const Journal::Entry& entry) {
    db::Transaction tx(session.Conn, entry.posting.boxes.cardNo);
    const bool fresh = !isPosted(session.Conn, entry.posting);
    PostTransaction(session.Conn, entry.posting);
    tx.commit();
    journal.mark(entry.id, Journal::State::Posted);
    return fresh;
}

} // namespace

QString CardLedgerCheck::message() const {
    return u"Card Balance does not match the Database !!!\n\nCard : "_s + card.format() +
           u"\nDatabase : "_s + ledger.format() + u"\nLast Ref No : "_s +
           (lastRef.isEmpty() ? u"none"_s : lastRef);
}

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
        return Headline + u"\n\n"_s + summary(record, false).join(u'\n') +
               u"\n\nThe transaction waits in the till's journal and is posted as soon as the "
               "database answers again. "_s +
               where;
    } catch (...) {
        return Headline;
    }
}

Journal& journalOf(SessionSettings& session) {
    // Its place is the settings file's folder; without one there is no place a till can trust.
    if (session.IniPath.isEmpty())
        throw Error(u"The till's journal has no place: no settings file was given."_s);
    const QString path = Journal::pathFor(session.IniPath);
    if (!session.TillJournal || session.TillJournal->path() != path)
        session.TillJournal = std::make_shared<Journal>(session.IniPath);
    return *session.TillJournal;
}

LedgerBalance ledgerBalanceOf(SessionSettings& session, const QString& cardNo) {
    LedgerBalance ledger = ledgerBalance(session.Conn, cardNo);
    try {
        const QList<Journal::Entry> waiting =
            journalOf(session).entries(Journal::State::Written, cardNo);
        if (!waiting.isEmpty()) {
            ledger.balance = waiting.constLast().posting.plan.newValue;
            ledger.lastRef = waiting.constLast().posting.refNo;
        }
    } catch (const Error&) {
        // A journal that cannot be opened holds nothing this till could have written.
    }
    return ledger;
}

CardLedgerCheck checkCardAgainstLedger(SessionSettings& session, const QString& cardNo,
                                       Currency cardBalance) {
    const CardLedgerCheck check = compare(session, cardNo, cardBalance);
    if (!check.matches)
        logMismatch(session, cardNo, check);
    return check;
}

QStringList replayJournal(SessionSettings& session) {
    Journal& journal = journalOf(session);
    QStringList posted;
    for (const Journal::Entry& entry : journal.entries(Journal::State::Written)) {
        if (postEntry(session, journal, entry))
            posted << describe(entry.posting);
    }
    return posted;
}

QStringList settleOpenSaves(SessionSettings& session, const QString& cardNo, Currency cardBalance) {
    Journal& journal = journalOf(session);
    QStringList posted;
    for (const Journal::Entry& entry : journal.entries(Journal::State::Recorded, cardNo)) {
        if (cardBalance == entry.posting.plan.newValue) {
            journal.mark(entry.id, Journal::State::Written);
            if (postEntry(session, journal, entry))
                posted << describe(entry.posting);
        } else if (cardBalance == entry.oldBalance) {
            journal.mark(entry.id, Journal::State::Void);
        }
    }
    return posted;
}

QString replayMessage(const QStringList& posted) {
    return u"Transactions kept in the till's journal were posted to the database !!!\n\n"_s +
           posted.join(u'\n');
}

bool writeLedgerBalanceToCard(SessionSettings& session, card::CardPrompts& prompts,
                              const ConnectedCard& connected, const CardLedgerCheck& check) {
    card::SilentPrompts silent;
    card::MemberCard reader(session, silent);
    card::CardData data;
    if (reader.read(data) != card::ReadResult::Ok || session.CardSerial != connected.serial ||
        data.code != connected.code || data.balance != check.card)
        return false;
    card::MemberCard writer(session, prompts);
    if (!writer.writeValue(check.ledger))
        return false;
    writeLog(session, u"Card Balance set to the Database : CardNo : "_s + connected.code +
                          u" from "_s + check.card.format() + u" to "_s + check.ledger.format());
    return true;
}

void postCardDifference(SessionSettings& session, const TransactionBoxes& boxes,
                        const CardLedgerCheck& check) {
    db::Transaction tx(session.Conn, boxes.cardNo);
    if (ledgerBalanceOf(session, boxes.cardNo).balance != check.ledger)
        throw Error(u"The Database balance changed meanwhile, press Connect again !!!"_s);
    const bool in = check.card > check.ledger;
    TransactionBoxes b = boxes;
    b.balance = check.ledger.format();
    b.pending = u"0"_s;
    b.remark = u"Card/Database difference"_s;
    b.topUp = b.extra = b.withdraw = QString();
    (in ? b.adjustIn : b.adjustOut) =
        (in ? check.card - check.ledger : check.ledger - check.card).format();
    SavePlan plan;
    plan.billType = in ? BillType::AdjustIn : BillType::AdjustOut;
    plan.writeValue = in ? check.card - check.ledger : check.ledger - check.card;
    plan.newValue = check.card;
    Posting posting = makePosting(session, TransactionMode::Adjustment, b, plan, {}, Currency());
    // Posted like a supervisor's adjustment, its log line included.
    PostTransaction(session.Conn, posting);
    tx.commit();
}

TransactionSave::TransactionSave(SessionSettings& session, card::CardPrompts& prompts)
    : m_session(session)
    , m_prompts(prompts) {}

void TransactionSave::reach(Step step) const {
    if (faultAt)
        faultAt(step);
}

SaveOutcome TransactionSave::save(TransactionMode mode, const TransactionBoxes& boxes,
                                  const ConnectedCard& card) {
    using Status = SaveOutcome::Status;
    const SaveDecision decision = planFor(mode, boxes, m_session.MaxBalance);
    if (!decision.plan) {
        const SaveRefusal& r = decision.refusal;
        return stopped(Status::Refused, r.text, r.title, r.focus);
    }
    // Without a member read by Connect there is no balance to build on.
    if (!card.memberFound)
        return stopped(Status::Refused, NotAMember);
    card::MemberCard::checkBalanceFits(decision.plan->newValue);
    // Asked before the database is held, so no till waits on an operator's answer, and before
    // the card is looked at, so no card can be swapped between that look and the write.
    if (!m_prompts.ask(card::valueQuestion(decision.plan->billType, decision.plan->writeValue)))
        return stopped(Status::NotWritten, WriteFailed);
    if (std::optional<SaveOutcome> refused = cardRefused(card))
        return *refused;

    const QSqlDatabase& db = m_session.Conn;
    const Currency balance = Currency::parse(boxes.balance);
    std::optional<db::Transaction> tx;
    Posting posting;
    try {
        tx.emplace(db, boxes.cardNo);
        const CardLedgerCheck check = compare(m_session, boxes.cardNo, balance);
        if (!check.matches) {
            logMismatch(m_session, boxes.cardNo, check);
            tx->commit();
            return stopped(Status::Refused, check.message());
        }
        // Blocked since Connect: the card is refused however the Save was reached.
        if (cardStatus(db, card.serial) == CardStatus::Blocked) {
            tx->commit();
            return stopped(Status::Refused, CardBlockedText);
        }
        // What is pending now goes onto the card, not what Connect showed.
        const PendingRows pending = pendingRows(db, boxes.cardNo);
        TransactionBoxes now = boxes;
        now.pending = pending.sum.format();
        const SaveDecision again = planFor(mode, now, m_session.MaxBalance);
        if (!again.plan)
            return stopped(Status::Refused, again.refusal.text, again.refusal.title,
                           again.refusal.focus);
        card::MemberCard::checkBalanceFits(again.plan->newValue);
        posting = makePosting(m_session, mode, boxes, *again.plan, pending.ids, pending.sum);
    } catch (const std::exception& e) {
        return stopped(Status::NotWritten,
                       u"Nothing was written to the Card: the database did not answer !!!\n\n"_s +
                           errorText(e));
    }

    Journal* kept = nullptr;
    qint64 entry = 0;
    try {
        kept = &journalOf(m_session);
        entry = kept->record(posting, card.serial, balance);
    } catch (const std::exception& e) {
        return stopped(Status::NotWritten,
                       u"Nothing was written to the Card: the till's journal cannot be kept !!!"
                       "\n\n"_s +
                           errorText(e));
    }
    Journal& journal = *kept;
    card::MemberCard writer(m_session, m_prompts);
    if (!writer.writeValue(posting.plan.newValue)) {
        try {
            journal.mark(entry, Journal::State::Void);
        } catch (const std::exception&) {
            // Left recorded, the card's next Connect finds the old balance and voids it.
        }
        return stopped(Status::NotWritten, WriteFailed);
    }
    reach(Step::CardWritten);
    try {
        journal.mark(entry, Journal::State::Written);
    } catch (const std::exception&) {
        // Left recorded, the card's next Connect finds the new balance and posts it.
    }

    SaveOutcome out;
    out.refNo = posting.refNo;
    HandOff handOff{boxes.cardNo,
                    boxes.name,
                    balance,
                    posting.pending,
                    posting.plan.writeValue,
                    posting.plan.newValue,
                    1,
                    posting.refNo,
                    true};
    try {
        PostTransaction(db, posting);
        reach(Step::LinesPosted);
        tx->commit();
    } catch (const std::exception& e) {
        tx->rollback();
        out.status = Status::Unposted;
        out.message = recordUnpostedWrite(m_session.IniPath,
                                          UnpostedWrite{m_session.now(), posting, errorText(e)});
        handOff.posted = false;
        WriteHandOff(m_session.IniPath, handOff);
        return out;
    }
    try {
        journal.mark(entry, Journal::State::Posted);
    } catch (const std::exception&) {
        // A replay finds the lines in the ledger and only marks the entry.
    }
    WriteHandOff(m_session.IniPath, handOff);
    out.status = Status::Posted;
    out.slip = reports::SlipRequest{reports::TransactionSlip{posting.refNo, mode}, true};
    return out;
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

} // namespace pondar
