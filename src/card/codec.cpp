#include "card/codec.h"

#include <QRandomGenerator>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

namespace {

// Keys are added in this cycle; index 0 is the first plain byte.
constexpr int cycleLength = 4;

} // namespace

QByteArray encrypt(const QByteArray& plain) {
    const int k1 = randomUpTo(9) + 32;
    const int k2 = randomUpTo(9) + 32;
    const int k3 = randomUpTo(9) + 32;
    const int k4 = randomUpTo(9) + 32;
    const std::array<int, cycleLength> shift = {k1, k3, k2, k4};

    QByteArray out;
    out.reserve(plain.size() + 4);
    out.append(char(k1)).append(char(k3)).append(char(k2));
    for (qsizetype i = 0; i < plain.size(); ++i) {
        const int code = static_cast<unsigned char>(plain[i]) + shift[i % cycleLength];
        if (code > 255)
            return QByteArray(EncryptError);
        out.append(char(code));
    }
    out.append(char(k4));
    return out;
}

QByteArray decrypt(const QByteArray& scrambled) {
    if (scrambled.size() < 4)
        return QByteArray(DecryptError);
    const auto code = [&](qsizetype i) { return int(static_cast<unsigned char>(scrambled[i])); };
    const std::array<int, cycleLength> shift = {code(0), code(1), code(2),
                                                code(scrambled.size() - 1)};
    QByteArray out;
    out.reserve(scrambled.size() - 4);
    for (qsizetype i = 3; i < scrambled.size() - 1; ++i) {
        const int plain = code(i) - shift[(i - 3) % cycleLength];
        if (plain < 0)
            return QByteArray(DecryptError);
        out.append(char(plain));
    }
    return out;
}

int randomUpTo(int n) {
    // The global generator is seeded once from the system; reseeding from the clock before each
    // draw, as the till did, would hand the four keys of one write the same value.
    const double r = QRandomGenerator::global()->generateDouble();
    return int(n * r + 1);
}

int hexDigitValue(QStringView digit) {
    if (digit.size() != 1)
        return 0;
    const char16_t c = digit.front().unicode();
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return 0;
}

std::uint8_t hexByte(QStringView text, int position) {
    const auto digitAt = [&](int pos) {
        return pos >= 1 && pos <= text.size() ? hexDigitValue(text.mid(pos - 1, 1)) : 0;
    };
    return std::uint8_t(16 * digitAt(position) + digitAt(position + 1));
}

QString twoDigitHex(std::uint8_t value) {
    // The till kept a fixed table for 10 to 15 and the values ending in A; its entries are the
    // plain upper-case hex form, so one rule serves every value.
    return QString::number(value, 16).toUpper().rightJustified(2, u'0') + u' ';
}

} // namespace pondar::card
