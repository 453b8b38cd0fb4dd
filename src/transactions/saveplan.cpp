#include "transactions/saveplan.h"

#include <pondar/error.h>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

SaveDecision refuse(const QString& text, const QString& title, int focus = txt::None) {
    SaveDecision d;
    d.refusal = SaveRefusal{text, title, focus};
    return d;
}

SaveDecision negative(int focus = txt::None) {
    return refuse(u"Negative Value Not Accepted !!!"_s, u"message"_s, focus);
}
SaveDecision nothingToSave(int focus = txt::None) {
    return refuse(u"Nothing to save !!!"_s, u"message"_s, focus);
}
SaveDecision insufficient(int focus = txt::None) {
    return refuse(u"Insufficient Value to withdraw !!!"_s, u"Message"_s, focus);
}
SaveDecision outOfRange(int focus) {
    return refuse(u"Value out of range !!!"_s, u"Message"_s, focus);
}

SaveDecision accept(BillType billType, Currency writeValue, Currency newValue) {
    SaveDecision d;
    d.plan = SavePlan{billType, writeValue, newValue};
    return d;
}

// Thrown inside a planner when a box holds an amount beyond the range; names the box.
struct BoxOutOfRange {
    int box;
};

Currency amount(const QString& text, int box) {
    try {
        return Currency::parse(text);
    } catch (const CurrencyError&) {
        throw BoxOutOfRange{box};
    }
}

// Runs a planner's rules; a box out of range points the focus at it, and a sum out of range
// (a balance near the limit) at the amount the operator typed.
template <typename Rules> SaveDecision plan(int amountBox, Rules&& rules) {
    try {
        return rules();
    } catch (const BoxOutOfRange& e) {
        const bool typed = e.box != txt::Balance && e.box != txt::Pending;
        return outOfRange(typed ? e.box : txt::None);
    } catch (const CurrencyError&) {
        return outOfRange(amountBox);
    }
}

} // namespace

SaveDecision planTopUp(const TransactionBoxes& b) {
    return plan(txt::TopUp, [&] {
        const Currency topUp = amount(b.topUp, txt::TopUp);
        if (topUp < Currency())
            return negative(txt::TopUp);
        // An overtyped negative extra would turn the top-up into a withdrawal.
        const Currency extra = amount(b.extra, txt::Extra);
        if (extra < Currency())
            return negative(txt::Extra);
        const Currency writeValue = extra + topUp;
        const Currency newValue =
            amount(b.balance, txt::Balance) + amount(b.pending, txt::Pending) + writeValue;
        if (writeValue.isZero())
            return nothingToSave();
        return accept(BillType::In, writeValue, newValue);
    });
}

SaveDecision planWithdraw(const TransactionBoxes& b) {
    return plan(txt::Withdraw, [&] {
        const Currency withdraw = amount(b.withdraw, txt::Withdraw);
        if (withdraw < Currency())
            return negative(txt::Withdraw);
        if (withdraw.isZero())
            return nothingToSave(txt::Withdraw);
        const Currency available =
            amount(b.balance, txt::Balance) + amount(b.pending, txt::Pending);
        if (withdraw > available)
            return insufficient(txt::Withdraw);
        return accept(BillType::Out, withdraw, available - withdraw);
    });
}

SaveDecision planAdjustment(const TransactionBoxes& b) {
    return plan(txt::AdjustIn, [&] {
        const Currency in = amount(b.adjustIn, txt::AdjustIn);
        const Currency out = amount(b.adjustOut, txt::AdjustOut);
        if (in < Currency() || out < Currency())
            return negative();
        if ((in + out).isZero())
            return nothingToSave();
        const Currency balance = amount(b.balance, txt::Balance);
        const Currency pending = amount(b.pending, txt::Pending);
        // With both boxes filled only the adjustment in counts; the out value is ignored.
        if (in > Currency())
            return accept(BillType::AdjustIn, in, balance + in + pending);
        if (out > balance + pending)
            return insufficient();
        return accept(BillType::AdjustOut, out, balance + pending - out);
    });
}

SaveDecision withinCeiling(SaveDecision decision, Currency maxBalance, int focus) {
    if (!decision.plan || !addsValue(decision.plan->billType))
        return decision;
    // A voided introducer credit can leave the pending sum negative; a card never holds less
    // than 0.
    if (decision.plan->newValue < Currency())
        return negative(focus);
    if (maxBalance <= Currency() || decision.plan->newValue <= maxBalance)
        return decision;
    return refuse(u"Balance Limit Exceeded !!!"_s, u"Message"_s, focus);
}

QString extraValueText(const QString& topUpText, double memberComm) {
    if (memberComm == 0.0)
        return u"0.00"_s;
    try {
        return Currency::parse(topUpText).formatPercent(memberComm);
    } catch (const CurrencyError&) {
        return u"0.00"_s;
    }
}

QString reformatAmount(const QString& text) {
    try {
        return Currency::parse(text).format();
    } catch (const CurrencyError&) {
        return text;
    }
}

} // namespace pondar
