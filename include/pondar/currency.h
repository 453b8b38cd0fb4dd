#pragma once

#include <pondar/pondar_export.h>

#include <QString>

#include <cstdint>

namespace pondar {

// Money: a signed count of ten-thousandths (four decimals) in 64 bits, the range of the Windows
// currency type, -922337203685477.5808 to 922337203685477.5807.
//
// - Nothing converts to or from double implicitly. fromDouble() and percent() take the double's
//   exact binary value and round half to even at the fourth decimal; parse() is exact, rounding
//   half to even past the fourth decimal.
// - parse() takes the number at the start of a text (blanks, tabs and line feeds are skipped,
//   as the till's Val did), so "2.5%" is 2.5 and "", "abc" and "-" are 0.
// - format() gives "#0.00": at least one integer digit, two decimals rounded half away from zero,
//   "-" for negatives, no separators. toShortString() gives the shortest exact text (150.5, 200,
//   0, -0.0001). The decimal separator is always ".".
// - Every operation that would leave the range, and a double that is not finite, throws
//   CurrencyError; nothing wraps.
class PONDAR_EXPORT Currency final {
public:
    static constexpr std::int64_t Scale = 10000;

    constexpr Currency() = default;

    static constexpr Currency fromUnits(std::int64_t tenThousandths) {
        Currency c;
        c.m_units = tenThousandths;
        return c;
    }
    static Currency fromDouble(double value);
    static Currency parse(const QString& text);

    constexpr std::int64_t units() const { return m_units; }
    double toDouble() const;

    QString format() const;
    // format()'s text written back to front, ending just before `end`, in a buffer of at least
    // FormatSize places the caller owns; returns where the text starts. For a report that
    // formats an amount per printed line without a string per amount.
    static constexpr int FormatSize = 24;
    char16_t* formatBackwards(char16_t* end) const;
    QString toShortString() const;

    // This value times rate / 100, rounded half to even: extra values, commissions, credits.
    Currency percent(double rate) const;
    // The same product shown as "#0.00", rounded once, straight to two decimals: 2.33 at 1.5
    // is 0.03 (0.03495), where percent(1.5).format() would round twice and give 0.04.
    QString formatPercent(double rate) const;

    Currency operator+(Currency other) const;
    Currency operator-(Currency other) const;
    Currency operator-() const;
    Currency& operator+=(Currency other) { return *this = *this + other; }
    Currency& operator-=(Currency other) { return *this = *this - other; }

    constexpr bool isZero() const { return m_units == 0; }
    friend constexpr bool operator==(Currency a, Currency b) { return a.m_units == b.m_units; }
    friend constexpr bool operator!=(Currency a, Currency b) { return a.m_units != b.m_units; }
    friend constexpr bool operator<(Currency a, Currency b) { return a.m_units < b.m_units; }
    friend constexpr bool operator>(Currency a, Currency b) { return a.m_units > b.m_units; }
    friend constexpr bool operator<=(Currency a, Currency b) { return a.m_units <= b.m_units; }
    friend constexpr bool operator>=(Currency a, Currency b) { return a.m_units >= b.m_units; }

private:
    std::int64_t m_units = 0;
};

} // namespace pondar
