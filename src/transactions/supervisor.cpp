#include "transactions/supervisor.h"

#include "card/membercard.h"
#include "members/memberdata.h"
#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "transactions/handoff.h"
#include "transactions/save.h"

#include <pondar/error.h>

#include <QDir>
#include <QFile>
#include <QList>

#include <exception>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

const QString Active = u"ACTIVE"_s;
const QString Blocked = u"BLOCKED"_s;
const QString WriteFailed = u"Error Writing to Card !!!"_s;
const QString NotFound = u"Member not Found in Database !!!"_s;

SupervisorResult refused(const QString& message) {
    return {false, message};
}

QVariant text(const QString& value) {
    return value.isNull() ? QVariant(u""_s) : QVariant(value);
}

// The latest row of a card: its status and whose it is.
struct CardRow {
    CardStatus status = CardStatus::Unknown;
    QString cardNo;
};

CardRow latestRow(const QSqlDatabase& db, const QString& serial) {
    CardRow row;
    if (serial.isEmpty())
        return row;
    auto q = db::exec(db,
                      db::firstRowOnly(db, u"SELECT Status,CardNo FROM Customize_Card "
                                           "WHERE CardSerial=? ORDER BY ID DESC"_s),
                      {serial});
    if (q.next()) {
        row.status = q.value(0).toString().compare(Blocked, Qt::CaseInsensitive) == 0
                         ? CardStatus::Blocked
                         : CardStatus::Active;
        row.cardNo = q.value(1).toString().trimmed();
        q.close();
    }
    return row;
}

std::optional<QString> memberName(const QSqlDatabase& db, const QString& code) {
    auto q = db::exec(db, u"SELECT MemberName FROM tloy_mt_member WHERE MemberCode=?"_s, {code});
    if (!q.next())
        return std::nullopt;
    QString name = q.value(0).toString().trimmed();
    q.close();
    return name;
}

struct TypedMember {
    QString code;
    QString name;
};

// The member whose code was typed on the supervisor's screen; the refusal to show when the text
// cannot be a code or no member holds it.
std::optional<TypedMember> typedMember(const QSqlDatabase& db, const QString& typed,
                                       QString& refusal) {
    const QString code = typed.trimmed();
    if (code.isEmpty()) {
        refusal = u"Please enter the Member Code !!!"_s;
        return std::nullopt;
    }
    if (!isValidInput(code)) {
        refusal = u"Invalid Input Character !!!"_s;
        return std::nullopt;
    }
    const std::optional<QString> name = memberName(db, code);
    if (!name) {
        refusal = NotFound;
        return std::nullopt;
    }
    return TypedMember{code, *name};
}

bool hasCard(const QSqlDatabase& db, const QString& code, const QString& status) {
    return db::hasRow(db, u"SELECT 1 FROM Customize_Card WHERE CardNo=? AND Status=?"_s,
                      {code, status});
}

// The line a void takes back, and what its Save posted beside it under the same reference.
struct LedgerLine {
    qint64 id = 0;
    QString ref;
    QString billType;
    QString name;
    Currency previous;
    Currency newValue;
    Currency value; // PValue: signed as posted
    QDate date;
    QString remark;
};

std::optional<LedgerLine> latestLine(const QSqlDatabase& db, const QString& cardNo) {
    auto q = db::exec(db,
                      db::firstRowOnly(db, u"SELECT ID,RefTrsNo,Billtype,Name,PreviousValue,"
                                           "NewValue,PValue,TrsDate,Remark FROM "
                                           "Customize_Transaction WHERE CardNo=? AND "
                                           "Billtype<>'PED' ORDER BY ID DESC"_s),
                      {cardNo});
    if (!q.next())
        return std::nullopt;
    LedgerLine line;
    line.id = q.value(0).toLongLong();
    line.ref = q.value(1).toString();
    line.billType = q.value(2).toString().trimmed().toUpper();
    line.name = q.value(3).toString();
    line.previous = db::readMoney(q.value(4));
    line.newValue = db::readMoney(q.value(5));
    line.value = db::readMoney(q.value(6));
    line.date = db::readDateTime(q.value(7)).date();
    line.remark = q.value(8).toString();
    q.close();
    return line;
}

struct StaffCommLine {
    QString staffCode;
    Currency topUp;
    Currency value;
};

struct IntroducerCredit {
    QString cardNo;
    Currency value;
    bool settled = false;
};

// What the void posts besides its reversing line.
struct VoidParts {
    Currency pendingSettled;
    QList<StaffCommLine> commissions;
    QList<IntroducerCredit> credits;
};

VoidParts partsOf(const QSqlDatabase& db, const QString& cardNo, const QString& ref) {
    VoidParts parts;
    {
        auto q = db::exec(db,
                          u"SELECT PValue FROM Customize_Transaction WHERE RefTrsNo=? AND "
                          "CardNo=? AND Billtype='PED'"_s,
                          {ref, cardNo});
        while (q.next())
            parts.pendingSettled += db::readMoney(q.value(0));
    }
    {
        auto q = db::exec(
            db, u"SELECT StaffCode,TopupValue,PValue FROM Customize_StaffComm WHERE RefTrsNo=?"_s,
            {ref});
        while (q.next())
            parts.commissions.append(
                {q.value(0).toString(), db::readMoney(q.value(1)), db::readMoney(q.value(2))});
    }
    auto q = db::exec(
        db, u"SELECT cardNo,FValue,UpdateStatus FROM Customize_Topup WHERE RefTrsNo=?"_s, {ref});
    while (q.next())
        parts.credits.append(
            {q.value(0).toString(), db::readMoney(q.value(1)), q.value(2).toInt() != 0});
    return parts;
}

QString reverseType(const QString& billType) {
    if (billType == u"IN"_s || billType == u"AIN"_s)
        return u"AOT"_s;
    return u"AIN"_s;
}

// Posts the reversing lines inside the caller's transaction; returns what the operator must be
// told about an introducer's credit that had already gone onto the introducer's card.
QString postVoid(SessionSettings& session, const QString& cardNo, const LedgerLine& line,
                 const VoidParts& parts) {
    const QSqlDatabase& db = session.Conn;
    const QDateTime now = session.now();
    const QString ref = MakeRefNo(now, cardNo, u"VOID"_s);
    const QVariant trsDate = bizDateValue(session.BzDate);
    const QString remark = u"Void "_s + line.ref;
    if (!parts.pendingSettled.isZero()) {
        db::exec(db,
                 u"INSERT INTO Customize_Transaction "
                 "(TrsOutlet,RefTrsNo,CardNo,Name,TrsDate,TrsNo,Billtype,PValue,Remark) "
                 "VALUES (?,?,?,?,?,?,'PED',?,?)"_s,
                 {text(session.OutletCode), ref, cardNo, text(line.name), trsDate,
                  text(session.TrsNo), db::bindMoney(-parts.pendingSettled), remark});
        // The value the voided Save took off the pending list goes back on it.
        db::exec(db,
                 u"INSERT INTO Customize_Topup (cardNo,DateInput,UpdateStatus,FValue,TrsNo,"
                 "RefTrsNo) VALUES (?,?,0,?,?,?)"_s,
                 {cardNo, trsDate, db::bindMoney(parts.pendingSettled), text(session.TrsNo), ref});
    }
    db::exec(db,
             u"INSERT INTO Customize_Transaction "
             "(PreviousValue,NewValue,TrsOutlet,RefTrsNo,CardNo,Name,TrsDate,TrsNo,BillNo,"
             "Billtype,PendingValue,PValue,Remark) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?)"_s,
             {db::bindMoney(line.newValue), db::bindMoney(line.previous), text(session.OutletCode),
              ref, cardNo, text(line.name), trsDate, text(session.TrsNo), text(session.BillNo),
              reverseType(line.billType), db::bindMoney(-parts.pendingSettled),
              db::bindMoney(-line.value), remark});
    for (const StaffCommLine& c : parts.commissions)
        db::exec(db,
                 u"INSERT INTO Customize_StaffComm "
                 "(RefTrsNo,CardNo,Name,TrsDate,StaffCode,TopupValue,PValue) "
                 "VALUES (?,?,?,?,?,?,?)"_s,
                 {ref, cardNo, text(line.name), trsDate, text(c.staffCode), db::bindMoney(-c.topUp),
                  db::bindMoney(-c.value)});
    QString told;
    for (const IntroducerCredit& credit : parts.credits) {
        db::exec(
            db,
            u"INSERT INTO Customize_Topup (cardNo,DateInput,UpdateStatus,FValue,TrsNo,"
            "RefTrsNo) VALUES (?,?,0,?,?,?)"_s,
            {text(credit.cardNo), trsDate, db::bindMoney(-credit.value), text(session.TrsNo), ref});
        if (credit.settled && !credit.value.isZero())
            told += u"\n\nThe introducer's credit of "_s + credit.value.format() +
                    u" was already written to Card "_s + credit.cardNo +
                    u"; it is taken back at that card's next use."_s;
    }
    writeLog(db, session.StaffCode, session.BzDate, now,
             u"Void of Ref : "_s + line.ref + u" CardNo : "_s + cardNo + u'/' + line.name +
                 u" Card Bal. : "_s + line.newValue.format() + u" to "_s + line.previous.format() +
                 (told.isEmpty() ? QString()
                                 : u" (introducer's credit "
                                   "already settled)"_s));
    return told;
}

// Adds the void the card took but the database did not to the recovery file, the trail of every
// write that did not post at once; says where it went, or that it could not.
QString recordUnpostedVoid(const SessionSettings& session, const QStringList& lines) noexcept {
    try {
        const QString path = recoveryFilePath(session.IniPath);
        QFile file(path);
        const QByteArray block =
            (isoDateTime(session.now()) + u' ' + lines.join(u"\r\n"_s) + u"\r\n\r\n"_s).toUtf8();
        if (file.open(QIODevice::WriteOnly | QIODevice::Append) &&
            file.write(block) == block.size() && file.flush())
            return u"These details were added to "_s + QDir::toNativeSeparators(path) + u'.';
        return u"These details could not be added to "_s + QDir::toNativeSeparators(path) +
               u" ("_s + file.errorString() + u"). Please note them down !!!"_s;
    } catch (...) {
        return u"Please note these details down !!!"_s;
    }
}

QString errorText(const std::exception& e) {
    if (const auto* own = dynamic_cast<const Error*>(&e))
        return own->message();
    return QString::fromUtf8(e.what());
}

} // namespace

CardStatus cardStatus(const QSqlDatabase& db, const QString& serial) {
    return latestRow(db, serial).status;
}

void registerCard(SessionSettings& session, const QString& cardNo, const QString& serial,
                  const QString& remark) {
    const QSqlDatabase& db = session.Conn;
    const CardRow row = latestRow(db, serial);
    if (row.status == CardStatus::Active && row.cardNo.compare(cardNo, Qt::CaseInsensitive) == 0)
        return;
    const QDateTime now = session.now();
    db::Transaction tx(db);
    db::exec(db,
             u"UPDATE Customize_Card SET Status=?,DateBlock=?,Remark=? "
             "WHERE CardSerial=? AND Status=?"_s,
             {Blocked, now, QString(u"Written again for "_s + cardNo), serial, Active});
    db::exec(db,
             u"INSERT INTO Customize_Card (CardNo,CardSerial,Status,DateIssue,StaffCode,Remark) "
             "VALUES (?,?,?,?,?,?)"_s,
             {cardNo, serial, Active, now, text(session.StaffCode), text(remark)});
    tx.commit();
    writeLog(session, u"Card Registered : CardNo : "_s + cardNo + u" Serial : "_s + serial);
}

bool admitCard(SessionSettings& session, const QString& serial, const QString& cardNo,
               bool memberFound) {
    switch (cardStatus(session.Conn, serial)) {
    case CardStatus::Blocked:
        writeLog(session,
                 u"Blocked Card refused : CardNo : "_s + cardNo + u" Serial : "_s + serial);
        return false;
    case CardStatus::Unknown:
        if (memberFound && !serial.isEmpty())
            registerCard(session, cardNo, serial, u"Registered at Connect"_s);
        return true;
    case CardStatus::Active:
        break;
    }
    return true;
}

QString CardHolder::detail() const {
    return u"Card No : "_s + code + u" / "_s + name + u"\nBalance : "_s + balance.format();
}

std::optional<CardHolder> valueHolder(SessionSettings& session, const QString& codeOnCard,
                                      const QString& newCode) {
    const QString code = codeOnCard.trimmed();
    if (code.isEmpty() || code.compare(newCode.trimmed(), Qt::CaseInsensitive) == 0)
        return std::nullopt;
    const Currency balance = ledgerBalanceOf(session, code).balance;
    if (balance.isZero())
        return std::nullopt;
    return CardHolder{code, memberName(session.Conn, code).value_or(QString()), balance};
}

SupervisorResult blockCard(SessionSettings& session, const QString& memberCode,
                           const QString& remark) {
    const QSqlDatabase& db = session.Conn;
    QString refusal;
    const std::optional<TypedMember> member = typedMember(db, memberCode, refusal);
    if (!member)
        return refused(refusal);
    const QString& code = member->code;
    const QString& name = member->name;
    db::Transaction tx(db);
    if (!hasCard(db, code, Active))
        return refused(hasCard(db, code, Blocked) ? u"Card already Blocked !!!"_s
                                                  : u"No Card registered for this Member !!!"_s);
    db::exec(
        db,
        u"UPDATE Customize_Card SET Status=?,DateBlock=?,StaffCode=?,Remark=? "
        "WHERE CardNo=? AND Status=?"_s,
        {Blocked, session.now(), text(session.StaffCode), text(remark.trimmed()), code, Active});
    writeLog(session, u"Card Blocked : CardNo : "_s + code + u'/' + name + u" Remark : "_s +
                          remark.trimmed());
    tx.commit();
    return {true, u"Card of Member "_s + code + u" / "_s + name + u" Blocked !!!"_s};
}

SupervisorResult issueReplacementCard(SessionSettings& session, card::CardPrompts& prompts,
                                      const QString& memberCode) {
    const QSqlDatabase& db = session.Conn;
    QString refusal;
    const std::optional<TypedMember> member = typedMember(db, memberCode, refusal);
    if (!member)
        return refused(refusal);
    const QString& code = member->code;
    const QString& name = member->name;
    if (hasCard(db, code, Active))
        return refused(u"Member already has an active Card !!!"_s);
    if (!hasCard(db, code, Blocked))
        return refused(u"Member has no blocked Card to replace !!!"_s);
    const Currency balance = ledgerBalanceOf(session, code).balance;
    card::MemberCard::checkBalanceFits(balance);
    if (!prompts.ask(u"Store Data to Card "_s))
        return refused(u"Nothing was written to the Card !!!"_s);

    card::MemberCard card(session, prompts);
    const card::ReaderClosing closing(session, card);
    if (!card.openSelectLogin(card::MemberSector))
        return refused(u"Error Reading Card Device !!!"_s);
    const QString serial = session.CardSerial;
    const CardRow row = latestRow(db, serial);
    if (row.status == CardStatus::Active)
        return refused(u"Card on the reader is in use, block it first !!!"_s);
    if (row.status == CardStatus::Blocked && row.cardNo.compare(code, Qt::CaseInsensitive) == 0)
        return refused(u"Card on the reader is the Member's blocked Card !!!"_s);
    if (row.status == CardStatus::Unknown && card.checkCard(card::MemberSector)) {
        if (const auto holder = valueHolder(session, card.readField(card::MemberSector, 1), code))
            return refused(u"Card on the reader holds another Member's value !!!\n\n"_s +
                           holder->detail());
    }
    if (!card.openSelectLogin(card::MemberSector) || !card.writeSerial() || !card.writeCode(code) ||
        !card.writeName(members::cardName(name)) || !card.openSelectLogin(card::ValueSector) ||
        !card.writeValue(balance))
        return refused(WriteFailed);
    registerCard(session, code, serial, u"Replacement"_s);
    writeLog(session, u"Replacement Card issued : CardNo : "_s + code + u'/' + name +
                          u" Balance : "_s + balance.format());
    return {true, u"Replacement Card saved with Balance : "_s + balance.format() + u" !!!"_s};
}

SupervisorResult voidLastTransaction(SessionSettings& session, card::CardPrompts& prompts) {
    // A Save waiting in the journal is the card's latest transaction: post it first.
    replayJournal(session);
    card::SilentPrompts silent;
    card::MemberCard reader(session, silent);
    const card::ReaderClosing closing(session, reader);
    card::CardData data;
    if (const card::ReadResult r = reader.read(data); r != card::ReadResult::Ok)
        return refused(card::readFailureMessage(r));
    const QString serial = session.CardSerial;
    const QSqlDatabase& db = session.Conn;
    if (cardStatus(db, serial) == CardStatus::Blocked)
        return refused(CardBlockedText);
    settleOpenSaves(session, data.code, data.balance);
    const CardLedgerCheck check = checkCardAgainstLedger(session, data.code, data.balance);
    if (!check.matches)
        return refused(check.message());
    const std::optional<LedgerLine> line = latestLine(db, data.code);
    if (!line)
        return refused(u"No Transaction to Void !!!"_s);
    if (line->remark.startsWith(u"Void "_s))
        return refused(u"Last Transaction is already Voided !!!"_s);
    if (line->billType != u"IN"_s && line->billType != u"OUT"_s && line->billType != u"AIN"_s &&
        line->billType != u"AOT"_s)
        return refused(u"Last Transaction cannot be Voided !!!"_s);
    if (line->date != parseDate(session.BzDate))
        return refused(u"Only a Transaction of this Business Date can be Voided !!!"_s);
    // With the check switched off the card must still hold what the line left on it.
    if (data.balance != line->newValue)
        return refused(CardLedgerCheck{false, data.balance, line->newValue, line->ref}.message());
    if (!prompts.ask(u"Void Transaction "_s + line->ref + u" : "_s + line->billType + u' ' +
                     (line->value < Currency() ? -line->value : line->value).format() + u" ?"_s))
        return refused(u"Nothing was Voided !!!"_s);

    db::Transaction tx(db);
    const std::optional<LedgerLine> still = latestLine(db, data.code);
    if (!still || still->id != line->id)
        return refused(u"The Database changed meanwhile, press Void again !!!"_s);
    const VoidParts parts = partsOf(db, data.code, line->ref);
    card::CardData now;
    if (reader.read(now) != card::ReadResult::Ok)
        return refused(WriteFailed);
    if (session.CardSerial != serial || now.code != data.code || now.balance != data.balance)
        return refused(u"Card on the reader is not the card read, press Void again !!!"_s);
    card::MemberCard writer(session, prompts);
    if (!writer.writeValue(line->previous))
        return refused(WriteFailed);
    QString told;
    try {
        told = postVoid(session, data.code, *line, parts);
        tx.commit();
    } catch (const std::exception& e) {
        tx.rollback();
        const QStringList lines = {
            u"The Card was written but the void was not posted to the database !!!"_s,
            u"Card No : "_s + data.code + u" / "_s + line->name, u"Void of Ref No : "_s + line->ref,
            u"Card Bal. : "_s + line->newValue.format() + u" to "_s + line->previous.format(),
            u"Error : "_s + errorText(e).simplified()};
        return refused(lines.join(u'\n') + u"\n\n"_s + recordUnpostedVoid(session, lines) +
                       u"\n\nThe Card no longer matches the Database: at its next Connect the "
                       "supervisor writes the Database balance back onto it, and the void can be "
                       "made again."_s);
    }
    return {true, u"Transaction "_s + line->ref + u" Voided !!!\n\nCard Bal. : "_s +
                      line->previous.format() + told};
}

} // namespace pondar
