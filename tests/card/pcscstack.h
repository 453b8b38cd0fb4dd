#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <winscard.h>

namespace pondar::test {

// A private pcsc-lite stack for one test process: pcscd in the foreground with one vpcd virtual
// reader on free TCP ports, started the way systemd does it (its listening socket on fd 3,
// LISTEN_FDS and LISTEN_PID), so that it never meets a system daemon. The process finds it
// through PCSCLITE_CSOCK_NAME. The daemon dies with the test process.
class PcscStack {
public:
    // The process's stack, started on first use; null, with the reason in whyNot, when it
    // cannot run here.
    static PcscStack* get(QString* whyNot);
    // Stops the daemon, if one was started.
    static void finish();

    ~PcscStack();
    PcscStack(const PcscStack&) = delete;
    PcscStack& operator=(const PcscStack&) = delete;

    // The TCP port of the reader's first slot, where a card connects.
    quint16 port() const { return m_port; }
    // The PC/SC name of that slot.
    QByteArray readerName() const { return m_readerName; }

    // Waits until pcscd reports a powered card in the reader (or none); false after timeoutMs.
    bool waitForCard(bool present, int timeoutMs = 5000);

    // Stops the daemon and removes its socket; start() brings both back, on the same socket
    // path and ports.
    void stop();
    bool start(QString* whyNot);

private:
    PcscStack() = default;
    bool prepare(QString* whyNot);
    bool listen(QString* whyNot);
    QString logTail() const;

    QTemporaryDir m_dir;
    QByteArray m_pcscd;
    QByteArray m_driver;
    int m_listener = -1;
    quint16 m_port = 0;
    QByteArray m_readerName;
    int m_pid = -1;
    SCARDCONTEXT m_context = 0;
    bool m_hasContext = false;
};

} // namespace pondar::test
