#include "transactions/posting.h"

#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"
#include "transactions/handoff.h"

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

} // namespace

void PostTransaction(const SessionSettings& session, TransactionMode mode, TransactionForm& form,
                     const SavePlan& plan, QStringList* done) {
    const TransactionBoxes& b = form.boxes;
    const QVariant trsDate = bizDateValue(session.BzDate);
    const Currency pending = Currency::parse(b.pending);

    if (pending > Currency()) {
        form.currentRef = MakeRefNo(session.now(), b.cardNo, b.introducer);
        db::exec(session.Conn,
                 u"INSERT INTO Customize_Transaction "
                 "(TrsOutlet,RefTrsNo,CardNo,Name,TrsDate,TrsNo,Billtype,PValue) "
                 "VALUES (?,?,?,?,?,?,?,?)"_s,
                 {textValue(session.OutletCode), form.currentRef, textValue(b.cardNo),
                  textValue(b.name), trsDate, textValue(session.TrsNo),
                  billTypeCode(BillType::Pending), db::bindMoney(pending)});
        step(done, u"PED line"_s);
        // Every pending row of the card, also rows added after the screen read the pending
        // total. Rows settled earlier keep their settlement date, and the statement touches only
        // what is pending, so a card's long history does not slow its Save.
        db::exec(session.Conn,
                 u"UPDATE Customize_Topup set DateUpdate=?,UpdateStatus=1 "
                 "where CardNo=? and UpdateStatus=0"_s,
                 {session.now(), textValue(b.cardNo)});
        step(done, u"pending top-ups settled"_s);
    }

    const bool valueIn = plan.billType == BillType::In || plan.billType == BillType::AdjustIn;
    form.currentRef = MakeRefNo(session.now(), b.cardNo, b.introducer);
    db::exec(session.Conn,
             u"INSERT INTO Customize_Transaction "
             "(PreviousValue,NewValue,TrsOutlet,RefTrsNo,CardNo,Name,TrsDate,TrsNo,BillNo,"
             "Billtype,PendingValue,PValue,TopupValue,ExtraValue,Remark) "
             "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s,
             {db::bindMoney(Currency::parse(b.balance)), db::bindMoney(plan.newValue),
              textValue(session.OutletCode), form.currentRef, textValue(b.cardNo),
              textValue(b.name), trsDate, textValue(session.TrsNo), textValue(session.BillNo),
              billTypeCode(plan.billType), db::bindMoney(pending),
              db::bindMoney(valueIn ? plan.writeValue : -plan.writeValue),
              valueIn ? db::bindMoney(Currency::parse(b.topUp)) : unset(),
              valueIn ? db::bindMoney(Currency::parse(b.extra)) : unset(), textValue(b.remark)});
    step(done, billTypeCode(plan.billType) + u" line"_s);

    if (mode == TransactionMode::TopUp) {
        // On the paid top-up only; the extra value earns no commission.
        const Currency topUp = Currency::parse(b.topUp);
        db::exec(session.Conn,
                 u"INSERT INTO Customize_StaffComm "
                 "(RefTrsNo,CardNo,Name,TrsDate,StaffCode,TopupValue,PValue) "
                 "VALUES (?,?,?,?,?,?,?)"_s,
                 {form.currentRef, textValue(b.cardNo), textValue(b.name), trsDate,
                  textValue(b.staffCode), db::bindMoney(topUp),
                  db::bindMoney(topUp.percent(session.ServerComm.toDouble()))});
        step(done, u"staff commission line"_s);
    }

    writeLog(session, transactionLogText(mode, plan.billType, b));
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
