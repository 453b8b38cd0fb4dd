#include "card/readeraccess.h"

#include "card/codec.h"
#include "shell/session.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

CardPrompts::~CardPrompts() = default;

int16 libraryPort(const QString& portText) {
    static const QStringList ports = {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s};
    // Port texts count from 1; "0" reaches the first port as well.
    const qsizetype index = ports.indexOf(portText);
    return index < 0 ? 0 : int16(index);
}

QString serialText(uint8 tagType, uint8 serialLength, const uint8 serial[10]) {
    QString body;
    if (tagType == 4 || tagType == 5) {
        int sum = 0;
        for (int i = 0; i < 7; ++i)
            sum += twoDigitHex(serial[i]).front().unicode();
        body = QString::number(sum);
    } else {
        for (int i = 0; i < std::min<int>(serialLength, 10); ++i)
            body += twoDigitHex(serial[i]).trimmed();
    }
    return u"V"_s + body + u"S"_s;
}

ReaderAccess::ReaderAccess(SessionSettings& session, CardPrompts& prompts)
    : m_session(session)
    , m_prompts(prompts) {}

ReaderLibrary& ReaderAccess::library() {
    if (!m_session.Reader)
        m_session.Reader = makeReaderLibrary();
    return *m_session.Reader;
}

bool ReaderAccess::openReader(const QString& portText) {
    // Every card read opens the reader again (the balance display does so once a second), so
    // the previous handle goes first: a library must not gather one open handle per read.
    close();
    m_session.ReaderHandle = library().Open(libraryPort(portText));
    return m_session.ReaderHandle >= 0;
}

bool ReaderAccess::selectCard() {
    uint8 tagType = 0;
    uint8 length = 0;
    uint8 serial[10] = {};
    m_session.ReaderStatus = library().Select(m_session.ReaderHandle, tagType, length, serial);
    const bool ok = m_session.ReaderStatus >= 0;
    m_session.CardSerial = ok ? serialText(tagType, length, serial) : QString();
    return ok;
}

bool ReaderAccess::logIn() {
    uint8 key[6];
    std::memset(key, hexByte(m_session.DefFF, 1), sizeof key);
    m_session.ReaderStatus =
        library().Login(m_session.ReaderHandle, uint8(m_session.LoginSector), KeyTypeA, 0, key);
    return m_session.ReaderStatus >= 0;
}

bool ReaderAccess::openSelectLogin(int port, int sector) {
    m_session.LoginSector = std::uint16_t(sector);
    return openReader(QString::number(port)) && selectCard() && logIn();
}

bool ReaderAccess::logInTo(int sector) {
    m_session.LoginSector = std::uint16_t(sector);
    return logIn();
}

bool ReaderAccess::loggedInTo(int sector) const {
    return m_session.ReaderHandle >= 0 && m_session.ReaderStatus >= 0 &&
           m_session.LoginSector == sector;
}

namespace {

uint8 absoluteBlock(int sector, double block) {
    const double absolute = sector * 4.0 + std::round(block);
    if (!(absolute >= 0 && absolute <= 255))
        throw Error(u"Card block number out of range !!!"_s);
    return uint8(absolute);
}

} // namespace

QByteArray ReaderAccess::readBlock(int sector, const QString& blockText) {
    const uint8 block = absoluteBlock(sector, leadingNumber(blockText));
    uint8 data[16] = {};
    m_session.ReaderStatus = library().Read(m_session.ReaderHandle, block, data);
    if (m_session.ReaderStatus < 0) {
        m_prompts.error(u"Error"_s, QString::fromLatin1(DefaultTitle));
        return {};
    }
    return QByteArray(reinterpret_cast<const char*>(data), sizeof data);
}

bool ReaderAccess::writeBlock(int sector, int block, const QByteArray& data) {
    if (data.size() != 16)
        throw Error(u"A card block holds 16 bytes !!!"_s);
    m_session.ReaderStatus = library().Write(m_session.ReaderHandle, absoluteBlock(sector, block),
                                             reinterpret_cast<const uint8*>(data.constData()));
    return m_session.ReaderStatus >= 0;
}

void ReaderAccess::close() {
    if (m_session.ReaderHandle < 0)
        return;
    library().Close(m_session.ReaderHandle);
    m_session.ReaderHandle = -1;
}

} // namespace pondar::card
