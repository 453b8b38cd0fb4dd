// The reader library over PC/SC: pcsc-lite on Linux and macOS, winscard on Windows. Contactless
// readers (the ACR122U family, CCID contactless readers) reach Mifare Classic through the
// storage-card commands of the PC/SC pseudo-APDUs (class FF).
#include "card/reader.h"

#ifdef _WIN32
#include <windows.h>
#include <winscard.h>
#elif defined(__APPLE__)
#include <PCSC/winscard.h>
#include <PCSC/wintypes.h>
#else
#include <winscard.h>
#endif

#include <QByteArray>
#include <QList>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

namespace {

// winscard has ANSI and wide variants of the calls that take reader names; names are kept as
// 8-bit text here, as pcsc-lite gives them.
#ifdef _WIN32
LONG listReaders(SCARDCONTEXT c, LPSTR names, LPDWORD length) {
    return SCardListReadersA(c, nullptr, names, length);
}
LONG connectReader(SCARDCONTEXT c, LPCSTR name, DWORD share, DWORD protocols, LPSCARDHANDLE card,
                   LPDWORD active) {
    return SCardConnectA(c, name, share, protocols, card, active);
}
LONG cardStatus(SCARDHANDLE card, LPDWORD state, LPDWORD protocol, LPBYTE atr, LPDWORD atrLength) {
    DWORD nameLength = 0;
    return SCardStatusA(card, nullptr, &nameLength, state, protocol, atr, atrLength);
}
#else
LONG listReaders(SCARDCONTEXT c, LPSTR names, LPDWORD length) {
    return SCardListReaders(c, nullptr, names, length);
}
LONG connectReader(SCARDCONTEXT c, LPCSTR name, DWORD share, DWORD protocols, LPSCARDHANDLE card,
                   LPDWORD active) {
    return SCardConnect(c, name, share, protocols, card, active);
}
LONG cardStatus(SCARDHANDLE card, LPDWORD state, LPDWORD protocol, LPBYTE atr, LPDWORD atrLength) {
    DWORD nameLength = 0;
    return SCardStatus(card, nullptr, &nameLength, state, protocol, atr, atrLength);
}
#endif

constexpr int16 PcscHandle = 1;
constexpr DWORD AtrCapacity = 36;
constexpr DWORD Protocols = SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1;
constexpr uint8 KeyTypeCodeA = 0x60;
constexpr uint8 KeyTypeCodeB = 0x61;
// How long another application may keep the reader to itself before an operation gives up.
constexpr std::chrono::milliseconds BusyWait{1000};

// The failure that a PC/SC result stands for, or `otherwise` for one that says nothing about
// the card or the reader.
int16 fromPcsc(LONG rv, int16 otherwise) {
    switch (rv) {
    case SCARD_S_SUCCESS:
        return status::Ok;
    case SCARD_E_NO_SMARTCARD:
    case SCARD_W_REMOVED_CARD:
    case SCARD_W_RESET_CARD:
    case SCARD_W_UNPOWERED_CARD:
    case SCARD_W_UNRESPONSIVE_CARD:
    case SCARD_W_UNSUPPORTED_CARD:
        return status::NoTag;
    case SCARD_E_SHARING_VIOLATION:
        return status::PortOccupied;
    case SCARD_E_NO_SERVICE:
    case SCARD_E_SERVICE_STOPPED:
    case SCARD_E_NO_READERS_AVAILABLE:
    case SCARD_E_READER_UNAVAILABLE:
    case SCARD_E_UNKNOWN_READER:
    case SCARD_E_INVALID_HANDLE:
        return status::InvalidPort;
    default:
        return otherwise;
    }
}

// The service went away (stopped, restarted, or Windows stopped it with the last reader).
bool serviceLost(LONG rv) {
    return rv == SCARD_E_NO_SERVICE || rv == SCARD_E_SERVICE_STOPPED ||
           rv == SCARD_E_INVALID_HANDLE;
}

// The first block of a sector: four-block sectors first, then the sixteen-block ones of a 4K.
int firstBlock(int sector) {
    return sector < 32 ? sector * 4 : 128 + (sector - 32) * 16;
}
int sectorOf(int block) {
    return block < 128 ? block / 4 : 32 + (block - 128) / 16;
}
bool isTrailer(int block) {
    return block < 128 ? block % 4 == 3 : (block - 128) % 16 == 15;
}

// An answer of the reader: data and status word.
struct Answer {
    LONG rv = SCARD_S_SUCCESS;
    QByteArray data;
    quint16 sw = 0;

    bool transmitted() const { return rv == SCARD_S_SUCCESS; }
    bool ok() const { return transmitted() && sw == 0x9000; }
};

// The tag type of a contactless storage card from the card name in its ATR
// (3B 8F 80 01 80 4F 0C A0 00 00 03 06 SS C0 C1 ...); a card the ATR does not name is typed
// by the length of its serial.
uint8 tagTypeFromAtr(const QByteArray& atr, int serialLength) {
    static const QByteArray storageCard = QByteArray::fromHex("3B8F8001804F0CA000000306");
    if (atr.size() >= 15 && atr.startsWith(storageCard)) {
        switch ((uint8(atr[13]) << 8) | uint8(atr[14])) {
        case 0x0001:
            return TagMifare1K;
        case 0x0002:
            return 3;
        case 0x0003:
            return 5;
        default:
            break;
        }
    }
    return serialLength == 7 ? 4 : TagMifare1K;
}

// While another application holds a transaction on the reader, pcsc-lite's calls on a card
// handle wait, unbounded, until it ends. A look at the card through a connection of its own, on
// a thread of its own, tells whether the reader is free without putting the caller at risk: the
// caller waits for the look only so long. A look that is still waiting stays with the
// thread, which finishes once the other application lets go.
class ReaderLook {
public:
    // Starts a look at the card in the named reader.
    static std::shared_ptr<ReaderLook> start(const QByteArray& reader) {
        auto look = std::make_shared<ReaderLook>();
        std::thread([look, reader] {
            SCARDCONTEXT context = 0;
            SCARDHANDLE card = 0;
            DWORD active = 0;
            if (SCardEstablishContext(SCARD_SCOPE_USER, nullptr, nullptr, &context) ==
                SCARD_S_SUCCESS) {
                if (connectReader(context, reader.constData(), SCARD_SHARE_SHARED, Protocols, &card,
                                  &active) == SCARD_S_SUCCESS) {
                    DWORD state = 0, protocol = 0, atrLength = AtrCapacity;
                    BYTE atr[AtrCapacity];
                    cardStatus(card, &state, &protocol, atr, &atrLength);
                    SCardDisconnect(card, SCARD_LEAVE_CARD);
                }
                SCardReleaseContext(context);
            }
            const std::lock_guard lock(look->m_mutex);
            look->m_done = true;
            look->m_finished.notify_all();
        }).detach();
        return look;
    }

    // True when the look ended within the wait.
    bool wait(std::chrono::milliseconds limit) {
        std::unique_lock lock(m_mutex);
        return m_finished.wait_for(lock, limit, [this] { return m_done; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_finished;
    bool m_done = false;
};

class PcscReader final : public ReaderLibrary {
public:
    explicit PcscReader(QString nameFilter)
        : m_filter(std::move(nameFilter)) {}
    ~PcscReader() override { release(); }
    PcscReader(const PcscReader&) = delete;
    PcscReader& operator=(const PcscReader&) = delete;

    int16 Open(int16 port) override {
        if (port < 0)
            return status::InvalidPort;
        m_open = false;
        m_logins.clear();
        QList<QByteArray> readers;
        LONG rv = SCARD_S_SUCCESS;
        for (int attempt = 0; attempt < 2; ++attempt) {
            if (!m_hasContext) {
                rv = SCardEstablishContext(SCARD_SCOPE_USER, nullptr, nullptr, &m_context);
                if (rv != SCARD_S_SUCCESS)
                    return status::InvalidPort;
                m_hasContext = true;
            }
            rv = list(readers);
            if (!serviceLost(rv))
                break;
            // A restarted service knows nothing of the old context: start again, once.
            release();
        }
        if (rv != SCARD_S_SUCCESS || port >= readers.size())
            return status::InvalidPort;
        if (readers[port] != m_readerName) {
            disconnect();
            m_readerName = readers[port];
            m_keySlot = -1;
            m_olderAuthenticate = false;
        }
        m_open = true;
        return PcscHandle;
    }

    int16 Close(int16 handle) override {
        if (!validHandle(handle))
            return status::InvalidHandle;
        release();
        return status::Ok;
    }

    int16 Select(int16 handle, uint8& tagType, uint8& serialLength, uint8 serial[10]) override {
        if (!validHandle(handle))
            return status::InvalidHandle;
        m_logins.clear();
        if (const int16 s = connect(); s != status::Ok)
            return s;
        const Answer uid = transmit(QByteArray::fromHex("FFCA000000"));
        if (!uid.transmitted())
            return dropAfter(uid.rv, status::OperationFailed);
        if (!uid.ok() || uid.data.isEmpty() || uid.data.size() > 10)
            return status::OperationFailed;
        serialLength = uint8(uid.data.size());
        std::memset(serial, 0, 10);
        std::memcpy(serial, uid.data.constData(), serialLength);
        tagType = tagTypeFromAtr(m_atr, serialLength);
        return status::Ok;
    }

    int16 Login(int16 handle, uint8 sector, uint8 keyType, uint8, const uint8 key[6]) override {
        if (!validHandle(handle))
            return status::InvalidHandle;
        if (sector >= 40 || (keyType != KeyTypeA && keyType != KeyTypeB))
            return status::IncorrectParameter;
        if (!m_card || m_halted)
            return status::NoTag;
        Key k;
        k.type = keyType == KeyTypeA ? KeyTypeCodeA : KeyTypeCodeB;
        std::memcpy(k.bytes, key, 6);
        const int16 s = inTransaction([&] { return authenticate(sector, k); });
        if (s == status::Ok)
            m_logins[sector] = k;
        return s;
    }

    int16 Read(int16 handle, uint8 block, uint8 data[16]) override {
        int16 s = ready(handle, block);
        if (s != status::Ok)
            return s;
        QByteArray read;
        s = inTransaction([&] {
            const Key key = m_logins[sectorOf(block)];
            if (const int16 a = authenticate(sectorOf(block), key); a != status::Ok)
                return a == status::InvalidKeyFormat ? status::OperationFailed : a;
            return readBlock(block, read);
        });
        if (s == status::Ok)
            std::memcpy(data, read.constData(), 16);
        return s;
    }

    int16 Write(int16 handle, uint8 block, const uint8 data[16]) override {
        if (const int16 s = ready(handle, block); s != status::Ok)
            return s;
        const QByteArray bytes(reinterpret_cast<const char*>(data), 16);
        return inTransaction([&] {
            const Key key = m_logins[sectorOf(block)];
            if (const int16 a = authenticate(sectorOf(block), key); a != status::Ok)
                return a == status::InvalidKeyFormat ? status::OperationFailed : a;
            const Answer w = transmit(QByteArray::fromHex("FFD600") + char(block) + '\x10' + bytes);
            if (!w.transmitted())
                return dropAfter(w.rv, status::OperationFailed);
            if (!w.ok())
                return status::OperationFailed;
            // The card acknowledged the write. Reading it back catches a write that did not
            // stick; one that cannot be read back (the card already gone) stands on the
            // acknowledgement, since calling it failed would leave a written value unposted.
            // Nothing is ever written twice. Trailers read back with their keys hidden.
            if (isTrailer(block))
                return status::Ok;
            QByteArray back;
            if (readBlock(block, back) != status::Ok)
                return status::Ok;
            return back == bytes ? status::Ok : status::ReadAfterWriteFailed;
        });
    }

private:
    struct Key {
        uint8 type = KeyTypeCodeA;
        uint8 bytes[6] = {};
    };

    bool validHandle(int16 handle) const { return m_open && handle == PcscHandle; }

    int16 ready(int16 handle, uint8 block) {
        if (!validHandle(handle))
            return status::InvalidHandle;
        if (!m_card || m_halted)
            return status::NoTag;
        return m_logins.count(sectorOf(block)) ? status::Ok : status::OperationFailed;
    }

    LONG list(QList<QByteArray>& readers) {
        readers.clear();
        DWORD length = 0;
        LONG rv = listReaders(m_context, nullptr, &length);
        if (rv != SCARD_S_SUCCESS)
            return rv;
        QByteArray names(qsizetype(length), '\0');
        rv = listReaders(m_context, names.data(), &length);
        if (rv != SCARD_S_SUCCESS)
            return rv;
        names.truncate(qsizetype(length));
        for (const QByteArray& name : names.split('\0')) {
            if (!name.isEmpty() && (m_filter.isEmpty() || QString::fromLocal8Bit(name).contains(
                                                              m_filter, Qt::CaseInsensitive)))
                readers.append(name);
        }
        return readers.isEmpty() ? SCARD_E_NO_READERS_AVAILABLE : SCARD_S_SUCCESS;
    }

    // A connected, awake card on the chosen reader: the handle held since the last select when
    // its card is still there, else a new connection. A card halted by a refused key is reset,
    // which selects it again.
    int16 connect() {
        if (!readerFree())
            return status::PortOccupied;
        if (m_card) {
            LONG rv = SCARD_S_SUCCESS;
            if (m_halted || m_stale) {
                DWORD active = 0;
                rv = SCardReconnect(m_card, SCARD_SHARE_SHARED, Protocols,
                                    m_halted ? SCARD_RESET_CARD : SCARD_LEAVE_CARD, &active);
                if (rv == SCARD_S_SUCCESS)
                    m_protocol = active;
            }
            if (rv == SCARD_S_SUCCESS)
                rv = readStatus();
            if (rv == SCARD_E_SHARING_VIOLATION)
                return status::PortOccupied;
            if (rv == SCARD_S_SUCCESS) {
                m_halted = m_stale = false;
                return status::Ok;
            }
            // Gone, or another card in its place: start over with whatever is in the field.
            disconnect();
        }
        DWORD active = 0;
        LONG rv = connectReader(m_context, m_readerName.constData(), SCARD_SHARE_SHARED, Protocols,
                                &m_card, &active);
        if (rv != SCARD_S_SUCCESS) {
            m_card = 0;
            return fromPcsc(rv, status::NoTag);
        }
        m_protocol = active;
        m_halted = m_stale = false;
        rv = readStatus();
        if (rv != SCARD_S_SUCCESS)
            return dropAfter(rv, status::NoTag);
        return status::Ok;
    }

    // The card's state and ATR.
    LONG readStatus() {
        DWORD state = 0;
        DWORD protocol = 0;
        BYTE atr[AtrCapacity];
        DWORD atrLength = AtrCapacity;
        const LONG rv = cardStatus(m_card, &state, &protocol, atr, &atrLength);
        if (rv == SCARD_S_SUCCESS)
            m_atr = QByteArray(reinterpret_cast<const char*>(atr), qsizetype(atrLength));
        return rv;
    }

    Answer transmit(const QByteArray& apdu) {
        Answer a;
        BYTE response[258];
        DWORD length = sizeof response;
        const SCARD_IO_REQUEST* pci = m_protocol == SCARD_PROTOCOL_T1 ? SCARD_PCI_T1 : SCARD_PCI_T0;
        a.rv = SCardTransmit(m_card, pci, reinterpret_cast<const BYTE*>(apdu.constData()),
                             DWORD(apdu.size()), nullptr, response, &length);
        if (a.rv != SCARD_S_SUCCESS)
            return a;
        if (length < 2 || length > sizeof response) {
            // Not even a status word: as good as no answer at all.
            a.sw = 0;
            return a;
        }
        a.data = QByteArray(reinterpret_cast<const char*>(response), qsizetype(length) - 2);
        a.sw = quint16((response[length - 2] << 8) | response[length - 1]);
        return a;
    }

    // After a failed call on the card handle: a card that went or a reader that went leaves the
    // handle useless, so the next select starts afresh.
    int16 dropAfter(LONG rv, int16 otherwise) {
        const int16 s = fromPcsc(rv, otherwise);
        if (s == status::PortOccupied)
            return s;
        if (rv == SCARD_W_RESET_CARD)
            m_stale = true;
        else
            disconnect();
        m_logins.clear();
        return s;
    }

    // False when another application keeps the reader beyond the wait.
    bool readerFree() {
        if (m_look && !m_look->wait(BusyWait))
            return false;
        m_look = ReaderLook::start(m_readerName);
        if (!m_look->wait(BusyWait))
            return false;
        m_look.reset();
        return true;
    }

    template <typename F> int16 inTransaction(F&& work) {
        if (!readerFree())
            return status::PortOccupied;
        // A card that went is reported here, before a transaction is begun on it.
        if (const LONG rv = readStatus(); rv != SCARD_S_SUCCESS)
            return dropAfter(rv, status::UnknownReaderError);
        if (const LONG rv = SCardBeginTransaction(m_card); rv != SCARD_S_SUCCESS)
            return dropAfter(rv, status::UnknownReaderError);
        const int16 s = work();
        if (m_card)
            SCardEndTransaction(m_card, SCARD_LEAVE_CARD);
        return s;
    }

    // Loads the key into the reader and authenticates the sector's first block. A refused key
    // halts the card until it is selected again.
    int16 authenticate(int sector, const Key& key) {
        const QByteArray keyBytes(reinterpret_cast<const char*>(key.bytes), 6);
        if (m_keySlot < 0) {
            // Slot 0 is the usual volatile slot; some readers keep theirs at 20.
            for (const uint8 slot : {uint8(0x00), uint8(0x20)}) {
                const Answer a =
                    transmit(QByteArray::fromHex("FF8200") + char(slot) + '\x06' + keyBytes);
                if (!a.transmitted())
                    return dropAfter(a.rv, status::InvalidKeyFormat);
                if (a.ok()) {
                    m_keySlot = slot;
                    break;
                }
            }
            if (m_keySlot < 0)
                return status::InvalidKeyFormat;
        } else {
            const Answer a =
                transmit(QByteArray::fromHex("FF8200") + char(m_keySlot) + '\x06' + keyBytes);
            if (!a.transmitted())
                return dropAfter(a.rv, status::InvalidKeyFormat);
            if (!a.ok())
                return status::InvalidKeyFormat;
        }

        const char block = char(firstBlock(sector));
        const char slot = char(m_keySlot);
        Answer a;
        if (!m_olderAuthenticate) {
            a = transmit(QByteArray::fromHex("FF86000005010000") + block + char(key.type) + slot);
            a.data.clear();
            if (a.transmitted() && !a.ok() && !refused(a.sw)) {
                // A reader without General Authenticate may know the older form.
                const Answer older =
                    transmit(QByteArray::fromHex("FF8800") + block + char(key.type) + slot);
                if (older.ok())
                    m_olderAuthenticate = true;
                a = older;
            }
        } else {
            a = transmit(QByteArray::fromHex("FF8800") + block + char(key.type) + slot);
        }
        if (!a.transmitted())
            return dropAfter(a.rv, status::InvalidKeyFormat);
        if (a.ok())
            return status::Ok;
        m_halted = true;
        m_logins.clear();
        return status::InvalidKeyFormat;
    }

    // The answers of a reader whose card refused the key, as opposed to one that does not
    // know the command.
    static bool refused(quint16 sw) {
        return (sw >> 8) == 0x63 || sw == 0x6982 || sw == 0x6983 || sw == 0x6984 || sw == 0x6988;
    }

    int16 readBlock(uint8 block, QByteArray& data) {
        const Answer r = transmit(QByteArray::fromHex("FFB000") + char(block) + '\x10');
        if (!r.transmitted())
            return dropAfter(r.rv, status::OperationFailed);
        if (!r.ok() || r.data.size() != 16)
            return status::OperationFailed;
        data = r.data;
        return status::Ok;
    }

    void disconnect() {
        // A card halted by a refused key answers nobody until it is woken again; leaving it so
        // would make the next connection, ours or another application's, fail on a good key.
        if (m_card)
            SCardDisconnect(m_card, m_halted ? SCARD_RESET_CARD : SCARD_LEAVE_CARD);
        m_card = 0;
        m_halted = m_stale = false;
        m_logins.clear();
        m_atr.clear();
    }

    void release() {
        disconnect();
        if (m_hasContext)
            SCardReleaseContext(m_context);
        m_hasContext = false;
        m_context = 0;
        m_readerName.clear();
        m_open = false;
        m_keySlot = -1;
        m_olderAuthenticate = false;
    }

    QString m_filter;
    SCARDCONTEXT m_context = 0;
    bool m_hasContext = false;
    bool m_open = false;
    QByteArray m_readerName;
    SCARDHANDLE m_card = 0; // 0 when no card is connected
    DWORD m_protocol = SCARD_PROTOCOL_T1;
    QByteArray m_atr;
    bool m_halted = false; // a refused key: the card answers nothing until selected again
    bool m_stale = false;  // another application reset the card
    int m_keySlot = -1;    // the reader's key slot that took a key, once one did
    bool m_olderAuthenticate = false;
    // The sectors logged in since the last select, with their keys: reads and writes
    // authenticate again inside their own transaction, since the login state of the card is
    // shared with every application on the reader.
    std::map<int, Key> m_logins;
    std::shared_ptr<ReaderLook> m_look; // a look at the reader still waiting
};

} // namespace

std::shared_ptr<ReaderLibrary> makePcscReader(const QString& nameFilter) {
    return std::make_shared<PcscReader>(nameFilter);
}

} // namespace pondar::card
