// The card text codec on arbitrary bytes: whatever encrypts decrypts back, and nothing that
// a card can hold makes decrypt or the hex helpers misbehave.
#include "card/codec.h"

#include <cstdint>
#include <cstdlib>

using namespace pondar::card;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QByteArray scrambled = encrypt(bytes);
    if (scrambled != EncryptError &&
        (scrambled.size() != bytes.size() + 4 || decrypt(scrambled) != bytes))
        std::abort();
    (void)decrypt(bytes);
    const QString text = QString::fromLatin1(bytes);
    for (int position = 0; position <= int(text.size()) + 1 && position < 40; ++position)
        (void)hexByte(text, position);
    (void)hexDigitValue(text);
    if (size > 0 && twoDigitHex(data[0]).size() != 3)
        std::abort();
    return 0;
}
