#include "card/reader.h"

#include <QRandomGenerator>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

ReaderLibrary::~ReaderLibrary() = default;

QString statusText(int16 code) {
    switch (code) {
    case status::InternalError:
        return u"( X ) Unexpected Internal Library Error : -1000"_s;
    case status::InvalidPort:
        return u"( X ) Invalid Port : -2000"_s;
    case status::PortOccupied:
        return u"( X ) Port Occupied by Another Application : -2010"_s;
    case status::InvalidHandle:
        return u"( X ) Invalid Handle : -2020"_s;
    case status::IncorrectParameter:
        return u"( X ) Incorrect Parameter : -2030"_s;
    case status::NoTag:
        return u"( X ) No TAG Selected or in Reachable Range : -3000"_s;
    case status::ReadFailed:
        return u"( X ) Read Failed after Operation : -3010"_s;
    case status::NotValueBlock:
        return u"( X ) Block doesn't contain value : -3020"_s;
    case status::OperationFailed:
        return u"( X ) Operation Failed : -3030"_s;
    case status::UnknownReaderError:
        return u"( X ) Unknown Reader Error : -3040"_s;
    case status::InvalidKeyFormat:
        return u"( X ) Invalid stored key format in login process : -4010"_s;
    case status::ReadAfterWriteFailed:
        return u"( X ) Reader can't read after write operation : -4020"_s;
    case status::DecrementFailure:
        return u"( X ) Decrement Failure (Empty) : -4030"_s;
    default:
        return {};
    }
}

namespace {

class AbsentReader final : public ReaderLibrary {
public:
    int16 Open(int16) override { return status::InvalidPort; }
    int16 Close(int16) override { return status::InvalidHandle; }
    int16 Select(int16, uint8&, uint8&, uint8[10]) override { return status::InvalidHandle; }
    int16 Login(int16, uint8, uint8, uint8, const uint8[6]) override {
        return status::InvalidHandle;
    }
    int16 Read(int16, uint8, uint8[16]) override { return status::InvalidHandle; }
    int16 Write(int16, uint8, const uint8[16]) override { return status::InvalidHandle; }
};

} // namespace

std::shared_ptr<ReaderLibrary> makeAbsentReader() {
    return std::make_shared<AbsentReader>();
}

std::shared_ptr<ReaderLibrary> makeReaderLibrary() {
    const QString choice = qEnvironmentVariable("PONDAR_READER");
    if (choice.startsWith(u"sim:"_s) && choice.size() > 4)
        return makeSimulatedReader(choice.mid(4));
    if (choice == u"pcsc"_s || choice.startsWith(u"pcsc:"_s))
        return makePcscReader(choice.mid(5));
    if (choice.isEmpty()) {
#ifdef _WIN32
        return makeVendorReader();
#else
        return makePcscReader();
#endif
    }
    if (choice != u"none"_s)
        qWarning("PONDAR_READER=%s is not understood; no reader is used", qPrintable(choice));
    return makeAbsentReader();
}

QByteArray blankCardImage(const std::array<uint8, 4>& uid) {
    QByteArray image(CardImageSize, '\0');
    uint8 bcc = 0;
    for (std::size_t i = 0; i < uid.size(); ++i) {
        image[qsizetype(i)] = char(uid[i]);
        bcc ^= uid[i];
    }
    image[4] = char(bcc);
    // SAK and ATQA of a Mifare Classic 1K, as the manufacturer block carries them.
    image[5] = char(0x08);
    image[6] = char(0x04);
    image[7] = char(0x00);
    static constexpr uint8 trailer[16] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x07,
                                          0x80, 0x69, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    for (int sector = 0; sector < 16; ++sector) {
        const int at = (sector * 4 + 3) * 16;
        for (int i = 0; i < 16; ++i)
            image[at + i] = char(trailer[i]);
    }
    return image;
}

QByteArray blankCardImage() {
    std::array<uint8, 4> uid{};
    // 0x88 as the first byte would mark a cascaded (longer) UID.
    do {
        const quint32 r = QRandomGenerator::global()->generate();
        for (std::size_t i = 0; i < uid.size(); ++i)
            uid[i] = uint8(r >> (8 * i));
    } while (uid[0] == 0x88);
    return blankCardImage(uid);
}

} // namespace pondar::card
