#include "shell/modes.h"

#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

const std::array<std::pair<TransactionMode, QString>, 4> Modes = {{
    {TransactionMode::TopUp, u"TOPUP"_s},
    {TransactionMode::Withdraw, u"WITHDRAW"_s},
    {TransactionMode::Adjustment, u"ADJUSTMENT"_s},
    {TransactionMode::Enquiry, u"ENQUIRY"_s},
}};

const std::array<std::pair<BillType, QString>, 5> BillTypes = {{
    {BillType::In, u"IN"_s},
    {BillType::Out, u"OUT"_s},
    {BillType::AdjustIn, u"AIN"_s},
    {BillType::AdjustOut, u"AOT"_s},
    {BillType::Pending, u"PED"_s},
}};

template <typename Table, typename Key> QString textOf(const Table& table, Key key) {
    for (const auto& [k, text] : table) {
        if (k == key)
            return text;
    }
    return {};
}

template <typename Key, typename Table>
std::optional<Key> keyOf(const Table& table, const QString& text) {
    for (const auto& [k, t] : table) {
        if (t == text)
            return k;
    }
    return std::nullopt;
}

} // namespace

QString modeText(TransactionMode mode) {
    return textOf(Modes, mode);
}

std::optional<TransactionMode> modeFromText(const QString& text) {
    return keyOf<TransactionMode>(Modes, text);
}

QString billTypeCode(BillType type) {
    return textOf(BillTypes, type);
}

std::optional<BillType> billTypeFromCode(const QString& code) {
    return keyOf<BillType>(BillTypes, code);
}

bool addsValue(BillType type) {
    return type != BillType::Out && type != BillType::AdjustOut;
}

std::optional<TransactionMode> modeOfLine(const QString& billTypeCode) {
    const std::optional<BillType> type = billTypeFromCode(billTypeCode);
    if (!type)
        return std::nullopt;
    switch (*type) {
    case BillType::In:
        return TransactionMode::TopUp;
    case BillType::Out:
        return TransactionMode::Withdraw;
    case BillType::AdjustIn:
    case BillType::AdjustOut:
        return TransactionMode::Adjustment;
    case BillType::Pending:
        break;
    }
    return std::nullopt;
}

} // namespace pondar
