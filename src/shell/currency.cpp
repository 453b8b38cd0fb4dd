#include <pondar/currency.h>

#include <pondar/error.h>

#include "shell/text.h"

#include <cmath>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

constexpr std::uint64_t MaxPositive = std::uint64_t(std::numeric_limits<std::int64_t>::max());
constexpr std::uint64_t MaxNegative = MaxPositive + 1;

[[noreturn]] void overflow(const QString& what) {
    throw CurrencyError(u"Amount out of range: "_s + what);
}

std::uint64_t magnitude(std::int64_t units) {
    return units < 0 ? std::uint64_t(0) - std::uint64_t(units) : std::uint64_t(units);
}

Currency fromMagnitude(bool negative, std::uint64_t mag, const QString& what) {
    if (mag > (negative ? MaxNegative : MaxPositive))
        overflow(what);
    if (negative)
        return Currency::fromUnits(mag == MaxNegative ? std::numeric_limits<std::int64_t>::min()
                                                      : -std::int64_t(mag));
    return Currency::fromUnits(std::int64_t(mag));
}

bool isSkipped(QChar c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

// Half to even on a long double that is known to be finite; throws when out of range. The
// message is only built then: reports read thousands of amounts through here.
template <typename What> Currency roundToUnits(long double scaled, What what) {
    const long double rounded = std::nearbyint(scaled);
    if (!(rounded >= -9223372036854775808.0L && rounded < 9223372036854775808.0L))
        overflow(what());
    return Currency::fromUnits(static_cast<std::int64_t>(rounded));
}

struct LeadingNumber {
    bool negative = false;
    QString digits;   // every digit, leading zeros included
    int pointPos = 0; // digits before the decimal point
    std::int64_t exponent = 0;
};

// Picks out sign, digits, decimal point and exponent of the number a text starts with.
LeadingNumber scanLeadingNumber(const QString& text) {
    LeadingNumber num;
    int i = 0;
    const int n = int(text.size());
    auto skip = [&] {
        while (i < n && isSkipped(text.at(i)))
            ++i;
    };
    auto isAsciiDigit = [](QChar c) { return c.unicode() >= u'0' && c.unicode() <= u'9'; };
    skip();
    if (i < n && (text.at(i) == u'-' || text.at(i) == u'+')) {
        num.negative = text.at(i) == u'-';
        ++i;
    }
    int pointPos = -1;
    for (skip(); i < n; ++i, skip()) {
        const QChar c = text.at(i);
        if (isAsciiDigit(c))
            num.digits.append(c);
        else if (c == u'.' && pointPos < 0)
            pointPos = int(num.digits.size());
        else
            break;
    }
    num.pointPos = pointPos < 0 ? int(num.digits.size()) : pointPos;
    if (num.digits.isEmpty() || i >= n || !QStringView(u"eEdD").contains(text.at(i)))
        return num;

    int j = i + 1;
    bool expNegative = false;
    while (j < n && isSkipped(text.at(j)))
        ++j;
    if (j < n && (text.at(j) == u'-' || text.at(j) == u'+')) {
        expNegative = text.at(j) == u'-';
        ++j;
    }
    std::int64_t exponent = 0;
    for (; j < n; ++j) {
        const QChar c = text.at(j);
        if (isSkipped(c))
            continue;
        if (!isAsciiDigit(c))
            break;
        if (exponent < 100000) // far past any representable amount; keeps the count bounded
            exponent = exponent * 10 + (c.unicode() - u'0');
    }
    num.exponent = expNegative ? -exponent : exponent;
    return num;
}

} // namespace

double leadingNumber(const QString& text) {
    const LeadingNumber num = scanLeadingNumber(text);
    if (num.digits.isEmpty())
        return 0.0;
    const QString literal = (num.negative ? u"-"_s : QString()) + num.digits.left(num.pointPos) +
                            u'.' + num.digits.mid(num.pointPos) + u'e' +
                            QString::number(num.exponent);
    return literal.toDouble();
}

Currency Currency::parse(const QString& text) {
    const LeadingNumber num = scanLeadingNumber(text);
    const QString& digits = num.digits;
    const bool negative = num.negative;
    if (digits.isEmpty())
        return {};
    const std::int64_t exponent = num.exponent;
    const int pointPos = num.pointPos;

    // digits[0, keep) are whole ten-thousandths; the rest decide the rounding.
    const std::int64_t keep = std::int64_t(pointPos) + exponent + 4;
    const std::uint64_t limit = negative ? MaxNegative : MaxPositive;
    std::uint64_t mag = 0;
    const std::int64_t len = digits.size();
    for (std::int64_t k = 0; k < keep; ++k) {
        const unsigned d = k < len ? unsigned(digits.at(int(k)).unicode() - u'0') : 0U;
        if (mag > (limit - d) / 10)
            overflow(text);
        mag = mag * 10 + d;
        if (k >= len && mag == 0)
            break; // only zeros from here on
    }
    if (keep >= 0 && keep < len) {
        const unsigned first = unsigned(digits.at(int(keep)).unicode() - u'0');
        bool restNonZero = false;
        for (std::int64_t k = keep + 1; k < len && !restNonZero; ++k)
            restNonZero = digits.at(int(k)) != u'0';
        if (first > 5 || (first == 5 && (restNonZero || (mag & 1U)))) {
            if (mag == limit)
                overflow(text);
            ++mag;
        }
    }
    return fromMagnitude(negative, mag, text);
}

Currency Currency::fromDouble(double value) {
    if (!std::isfinite(value))
        overflow(QString::number(value));
    // Scaled in double, as the Windows currency conversion does: 0.00125 becomes 12.5 and then 12.
    return roundToUnits(static_cast<long double>(value * double(Scale)),
                        [value] { return QString::number(value, 'g', 17); });
}

double Currency::toDouble() const {
    return double(m_units) / double(Scale);
}

QString Currency::format() const {
    // Written back to front into one buffer: reports format an amount per printed line.
    const std::uint64_t mag = magnitude(m_units);
    std::uint64_t cents = mag / 100 + (mag % 100 >= 50 ? 1 : 0);
    const bool negative = m_units < 0 && cents != 0;
    char16_t buffer[24];
    char16_t* end = buffer + sizeof buffer / sizeof buffer[0];
    char16_t* p = end;
    *--p = char16_t(u'0' + cents % 10);
    cents /= 10;
    *--p = char16_t(u'0' + cents % 10);
    cents /= 10;
    *--p = u'.';
    do {
        *--p = char16_t(u'0' + cents % 10);
        cents /= 10;
    } while (cents != 0);
    if (negative)
        *--p = u'-';
    return QString(reinterpret_cast<const QChar*>(p), end - p);
}

QString Currency::toShortString() const {
    const std::uint64_t mag = magnitude(m_units);
    QString out = QString::number(mag / Scale);
    if (const std::uint64_t frac = mag % Scale) {
        QString decimals = QString::number(frac).rightJustified(4, u'0');
        while (decimals.endsWith(u'0'))
            decimals.chop(1);
        out += u'.' + decimals;
    }
    return m_units < 0 ? u'-' + out : out;
}

Currency Currency::percent(double rate) const {
    if (!std::isfinite(rate))
        overflow(QString::number(rate));
    return roundToUnits(static_cast<long double>(m_units) * rate / 100.0L, [this, rate] {
        return QString(toShortString() + u" x "_s + QString::number(rate) + u" %"_s);
    });
}

Currency Currency::operator+(Currency other) const {
    std::int64_t r = 0;
    if (__builtin_add_overflow(m_units, other.m_units, &r))
        overflow(toShortString() + u" + "_s + other.toShortString());
    return fromUnits(r);
}

Currency Currency::operator-(Currency other) const {
    std::int64_t r = 0;
    if (__builtin_sub_overflow(m_units, other.m_units, &r))
        overflow(toShortString() + u" - "_s + other.toShortString());
    return fromUnits(r);
}

Currency Currency::operator-() const {
    return Currency() - *this;
}

} // namespace pondar
