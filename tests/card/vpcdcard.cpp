#include "card/vpcdcard.h"

#include <QStringBuilder>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace pondar::test {

namespace {

constexpr int BlockSize = 16;
constexpr int Blocks = 64;

QByteArray sw(quint16 word) {
    return QByteArray(1, char(word >> 8)) + char(word & 0xFF);
}

bool receiveAll(int fd, char* data, int size) {
    while (size > 0) {
        // vpcd sends a message's length and its payload apart; acknowledging at once keeps
        // Nagle's algorithm on its side from holding the payload back for a delayed ACK.
        const int one = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_QUICKACK, &one, sizeof one);
        const ssize_t n = ::recv(fd, data, size_t(size), 0);
        if (n <= 0)
            return false;
        data += n;
        size -= int(n);
    }
    return true;
}

} // namespace

VpcdCard::VpcdCard(quint16 port, const QByteArray& image, int tagType)
    : m_tagType(tagType)
    , m_image(image) {
    // pcscd lists the reader only once vpcd listens.
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        const int one = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        m_fd = fd;
    } else if (fd >= 0) {
        ::close(fd);
    }
    if (m_fd >= 0)
        m_thread = std::thread([this] { serve(); });
}

VpcdCard::~VpcdCard() {
    if (m_fd >= 0)
        ::shutdown(m_fd, SHUT_RDWR);
    if (m_thread.joinable())
        m_thread.join();
    if (m_fd >= 0)
        ::close(m_fd);
}

void VpcdCard::serve() {
    // Until the card is taken away: shutting the socket down ends the wait for a message.
    for (;;) {
        char head[2];
        if (!receiveAll(m_fd, head, 2))
            return;
        const int length = (quint8(head[0]) << 8) | quint8(head[1]);
        QByteArray message(length, '\0');
        if (!receiveAll(m_fd, message.data(), length))
            return;
        const QByteArray reply = answer(message);
        if (reply.isEmpty())
            continue;
        // Answers are a few hundred bytes: a blocking send takes them whole.
        const QByteArray framed = sw(quint16(reply.size())) + reply;
        if (::send(m_fd, framed.constData(), size_t(framed.size()), MSG_NOSIGNAL) != framed.size())
            return;
    }
}

QByteArray VpcdCard::answer(const QByteArray& c) {
    std::lock_guard lock(m_mutex);
    if (c.size() == 1) {
        const quint8 code = quint8(c[0]);
        if (code <= 0x02) { // power off, power on, reset
            m_halted = false;
            m_loggedSector = -1;
        }
        if (code != 0x04)
            return {};
        // The ATR of a contactless storage card, naming a Mifare 1K or an Ultralight.
        const char* atr = m_tagType == 5 ? "3B8F8001804F0CA0000003060300030000000068"
                                         : "3B8F8001804F0CA000000306030001000000006A";
        return QByteArray::fromHex(atr);
    }
    if (c.size() < 4)
        return sw(0x6700);
    if (quint8(c[0]) != 0xFF)
        return sw(0x6E00);
    const quint8 ins = quint8(c[1]);
    ++m_counts[ins];
    if (vanishOn == ins) { // taken away mid-command: vpcd sees the connection close
        ::shutdown(m_fd, SHUT_RDWR);
        return {};
    }
    if (const auto it = m_answers.find(ins); it != m_answers.end()) {
        const QByteArray raw = it->second;
        m_answers.erase(it);
        return raw;
    }
    const quint8 p1 = quint8(c[2]);
    const quint8 p2 = quint8(c[3]);
    const int uidLength = m_tagType == 5 ? 7 : 4;
    switch (ins) {
    case 0xCA: // Get Data: the UID
        return p1 == 0 ? QByteArray(m_image.left(uidLength) + sw(0x9000)) : sw(0x6A81);
    case 0x82: // Load Key into a reader slot
        if (c.size() != 11 || quint8(c[4]) != 6)
            return sw(0x6700);
        if (refusesSlot0 && p2 == 0)
            return sw(0x6986);
        m_keys[p2] = c.mid(5, 6);
        return sw(0x9000);
    case 0x86: // General Authenticate: 01 00 block keytype slot
        if (olderOnly)
            return sw(0x6D00);
        if (c.size() != 10 || quint8(c[4]) != 5 || c[5] != 0x01)
            return sw(0x6700);
        return authenticate(quint8(c[7]), quint8(c[8]), quint8(c[9]));
    case 0x88: // the older Authenticate: P2 block, then keytype and slot
        if (c.size() != 6)
            return sw(0x6700);
        return authenticate(p2, quint8(c[4]), quint8(c[5]));
    case 0xB0:   // Read Binary
    case 0xD6: { // Update Binary
        const bool write = ins == 0xD6;
        if (write && (c.size() != 5 + BlockSize || quint8(c[4]) != BlockSize))
            return sw(0x6700);
        if (m_halted)
            return sw(0x6300);
        if (p2 >= Blocks)
            return sw(0x6A82);
        if (m_loggedSector != p2 / 4)
            return sw(0x6982);
        if (!write)
            return m_image.mid(p2 * BlockSize, BlockSize) + sw(0x9000);
        if (p2 == 0 || locked)
            return sw(0x6986);
        m_image.replace(p2 * BlockSize, BlockSize, c.mid(5, BlockSize));
        return sw(0x9000);
    }
    default:
        return sw(0x6D00);
    }
}

QByteArray VpcdCard::authenticate(int block, quint8 keyType, quint8 slot) {
    if (m_halted)
        return sw(0x6300);
    if (block >= Blocks || (keyType != 0x60 && keyType != 0x61) || !m_keys.count(slot))
        return sw(0x6986);
    const int trailer = (block / 4 * 4 + 3) * BlockSize + (keyType == 0x60 ? 0 : 10);
    if (m_image.mid(trailer, 6) != m_keys[slot]) {
        m_halted = true;
        m_loggedSector = -1;
        return sw(0x6300);
    }
    m_loggedSector = block / 4;
    return sw(0x9000);
}

} // namespace pondar::test
