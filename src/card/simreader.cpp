#include "card/reader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <bitset>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

namespace {

constexpr int16 SimHandle = 1;
constexpr int BlockSize = 16;
constexpr int Sectors = 16;
constexpr int Blocks = CardImageSize / BlockSize;

class SimulatedReader final : public ReaderLibrary {
public:
    explicit SimulatedReader(const QString& dir)
        : m_field(QDir(dir).filePath(QString::fromLatin1(FieldFileName)))
        , m_type(QDir(dir).filePath(QString::fromLatin1(FieldTypeFileName))) {}

    int16 Open(int16 port) override {
        if (port != 0)
            return status::InvalidPort;
        m_open = true;
        forgetCard();
        return SimHandle;
    }

    int16 Close(int16 handle) override {
        if (!validHandle(handle))
            return status::InvalidHandle;
        m_open = false;
        forgetCard();
        return status::Ok;
    }

    int16 Select(int16 handle, uint8& tagType, uint8& serialLength, uint8 serial[10]) override {
        if (!validHandle(handle))
            return status::InvalidHandle;
        forgetCard();
        QByteArray image;
        if (const int16 s = load(image); s != status::Ok)
            return s;
        tagType = this->tagType();
        serialLength = (tagType == 4 || tagType == 5) ? 7 : 4;
        std::memset(serial, 0, 10);
        std::memcpy(serial, image.constData(), serialLength);
        m_serial = image.left(serialLength);
        return status::Ok;
    }

    int16 Login(int16 handle, uint8 sector, uint8 keyType, uint8, const uint8 key[6]) override {
        if (!validHandle(handle))
            return status::InvalidHandle;
        if (sector >= Sectors || (keyType != KeyTypeA && keyType != KeyTypeB))
            return status::IncorrectParameter;
        QByteArray image;
        if (const int16 s = present(image); s != status::Ok)
            return s;
        const int trailer = (sector * 4 + 3) * BlockSize + (keyType == KeyTypeA ? 0 : 10);
        if (std::memcmp(image.constData() + trailer, key, 6) != 0) {
            // A refused key halts the card: it answers nothing until selected again.
            forgetCard();
            return status::InvalidKeyFormat;
        }
        m_loggedIn.set(sector);
        return status::Ok;
    }

    int16 Read(int16 handle, uint8 block, uint8 data[16]) override {
        QByteArray image;
        if (const int16 s = access(handle, block, image); s != status::Ok)
            return s;
        std::memcpy(data, image.constData() + block * BlockSize, BlockSize);
        return status::Ok;
    }

    int16 Write(int16 handle, uint8 block, const uint8 data[16]) override {
        QByteArray image;
        if (const int16 s = access(handle, block, image); s != status::Ok)
            return s;
        // Block 0 is the manufacturer's; a file without write permission is a locked card
        // (checked by its mode bits, which hold even for root).
        if (block == 0 || !(QFileInfo(m_field).permissions() & QFileDevice::WriteOwner))
            return status::OperationFailed;
        QFile file(m_field);
        if (!file.open(QIODevice::ReadWrite) || !file.seek(qint64(block) * BlockSize) ||
            file.write(reinterpret_cast<const char*>(data), BlockSize) != BlockSize ||
            !file.flush())
            return status::OperationFailed;
        return status::Ok;
    }

private:
    bool validHandle(int16 handle) const { return m_open && handle == SimHandle; }

    void forgetCard() {
        m_serial.clear();
        m_loggedIn.reset();
    }

    uint8 tagType() const {
        QFile file(m_type);
        if (!file.open(QIODevice::ReadOnly))
            return TagMifare1K;
        bool ok = false;
        const int type = QString::fromLatin1(file.read(16)).trimmed().toInt(&ok);
        return ok && type >= 0 && type <= 255 ? uint8(type) : TagMifare1K;
    }

    int16 load(QByteArray& image) const {
        QFile file(m_field);
        if (!file.open(QIODevice::ReadOnly))
            return status::NoTag;
        image = file.read(CardImageSize + 1);
        return image.size() == CardImageSize ? status::Ok : status::OperationFailed;
    }

    // The selected card, still in the field: the file is there and carries the same serial.
    int16 present(QByteArray& image) {
        if (m_serial.isEmpty())
            return status::NoTag;
        if (load(image) != status::Ok || !image.startsWith(m_serial)) {
            forgetCard();
            return status::NoTag;
        }
        return status::Ok;
    }

    int16 access(int16 handle, uint8 block, QByteArray& image) {
        if (!validHandle(handle))
            return status::InvalidHandle;
        if (block >= Blocks)
            return status::IncorrectParameter;
        if (const int16 s = present(image); s != status::Ok)
            return s;
        return m_loggedIn.test(block / 4) ? status::Ok : status::OperationFailed;
    }

    QString m_field;
    QString m_type;
    bool m_open = false;
    QByteArray m_serial; // empty when no card is selected
    std::bitset<Sectors> m_loggedIn;
};

} // namespace

std::shared_ptr<ReaderLibrary> makeSimulatedReader(const QString& dir) {
    return std::make_shared<SimulatedReader>(dir);
}

} // namespace pondar::card
