#pragma once

#include <QByteArray>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace pondar::test {

// A Mifare Classic 1K card in the field of a vpcd virtual reader. vpcd listens on a TCP port;
// the card connects to it over loopback and answers its messages (a 2-byte big-endian length,
// then a 1-byte control code or an APDU) on a thread of its own. Destroying it takes the card
// away. It answers the storage-card commands of a contactless PC/SC reader over a 1024-byte
// image: Get UID, Load Key, General Authenticate and the older Authenticate, Read and Update
// Binary. Keys are checked against the sector trailers; a refused key halts the card until it is
// reset or powered again, and so does losing power.
class VpcdCard {
public:
    // tagType 2 is a Mifare 1K, 3 a 4K, 5 an Ultralight (7-byte UID); the ATR names it.
    VpcdCard(quint16 port, const QByteArray& image, int tagType = 2);
    ~VpcdCard();
    VpcdCard(const VpcdCard&) = delete;
    VpcdCard& operator=(const VpcdCard&) = delete;

    // False when vpcd could not be reached.
    bool connected() const { return m_fd >= 0; }

    QByteArray image() const;
    // A locked card refuses every write.
    void setLocked(bool locked);

    // The reader's dialect: one that refuses key slot 0, one that lacks General Authenticate.
    void setDialect(bool refusesSlot0, bool olderAuthenticateOnly);
    // The next command with this INS byte gets these raw bytes as its whole answer.
    void answerNext(quint8 ins, const QByteArray& raw);
    // The card leaves the field, unanswered, when a command with this INS byte arrives.
    void vanishOn(quint8 ins);
    // Writes are acknowledged and not kept, as with a card pulled while it was writing.
    void setLosesWrites(bool loses);
    // How many commands with this INS byte arrived.
    int count(quint8 ins) const;

    static QByteArray atr(int tagType);

private:
    void serve();
    QByteArray answer(const QByteArray& message, bool& vanish);
    QByteArray apdu(const QByteArray& command, bool& vanish);
    QByteArray authenticate(int block, quint8 keyType, quint8 slot);

    int m_fd = -1;
    int m_tagType;
    std::thread m_thread;
    std::atomic<bool> m_stop{false};

    mutable std::mutex m_mutex;
    QByteArray m_image;
    bool m_locked = false;
    bool m_refusesSlot0 = false;
    bool m_olderOnly = false;
    bool m_losesWrites = false;
    int m_vanishOn = -1;
    std::map<quint8, QByteArray> m_answers;
    std::map<quint8, int> m_counts;
    std::map<quint8, QByteArray> m_keys; // key slots of the reader
    bool m_halted = false;
    int m_loggedSector = -1;
};

} // namespace pondar::test
