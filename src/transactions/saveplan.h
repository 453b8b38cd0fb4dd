#pragma once

#include "shell/modes.h"

#include <pondar/currency.h>

#include <QString>

#include <optional>

namespace pondar {

// Indexes of the transaction screen's TXT boxes, as in their object names "TXT(n)".
namespace txt {
constexpr int CardNo = 0;
constexpr int Name = 1;
constexpr int Balance = 2;
constexpr int TopUp = 4;
constexpr int AdjustIn = 6;
constexpr int AdjustOut = 7;
constexpr int Withdraw = 8;
constexpr int Remark = 9;
constexpr int Pending = 10;
constexpr int Extra = 11;
constexpr int None = -1; // a refusal that leaves the focus where it is
} // namespace txt

// The texts of the transaction screen's boxes as the operator left them. Amounts stay text here
// and are read with the leading-number rule only where they are used, so that a box the
// current Save does not look at can never stop it.
struct TransactionBoxes {
    QString cardNo;     // TXT(0)
    QString name;       // TXT(1)
    QString balance;    // TXT(2), the value read from the card
    QString topUp;      // TXT(4)
    QString adjustIn;   // TXT(6)
    QString adjustOut;  // TXT(7)
    QString withdraw;   // TXT(8)
    QString remark;     // TXT(9)
    QString pending;    // TXT(10), the pending top-ups read at Connect
    QString extra;      // TXT(11)
    QString staffCode;  // STCODE
    QString introducer; // DownLineCode
};

// What one Save writes: the bill type, the amount moved (positive) and the card's new balance,
// pending top-ups included.
struct SavePlan {
    BillType billType = BillType::In;
    Currency writeValue;
    Currency newValue;
};

// Why a Save stops before the card is touched: a critical message box with this text and title,
// then the focus back to the box with this TXT index (txt::None: left where it is).
struct SaveRefusal {
    QString text;
    QString title;
    int focus = txt::None;
};

// Either a plan or a refusal, never both.
struct SaveDecision {
    std::optional<SavePlan> plan;
    SaveRefusal refusal;
};

// One planner per Save button. Each is pure: it reads the boxes and nothing else. An amount
// beyond the money range is refused with "Value out of range !!!" (title "Message") instead of
// being written to a card.
SaveDecision planTopUp(const TransactionBoxes& boxes);      // CBUT(1)
SaveDecision planWithdraw(const TransactionBoxes& boxes);   // CBUT(3)
SaveDecision planAdjustment(const TransactionBoxes& boxes); // CBUT(4)

// A plan that would put a card past the site's ceiling (maxBalance; 0: none) by a top-up or an
// adjustment in becomes the refusal "Balance Limit Exceeded !!!" (title "Message") pointing at
// `focus`; one that would leave it below 0 (a negative pending sum) is refused as negative. A
// withdrawal is checked by its own planner and always passes.
SaveDecision withinCeiling(SaveDecision decision, Currency maxBalance, int focus);

// The extra value shown while a top-up is typed: top-up x MemberComm / 100 as "#0.00", and
// "0.00" when the rate is 0 or the top-up is out of range (Save refuses that one).
QString extraValueText(const QString& topUpText, double memberComm);

// An amount box's text when it loses the focus: "#0.00", or the text untouched when it is
// beyond the money range, so that Save can point at it.
QString reformatAmount(const QString& text);

} // namespace pondar
