// The leading-number rule and the text forms of money on arbitrary text: nothing but a
// CurrencyError for amounts past the range, and every amount's short text reads back exactly.
#include "shell/text.h"

#include <pondar/currency.h>
#include <pondar/error.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>

using pondar::Currency;
using pondar::CurrencyError;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    const double number = pondar::leadingNumber(text);
    try {
        (void)Currency::fromDouble(number);
    } catch (const CurrencyError&) {
        if (std::isfinite(number) && std::fabs(number) < 9e14)
            std::abort();
    }
    try {
        const Currency c = Currency::parse(text);
        if (Currency::parse(c.toShortString()) != c)
            std::abort();
        const Currency shown = Currency::parse(c.format());
        const std::int64_t diff = (shown - c).units();
        if (diff > 50 || diff < -50)
            std::abort();
        if (std::isfinite(number)) {
            const double rate = std::fabs(number);
            try {
                (void)c.percent(rate);
            } catch (const CurrencyError&) {
            }
            try {
                (void)c.formatPercent(rate);
            } catch (const CurrencyError&) {
            }
        }
    } catch (const CurrencyError&) {
    }
    return 0;
}
