#include "members/cardissue.h"

#include "card/membercard.h"
#include "shell/activitylog.h"
#include "shell/session.h"
#include "transactions/supervisor.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar::members {

CardIssue issueCard(SessionSettings& session, card::CardPrompts& prompts, const QString& code,
                    const QString& name) {
    if (!prompts.ask(u"Store Data to Card "_s))
        return CardIssue::Declined;
    card::MemberCard card(session, prompts);
    const card::ReaderClosing closing(session, card);
    if (!card.openSelectLogin(card::MemberSector))
        return CardIssue::DeviceFailed;
    // A lost or stolen card stays out of use; only the supervisor reuses one.
    if (cardStatus(session.Conn, session.CardSerial) == CardStatus::Blocked) {
        prompts.error(CardBlockedText, u"Message"_s);
        return CardIssue::Declined;
    }
    if (card.checkCard(card::MemberSector)) {
        const QString question = u"This Card contain Data !!! Continue overwrite ? "_s;
        // Another member's value goes with the card only on the supervisor's word.
        const auto holder = valueHolder(session, card.readField(card::MemberSector, 1), code);
        if (!holder) {
            if (!prompts.askDestructive(question))
                return CardIssue::Declined;
        } else {
            if (!prompts.askWithDetail(question, holder->detail()) || !prompts.supervisorApproves())
                return CardIssue::Declined;
            writeLog(session, u"Card of CardNo : "_s + holder->code + u'/' + holder->name +
                                  u" Balance : "_s + holder->balance.format() +
                                  u" overwritten for CardNo : "_s + code);
        }
    }

    // The writes' results are deliberately not looked at: the card is reported written once the
    // member sector has been opened.
    card.writeSerial();
    card.writeCode(code);
    card.writeName(name);
    // A card whose value sector refuses the key keeps its member fields and is still reported
    // written; the value question decides whether 0 goes onto it.
    if (card.openSelectLogin(card::ValueSector))
        card.confirmAndWriteValue(BillType::In, Currency(), Currency());
    registerCard(session, code, session.CardSerial);
    return CardIssue::Written;
}

} // namespace pondar::members
