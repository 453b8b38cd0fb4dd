#include "card/balance.h"

#include "card/membercard.h"
#include "shell/database.h"
#include "shell/session.h"
#include "transactions/save.h"
#include "transactions/supervisor.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

BalanceTexts pollBalance(SessionSettings& session) {
    SilentPrompts silent;
    MemberCard card(session, silent);
    CardData data;
    const ReadResult result = card.read(data);
    if (result == ReadResult::DeviceFailed || result == ReadResult::NotOwnSerial ||
        result == ReadResult::BadRecord)
        return {};
    BalanceTexts texts;
    texts.cardNo = data.code;
    if (cardStatus(session.Conn, session.CardSerial) == CardStatus::Blocked) {
        texts.name = CardBlockedText;
        return texts;
    }
    texts.name = data.name;
    const LedgerBalance ledger = ledgerBalanceOf(session, data.code);
    // A customer never sees value the ledger does not hold.
    if (result == ReadResult::Ok)
        texts.balance = (session.LedgerCheck ? ledger.balance : data.balance).format();
    texts.lastRef = ledger.lastRef;
    const std::optional<TransactionMode> mode = modeOfLine(ledger.lastType);
    const QString word = !mode                                ? ledger.lastType
                         : *mode == TransactionMode::TopUp    ? u"Top Up"_s
                         : *mode == TransactionMode::Withdraw ? u"Withdraw"_s
                                                              : u"Adjustment"_s;
    texts.lastLine = word + u' ' + ledger.lastValue.format();
    texts.pending = pendingBalance(session.Conn, data.code).format();
    return texts;
}

Currency pendingBalance(const QSqlDatabase& db, const QString& cardNo) {
    auto q = db::exec(db,
                      u"Select sum(FValue) as PBal from Customize_Topup where CardNo=? "
                      "and UpdateStatus=0 group by CardNo"_s,
                      {cardNo});
    return q.next() ? db::readMoney(q.value(0)) : Currency();
}

} // namespace pondar::card
