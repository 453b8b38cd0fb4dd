#pragma once

#include <QByteArray>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace pondar::test {

// A Mifare Classic card in the field of a vpcd virtual reader, answering its messages on a thread
// of its own; destroying it takes the card away. Keys are checked against the sector trailers,
// and a refused key halts the card until it is reset or powered again.
class VpcdCard {
public:
    // tagType 2 is a Mifare 1K, 5 an Ultralight (7-byte UID); the ATR names it.
    VpcdCard(quint16 port, const QByteArray& image, int tagType = 2);
    ~VpcdCard();
    VpcdCard(const VpcdCard&) = delete;
    VpcdCard& operator=(const VpcdCard&) = delete;

    // False when vpcd could not be reached.
    bool connected() const { return m_fd >= 0; }

    QByteArray image() const {
        std::lock_guard lock(m_mutex);
        return m_image;
    }
    // A locked card refuses every write. The reader's dialect: one that refuses key slot 0,
    // one that lacks General Authenticate.
    std::atomic<bool> locked{false}, refusesSlot0{false}, olderOnly{false};
    // The card leaves the field, unanswered, when a command with this INS byte arrives.
    std::atomic<int> vanishOn{-1};
    // The next command with this INS byte gets these raw bytes as its whole answer.
    void answerNext(quint8 ins, const QByteArray& raw) {
        std::lock_guard lock(m_mutex);
        m_answers[ins] = raw;
    }
    // How many commands with this INS byte arrived.
    int count(quint8 ins) const {
        std::lock_guard lock(m_mutex);
        return m_counts.count(ins) ? m_counts.at(ins) : 0;
    }

private:
    void serve();
    QByteArray answer(const QByteArray& message);
    QByteArray authenticate(int block, quint8 keyType, quint8 slot);

    int m_fd = -1;
    int m_tagType;
    std::thread m_thread;

    mutable std::mutex m_mutex;
    QByteArray m_image;
    std::map<quint8, QByteArray> m_answers;
    std::map<quint8, int> m_counts;
    std::map<quint8, QByteArray> m_keys; // key slots of the reader
    bool m_halted = false;
    int m_loggedSector = -1;
};

} // namespace pondar::test
