#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <cstdint>

namespace pondar::card {

// The light cipher of texts written to member cards. Every write draws four fresh keys k1..k4
// (33 to 41), so the same text looks different each time. Layout of the result, for a plain
// text of n bytes: k1, k3, k2, the n bytes each shifted up by the key of its position in the
// cycle k1, k3, k2, k4, then k4. The header order is the format; decrypt relies on it.
//
// Both work on 8-bit codes. A failure is returned as the result text itself, as the card
// record has always done: encrypt gives "Error: Invalid text to Encrypt" when a byte would pass
// 255, decrypt "Error: Invalid text to Decrypt" for a text under 4 bytes or a byte below 0.
QByteArray encrypt(const QByteArray& plain);
QByteArray decrypt(const QByteArray& scrambled);

inline constexpr char EncryptError[] = "Error: Invalid text to Encrypt";
inline constexpr char DecryptError[] = "Error: Invalid text to Decrypt";

// A uniform integer from 1 to n.
int randomUpTo(int n);

// "0".."9" and "A".."F" give 0..15; anything else, lower case and empty text included, 0.
int hexDigitValue(QStringView digit);

// The byte written as two hex digits at a 1-based position of the text; characters past the
// end read as 0.
std::uint8_t hexByte(QStringView text, int position);

// Two upper-case hex digits and a blank: 10 gives "0A ", 5 gives "05 ".
QString twoDigitHex(std::uint8_t value);

} // namespace pondar::card
