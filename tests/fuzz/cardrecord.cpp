// The member record read from an arbitrary 1024-byte card image on the simulated reader. When
// the input's first byte is odd, the image keeps the UID, keys and scrambled serial of a real
// issued card, so that the read gets past the serial check to CODE, NAME and VALUE. A record
// that reads must never carry a control character or a negative balance.
#include "card/membercard.h"
#include "card/prompts.h"
#include "card/reader.h"
#include "shell/session.h"
#include "shell/text.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

struct Bench {
    QTemporaryDir dir;
    std::shared_ptr<ReaderLibrary> reader = makeSimulatedReader(dir.path());
    QByteArray issued;

    Bench() {
        put(blankCardImage({0x1A, 0x2B, 0x3C, 0x4D}));
        SessionSettings s;
        s.Reader = reader;
        SilentPrompts silent;
        MemberCard card(s, silent);
        if (!card.openSelectLogin(MemberSector) || !card.writeSerial() ||
            !card.writeCode(u"000001"_s) || !card.writeName(u"TAN AH KOW"_s) ||
            !card.openSelectLogin(ValueSector) ||
            !card.writeField(ValueSector, u"VALUE"_s, u"10"_s))
            std::abort();
        card.close();
        QFile f(dir.filePath(u"field.mfd"_s));
        if (!f.open(QIODevice::ReadOnly))
            std::abort();
        issued = f.readAll();
    }

    void put(const QByteArray& image) const {
        QFile f(dir.filePath(u"field.mfd"_s));
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(image) != image.size())
            std::abort();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Bench bench;
    QByteArray image(reinterpret_cast<const char*>(data),
                     qsizetype(std::min<std::size_t>(size, 1024)));
    image.append(1024 - image.size(), '\0');
    if (size > 0 && (data[0] & 1)) {
        const auto keep = [&](int block) {
            image.replace(block * 16, 16, bench.issued.mid(block * 16, 16));
        };
        keep(0);
        keep(MemberSector * 4);
        for (int trailer = 3; trailer < 64; trailer += 4)
            keep(trailer);
    }
    bench.put(image);

    SessionSettings s;
    s.Reader = bench.reader;
    SilentPrompts silent;
    MemberCard card(s, silent);
    CardData read;
    if (card.read(read) == ReadResult::Ok &&
        (hasControlByte(toAnsi(read.code)) || hasControlByte(toAnsi(read.name)) ||
         read.balance < Currency()))
        std::abort();
    card.close();
    return 0;
}
