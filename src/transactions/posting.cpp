#include "transactions/posting.h"

#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "transactions/handoff.h"
#include "transactions/ledger.h"

#include <pondar/error.h>

#include <QJsonArray>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

// Text columns get '' rather than NULL for an empty box, as the record set wrote them.
QVariant textValue(const QString& text) {
    return text.isNull() ? QVariant(u""_s) : QVariant(text);
}

// A money column the line leaves unset, typed like the bound amounts.
QVariant unset() {
    return QVariant(QMetaType::fromType<QString>());
}

void step(QStringList* done, const QString& name) {
    if (done)
        done->append(name);
}

const char16_t* const BoxKeys[] = {u"cardNo",   u"name",      u"balance",   u"topUp",
                                   u"adjustIn", u"adjustOut", u"withdraw",  u"remark",
                                   u"pending",  u"extra",     u"staffCode", u"introducer"};

QString* boxField(TransactionBoxes& b, int i) {
    QString* fields[] = {&b.cardNo,   &b.name,   &b.balance, &b.topUp, &b.adjustIn,  &b.adjustOut,
                         &b.withdraw, &b.remark, &b.pending, &b.extra, &b.staffCode, &b.introducer};
    return fields[i];
}

} // namespace

QJsonObject Posting::toJson() const {
    QJsonObject b;
    TransactionBoxes copy = boxes;
    for (int i = 0; i < 12; ++i)
        b.insert(QString::fromUtf16(BoxKeys[i]), *boxField(copy, i));
    QJsonArray rows;
    for (qint64 id : pendingRows)
        rows.append(QString::number(id));
    return {{u"mode"_s, modeText(mode)},
            {u"boxes"_s, b},
            {u"billType"_s, billTypeCode(plan.billType)},
            {u"writeValue"_s, plan.writeValue.toShortString()},
            {u"newValue"_s, plan.newValue.toShortString()},
            {u"refNo"_s, refNo},
            {u"pendingRows"_s, rows},
            {u"pending"_s, pending.toShortString()},
            {u"moment"_s, isoDateTime(moment)},
            {u"staffCode"_s, staffCode},
            {u"bzDate"_s, bzDate},
            {u"outlet"_s, outlet},
            {u"trsNo"_s, trsNo},
            {u"billNo"_s, billNo},
            {u"serverComm"_s, serverComm.toShortString()},
            {u"downComm"_s, downComm}};
}

Posting Posting::fromJson(const QJsonObject& json) {
    Posting p;
    const auto mode = modeFromText(json.value(u"mode"_s).toString());
    const auto type = billTypeFromCode(json.value(u"billType"_s).toString());
    if (!mode || !type)
        throw Error(u"A journal entry holds no posting."_s);
    p.mode = *mode;
    p.plan.billType = *type;
    const QJsonObject b = json.value(u"boxes"_s).toObject();
    for (int i = 0; i < 12; ++i)
        *boxField(p.boxes, i) = b.value(QString::fromUtf16(BoxKeys[i])).toString();
    const auto money = [&](const QString& key) {
        return Currency::parse(json.value(key).toString());
    };
    p.plan.writeValue = money(u"writeValue"_s);
    p.plan.newValue = money(u"newValue"_s);
    p.refNo = json.value(u"refNo"_s).toString();
    for (const QJsonValue& id : json.value(u"pendingRows"_s).toArray())
        p.pendingRows.append(id.toString().toLongLong());
    p.pending = money(u"pending"_s);
    p.moment = QDateTime::fromString(json.value(u"moment"_s).toString(), u"yyyy-MM-dd HH:mm:ss"_s);
    p.staffCode = json.value(u"staffCode"_s).toString();
    p.bzDate = json.value(u"bzDate"_s).toString();
    p.outlet = json.value(u"outlet"_s).toString();
    p.trsNo = json.value(u"trsNo"_s).toString();
    p.billNo = json.value(u"billNo"_s).toString();
    p.serverComm = money(u"serverComm"_s);
    p.downComm = json.value(u"downComm"_s).toDouble();
    return p;
}

Posting makePosting(const SessionSettings& session, TransactionMode mode,
                    const TransactionBoxes& boxes, const SavePlan& plan,
                    const QList<qint64>& pendingRows, Currency pending) {
    Posting p;
    p.mode = mode;
    p.boxes = boxes;
    p.boxes.pending = pending.format();
    p.plan = plan;
    p.pendingRows = pendingRows;
    p.pending = pending;
    p.moment = session.now();
    // One reference for the settlement and the transaction line: both are made in one moment.
    p.refNo = MakeRefNo(p.moment, boxes.cardNo, boxes.introducer);
    p.staffCode = session.StaffCode;
    p.bzDate = session.BzDate;
    p.outlet = session.OutletCode;
    p.trsNo = session.TrsNo;
    p.billNo = session.BillNo;
    p.serverComm = session.ServerComm;
    p.downComm = session.DownComm;
    return p;
}

bool isPosted(const QSqlDatabase& db, const Posting& p) {
    // By the reference alone: with the card in the condition too, a planner without statistics
    // may walk every line of the card instead, and a Save would cost more as the card ages.
    auto q = db::exec(db,
                      u"SELECT Billtype,PreviousValue,NewValue,CardNo FROM Customize_Transaction "
                      "WHERE RefTrsNo=?"_s,
                      {p.refNo});
    const Currency previous = Currency::parse(p.boxes.balance);
    while (q.next()) {
        if (q.value(3).toString().trimmed().compare(p.boxes.cardNo.trimmed(),
                                                    Qt::CaseInsensitive) == 0 &&
            q.value(0).toString() == billTypeCode(p.plan.billType) &&
            db::readMoney(q.value(1)) == previous && db::readMoney(q.value(2)) == p.plan.newValue)
            return true;
    }
    return false;
}

void PostTransaction(const QSqlDatabase& db, const Posting& p, QStringList* done) {
    if (isPosted(db, p))
        return;
    const TransactionBoxes& b = p.boxes;
    const QVariant trsDate = bizDateValue(p.bzDate);

    // A void's negative row can make the sum negative; it is settled all the same.
    if (!p.pending.isZero()) {
        db::exec(db,
                 u"INSERT INTO Customize_Transaction "
                 "(TrsOutlet,RefTrsNo,CardNo,Name,TrsDate,TrsNo,Billtype,PValue) "
                 "VALUES (?,?,?,?,?,?,?,?)"_s,
                 {textValue(p.outlet), p.refNo, textValue(b.cardNo), textValue(b.name), trsDate,
                  textValue(p.trsNo), billTypeCode(BillType::Pending), db::bindMoney(p.pending)});
        step(done, u"PED line"_s);
        // Exactly the rows whose sum went onto the card: a credit another till adds meanwhile
        // stays pending for the card's next use.
        for (qint64 id : p.pendingRows)
            db::exec(db,
                     u"UPDATE Customize_Topup set DateUpdate=?,UpdateStatus=1 "
                     "where ID=? and UpdateStatus=0"_s,
                     {p.moment, id});
        step(done, u"pending top-ups settled"_s);
    }

    const bool valueIn = p.plan.billType == BillType::In || p.plan.billType == BillType::AdjustIn;
    db::exec(db,
             u"INSERT INTO Customize_Transaction "
             "(PreviousValue,NewValue,TrsOutlet,RefTrsNo,CardNo,Name,TrsDate,TrsNo,BillNo,"
             "Billtype,PendingValue,PValue,TopupValue,ExtraValue,Remark) "
             "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s,
             {db::bindMoney(Currency::parse(b.balance)), db::bindMoney(p.plan.newValue),
              textValue(p.outlet), p.refNo, textValue(b.cardNo), textValue(b.name), trsDate,
              textValue(p.trsNo), textValue(p.billNo), billTypeCode(p.plan.billType),
              db::bindMoney(p.pending),
              db::bindMoney(valueIn ? p.plan.writeValue : -p.plan.writeValue),
              valueIn ? db::bindMoney(Currency::parse(b.topUp)) : unset(),
              valueIn ? db::bindMoney(Currency::parse(b.extra)) : unset(), textValue(b.remark)});
    step(done, billTypeCode(p.plan.billType) + u" line"_s);

    if (p.mode == TransactionMode::TopUp) {
        // On the paid top-up only; the extra value earns no commission.
        const Currency topUp = Currency::parse(b.topUp);
        db::exec(db,
                 u"INSERT INTO Customize_StaffComm "
                 "(RefTrsNo,CardNo,Name,TrsDate,StaffCode,TopupValue,PValue) "
                 "VALUES (?,?,?,?,?,?,?)"_s,
                 {p.refNo, textValue(b.cardNo), textValue(b.name), trsDate, textValue(b.staffCode),
                  db::bindMoney(topUp), db::bindMoney(topUp.percent(p.serverComm.toDouble()))});
        step(done, u"staff commission line"_s);
    }
    if (p.plan.billType == BillType::In) {
        AddIntroducerCredit(db, p, Currency::parse(b.topUp));
        step(done, u"introducer credit"_s);
    }

    writeLog(db, p.staffCode, p.bzDate, p.moment, transactionLogText(p.mode, p.plan.billType, b));
    step(done, u"activity log"_s);
}

QString transactionLogText(TransactionMode mode, BillType billType, const TransactionBoxes& b) {
    const QString card = u" to CardNo : "_s + b.cardNo + u'/' + b.name;
    if (mode == TransactionMode::TopUp) {
        // The extra is counted twice in this text only; the posted lines are right. The log has
        // always read this way, so it stays.
        const Currency extra = Currency::parse(b.extra);
        return u"Writing Topup Value :"_s + (Currency::parse(b.topUp) + extra + extra).format() +
               card;
    }
    if (mode == TransactionMode::Withdraw)
        return u"Writing Withdraw Value :"_s + Currency::parse(b.withdraw).format() + card;
    if (billType == BillType::AdjustIn)
        return u"Writing Adjustment In Value :"_s + Currency::parse(b.adjustIn).format() + card;
    if (billType == BillType::AdjustOut)
        return u"Writing Adjustment Out Value :"_s + Currency::parse(b.adjustOut).format() + card;
    return {};
}

} // namespace pondar
