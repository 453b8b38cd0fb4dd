#include "cardcount.h"

#include "card/membercard.h"
#include "card/reader.h"
#include "shell/session.h"

#include <pondar/error.h>

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace pondar::bench {

namespace {

// The reader library with a count of every call that reaches the card.
class CountingReader final : public card::ReaderLibrary {
public:
    explicit CountingReader(std::shared_ptr<card::ReaderLibrary> inner)
        : m_inner(std::move(inner)) {}

    card::int16 Open(card::int16 port) override { return m_inner->Open(port); }
    card::int16 Close(card::int16 handle) override { return m_inner->Close(handle); }
    card::int16 Select(card::int16 handle, card::uint8& tagType, card::uint8& serialLength,
                       card::uint8 serial[10]) override {
        ++counts.selects;
        return m_inner->Select(handle, tagType, serialLength, serial);
    }
    card::int16 Login(card::int16 handle, card::uint8 sector, card::uint8 keyType,
                      card::uint8 storedNo, const card::uint8 key[6]) override {
        ++counts.logins;
        return m_inner->Login(handle, sector, keyType, storedNo, key);
    }
    card::int16 Read(card::int16 handle, card::uint8 block, card::uint8 data[16]) override {
        ++counts.reads;
        return m_inner->Read(handle, block, data);
    }
    card::int16 Write(card::int16 handle, card::uint8 block, const card::uint8 data[16]) override {
        ++counts.writes;
        return m_inner->Write(handle, block, data);
    }

    Exchanges counts;

private:
    std::shared_ptr<card::ReaderLibrary> m_inner;
};

// The operator says yes to the value question and sees no error.
class Consenting final : public card::CardPrompts {
public:
    bool ask(const QString&) override { return true; }
    void error(const QString&, const QString&) override {}
};

} // namespace

QString Exchanges::text() const {
    return u"%1/%2/%3/%4"_s.arg(selects).arg(logins).arg(reads).arg(writes);
}

CardCounts countCardExchanges() {
    QTemporaryDir dir;
    QFile image(dir.filePath(QString::fromLatin1(card::FieldFileName)));
    if (!image.open(QIODevice::WriteOnly) ||
        image.write(card::blankCardImage({0x11, 0x22, 0x33, 0x44})) != card::CardImageSize)
        throw Error(u"cannot write the simulated card"_s);
    image.close();

    SessionSettings session;
    auto counting = std::make_shared<CountingReader>(card::makeSimulatedReader(dir.path()));
    session.Reader = counting;
    Consenting prompts;
    card::MemberCard issue(session, prompts);
    if (!issue.openSelectLogin(card::MemberSector) || !issue.writeSerial() ||
        !issue.writeCode(u"00000001"_s) || !issue.writeName(u"MEMBER 1"_s) ||
        !issue.confirmAndWriteValue(BillType::In, Currency(),
                                    Currency::fromUnits(100 * Currency::Scale)))
        throw Error(u"cannot issue the simulated card"_s);
    issue.close();

    CardCounts result;
    card::CardData data;
    counting->counts = {};
    card::MemberCard connect(session, prompts);
    if (connect.read(data) != card::ReadResult::Ok)
        throw Error(u"the simulated card does not read"_s);
    result.connect = counting->counts;

    // As the transaction screen saves: its own card object checks, the screen's card writes.
    counting->counts = {};
    card::MemberCard check(session, prompts);
    if (check.read(data) != card::ReadResult::Ok)
        throw Error(u"the simulated card does not read"_s);
    if (!connect.confirmAndWriteValue(BillType::In, Currency::fromUnits(10 * Currency::Scale),
                                      data.balance + Currency::fromUnits(10 * Currency::Scale)))
        throw Error(u"the simulated card does not take the value"_s);
    result.save = counting->counts;
    connect.close();
    return result;
}

} // namespace pondar::bench
