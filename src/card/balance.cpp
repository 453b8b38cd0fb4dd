#include "card/balance.h"

#include "card/membercard.h"
#include "shell/database.h"
#include "shell/session.h"

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
    session.CurrentCardNo = data.code;
    BalanceTexts texts;
    texts.cardNo = data.code;
    texts.name = data.name;
    if (result == ReadResult::Ok)
        texts.balance = data.balance.format();
    texts.pending = pendingBalance(session.Conn, data.code).format();
    return texts;
}

Currency pendingBalance(const QSqlDatabase& db, const QString& cardNo) {
    QSqlQuery q = db::exec(db,
                           u"Select sum(FValue) as PBal from Customize_Topup where CardNo=? "
                           "and UpdateStatus=0 group by CardNo"_s,
                           {cardNo});
    return q.next() ? db::readMoney(q.value(0)) : Currency();
}

} // namespace pondar::card
