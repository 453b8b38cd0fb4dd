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

__extension__ typedef unsigned __int128 UInt128;

// A value known exactly: (-1)^negative x magnitude x 2^exp2.
struct Exact {
    bool negative = false;
    UInt128 magnitude = 0;
    int exp2 = 0;
};

struct Binary {
    bool negative = false;
    std::uint64_t mantissa = 0; // below 2^53
    int exp2 = 0;
};

// The exact value of a finite double as mantissa x 2^exp2.
Binary binary(double value) {
    Binary b;
    b.negative = std::signbit(value);
    int exp = 0;
    const double m = std::frexp(std::fabs(value), &exp);
    b.mantissa = std::uint64_t(std::ldexp(m, 53));
    b.exp2 = exp - 53;
    return b;
}

// units x rate, exactly.
Exact product(std::int64_t units, double rate) {
    const Binary r = binary(rate);
    return Exact{(units < 0) != r.negative, UInt128(magnitude(units)) * r.mantissa, r.exp2};
}

enum class Rounding { HalfEven, HalfAwayFromZero };

// |x| / divisor rounded to an integer, with no intermediate rounding; throws when it cannot be
// held.
UInt128 roundedQuotient(const Exact& x, std::uint64_t divisor, Rounding mode, const QString& what) {
    if (x.magnitude == 0)
        return 0;
    UInt128 whole = 0; // the integer part of |x|
    int halfCmp = -1;  // the fraction of |x| against one half: -1 below, 0 equal, 1 above
    bool fractionZero = true;
    if (x.exp2 >= 0) {
        if (x.exp2 >= 127 || x.magnitude > (~UInt128(0) >> x.exp2))
            overflow(what);
        whole = x.magnitude << x.exp2;
    } else {
        const int s = -x.exp2;
        const UInt128 rest = s >= 128 ? x.magnitude : x.magnitude & ((UInt128(1) << s) - 1);
        whole = s >= 128 ? 0 : x.magnitude >> s;
        fractionZero = rest == 0;
        if (s - 1 >= 128)
            halfCmp = -1;
        else {
            const UInt128 half = UInt128(1) << (s - 1);
            halfCmp = rest < half ? -1 : rest == half ? 0 : 1;
        }
    }
    UInt128 q = whole / divisor;
    const UInt128 twiceR = 2 * (whole % divisor);
    // Where the remainder (with the fraction) lies against half the divisor.
    int cmp = 0;
    if (twiceR > divisor)
        cmp = 1;
    else if (twiceR == divisor)
        cmp = fractionZero ? 0 : 1;
    else if (twiceR + 1 == divisor)
        cmp = halfCmp;
    else
        cmp = -1;
    if (cmp > 0 || (cmp == 0 && (mode == Rounding::HalfAwayFromZero || (q & 1U))))
        ++q;
    return q;
}

Currency fromExact(const Exact& x, std::uint64_t divisor, Rounding mode, const QString& what) {
    const UInt128 mag = roundedQuotient(x, divisor, mode, what);
    if (mag > UInt128(MaxNegative))
        overflow(what);
    return fromMagnitude(x.negative, std::uint64_t(mag), what);
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
    const Binary v = binary(value);
    const Exact scaled{v.negative, UInt128(v.mantissa) * UInt128(Scale), v.exp2};
    // The message is built only for a value out of range: reports read thousands of amounts
    // through here.
    try {
        return fromExact(scaled, 1, Rounding::HalfEven, QString());
    } catch (const CurrencyError&) {
        overflow(QString::number(value, 'g', 17));
    }
}

double Currency::toDouble() const {
    return double(m_units) / double(Scale);
}

QString Currency::format() const {
    char16_t buffer[FormatSize];
    char16_t* const end = buffer + FormatSize;
    const char16_t* const start = formatBackwards(end);
    return QString(reinterpret_cast<const QChar*>(start), end - start);
}

char16_t* Currency::formatBackwards(char16_t* end) const {
    const std::uint64_t mag = magnitude(m_units);
    std::uint64_t cents = mag / 100 + (mag % 100 >= 50 ? 1 : 0);
    const bool negative = m_units < 0 && cents != 0;
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
    return p;
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
    const QString what = toShortString() + u" x "_s + QString::number(rate) + u" %"_s;
    if (!std::isfinite(rate))
        overflow(what);
    return fromExact(product(m_units, rate), 100, Rounding::HalfEven, what);
}

QString Currency::formatPercent(double rate) const {
    const QString what = toShortString() + u" x "_s + QString::number(rate) + u" %"_s;
    if (!std::isfinite(rate))
        overflow(what);
    // units x rate / 100 is in ten-thousandths; in cents that is units x rate / 10000.
    const Exact p = product(m_units, rate);
    const UInt128 cents = roundedQuotient(p, Scale, Rounding::HalfAwayFromZero, what);
    if (cents > UInt128(MaxNegative) / 100 + 1)
        overflow(what);
    const auto c = std::uint64_t(cents);
    const QString out =
        QString::number(c / 100) + u'.' + QString::number(c % 100).rightJustified(2, u'0');
    return p.negative && c != 0 ? u'-' + out : out;
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
