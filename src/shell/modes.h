#pragma once

#include <QString>

#include <optional>

namespace pondar {

// What the transaction screen was opened for. The texts ("TOPUP", ...) exist only where a mode
// crosses a boundary: StartApp's argument and the lines the component prints.
enum class TransactionMode { TopUp, Withdraw, Adjustment, Enquiry };

// The kinds of line in Customize_Transaction; their codes ("IN", ...) are what the column holds.
enum class BillType {
    In,        // a top-up
    Out,       // a withdrawal
    AdjustIn,  // value a supervisor added
    AdjustOut, // value a supervisor took off
    Pending,   // pending top-ups settled onto the card
};

QString modeText(TransactionMode mode);
// The start mode named exactly (case-sensitive); nothing for any other text.
std::optional<TransactionMode> modeFromText(const QString& text);

QString billTypeCode(BillType type);
std::optional<BillType> billTypeFromCode(const QString& code);

// Whether the line adds value to the card; OUT and AOT take it off.
bool addsValue(BillType type);

// The screen mode under which a line of this bill type was posted, for reprinting its slip.
std::optional<TransactionMode> modeOfLine(const QString& billTypeCode);

} // namespace pondar
