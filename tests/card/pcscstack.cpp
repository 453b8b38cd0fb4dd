#include "card/pcscstack.h"
#include "support/fixtures.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace pondar::test {

namespace {

std::unique_ptr<PcscStack> theStack;

bool fail(QString* whyNot, const QString& why) {
    *whyNot = why;
    return false;
}

// A port that nothing listens on, with the next one free as well: vpcd serves a second slot
// there. Both are bound on every address, as vpcd binds them.
quint16 freePortPair() {
    for (int attempt = 0; attempt < 20; ++attempt) {
        const int a = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int b = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_ANY);
        socklen_t length = sizeof address;
        auto* any = reinterpret_cast<sockaddr*>(&address);
        bool free = ::bind(a, any, length) == 0 && ::getsockname(a, any, &length) == 0;
        const quint16 port = ntohs(address.sin_port);
        address.sin_port = htons(quint16(port + 1));
        free = free && port < 65535 && ::bind(b, any, length) == 0;
        ::close(a);
        ::close(b);
        if (free)
            return port;
    }
    return 0;
}

} // namespace

PcscStack* PcscStack::get(QString* whyNot) {
    if (!theStack) {
        std::unique_ptr<PcscStack> made(new PcscStack);
        if (!made->prepare(whyNot) || !made->start(whyNot))
            return nullptr;
        theStack = std::move(made);
    }
    return theStack.get();
}

void PcscStack::finish() {
    theStack.reset();
}

PcscStack::~PcscStack() {
    stop();
}

bool PcscStack::prepare(QString* whyNot) {
    const QString pcscd = QStandardPaths::findExecutable(u"pcscd"_s, {u"/usr/sbin"_s, u"/sbin"_s});
    if (pcscd.isEmpty())
        return fail(whyNot, u"pcscd is not installed (Debian package pcscd)"_s);
    m_pcscd = QFile::encodeName(pcscd);
    const QByteArray driver = PONDAR_PCSC_DRIVERS "/serial/libifdvpcd.so";
    if (!QFile::exists(QFile::decodeName(driver)))
        return fail(whyNot, u"the vpcd driver is not installed (Debian package vsmartcard-vpcd)"_s);
    m_port = freePortPair();
    if (m_port == 0)
        return fail(whyNot, u"no free TCP ports for the virtual reader"_s);
    const QByteArray friendly = "Pondar Test " + QByteArray::number(m_port);
    m_readerName = friendly + " 00 00";
    writeFile(m_dir.filePath(u"reader.conf"_s),
              "FRIENDLYNAME \"" + friendly +
                  "\"\nDEVICENAME /dev/null:" + QByteArray::number(m_port) + "\nLIBPATH " + driver +
                  "\nCHANNELID " + QByteArray::number(m_port) + "\n");

    // The client library reads this once, at its first call.
    qputenv("PCSCLITE_CSOCK_NAME", QFile::encodeName(m_dir.filePath(u"pcscd.comm"_s)));
    return true;
}

bool PcscStack::start(QString* whyNot) {
    // The daemon's socket goes with it: one with no daemon behind it would leave clients waiting.
    const QByteArray socketPath = QFile::encodeName(m_dir.filePath(u"pcscd.comm"_s));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= qsizetype(sizeof address.sun_path))
        return fail(whyNot, u"the temporary folder's path is too long for a socket"_s);
    std::memcpy(address.sun_path, socketPath.constData(), size_t(socketPath.size()));
    ::unlink(socketPath.constData());
    m_listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_listener < 0 ||
        ::bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(m_listener, 16) != 0)
        return fail(whyNot, u"cannot make the daemon's socket "_s + QFile::decodeName(socketPath));
    // Everything the child needs is made before fork: only async-signal-safe calls after it.
    // The daemon takes the socket only if LISTEN_PID names it; the shell's exec keeps its pid.
    QByteArray sh = "/bin/sh", c = "-c",
               script = R"(LISTEN_FDS=1 LISTEN_PID=$$ exec "$0" -f -c "$1" >>"$2" 2>&1)",
               pcscd = m_pcscd, conf = QFile::encodeName(m_dir.filePath(u"reader.conf"_s)),
               log = QFile::encodeName(m_dir.filePath(u"pcscd.log"_s));
    char* argv[] = {sh.data(),   c.data(),   script.data(), pcscd.data(),
                    conf.data(), log.data(), nullptr};
    const pid_t parent = ::getpid();

    const pid_t pid = ::fork();
    if (pid < 0)
        return fail(whyNot, u"cannot fork pcscd"_s);
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent)
            ::_exit(1);
        if (m_listener == 3)
            ::fcntl(3, F_SETFD, 0);
        else if (::dup2(m_listener, 3) != 3)
            ::_exit(126);
        ::execv(argv[0], argv);
        ::_exit(127);
    }
    m_pid = pid;

    // Ready when the reader is listed; the daemon can take a while under the sanitizers.
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 15000) {
        if (::waitpid(m_pid, nullptr, WNOHANG) == m_pid) {
            m_pid = -1;
            return fail(whyNot, u"pcscd stopped as it started: "_s + logTail());
        }
        if (!m_hasContext && SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr,
                                                   &m_context) == SCARD_S_SUCCESS)
            m_hasContext = true;
        char names[4096];
        DWORD length = sizeof names;
        if (m_hasContext &&
            SCardListReaders(m_context, nullptr, names, &length) == SCARD_S_SUCCESS &&
            QByteArray(names, length).split('\0').contains(m_readerName))
            return true;
        ::usleep(50 * 1000);
    }
    stop();
    return fail(whyNot, u"pcscd did not list its virtual reader within 15 s: "_s + logTail());
}

void PcscStack::stop() {
    if (m_hasContext)
        SCardReleaseContext(m_context);
    m_hasContext = false;
    if (m_listener >= 0) {
        ::close(m_listener);
        ::unlink(QFile::encodeName(m_dir.filePath(u"pcscd.comm"_s)).constData());
        m_listener = -1;
    }
    if (m_pid <= 0)
        return;
    ::kill(m_pid, SIGTERM);
    QElapsedTimer waited;
    waited.start();
    bool gone = false;
    while (!(gone = ::waitpid(m_pid, nullptr, WNOHANG) == m_pid) && waited.elapsed() < 5000)
        ::usleep(20 * 1000);
    if (!gone) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    m_pid = -1;
}

bool PcscStack::waitForCard(bool present, int timeoutMs) {
    SCARD_READERSTATE state{};
    state.szReader = m_readerName.constData();
    state.dwCurrentState = SCARD_STATE_UNAWARE;
    QElapsedTimer waited;
    waited.start();
    while (m_hasContext && waited.elapsed() < timeoutMs) {
        const LONG rv = SCardGetStatusChange(m_context, 500, &state, 1);
        if (rv == SCARD_E_TIMEOUT)
            continue;
        if (rv != SCARD_S_SUCCESS)
            return false;
        const DWORD s = state.dwEventState;
        if (present ? (s & SCARD_STATE_PRESENT) && !(s & SCARD_STATE_MUTE) && state.cbAtr > 0
                    : (s & SCARD_STATE_EMPTY) != 0)
            return true;
        state.dwCurrentState = s & ~DWORD(SCARD_STATE_CHANGED);
    }
    return false;
}

QString PcscStack::logTail() const {
    return QString::fromLocal8Bit(readFile(m_dir.filePath(u"pcscd.log"_s)).right(1500)).trimmed();
}

} // namespace pondar::test
