#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <winscard.h>

namespace pondar::test {

// A private pcscd with one vpcd virtual reader, for one test process. It is socket-activated as
// systemd would start it, so that it never meets a system daemon, and it dies with the process.
class PcscStack {
public:
    // Started on first use; null, with the reason in whyNot, when it cannot run here.
    static PcscStack* get(QString* whyNot);
    static void finish();

    ~PcscStack();
    PcscStack(const PcscStack&) = delete;
    PcscStack& operator=(const PcscStack&) = delete;

    // Where a card connects, and the PC/SC name of that slot.
    quint16 port() const { return m_port; }
    QByteArray readerName() const { return m_readerName; }

    // Until pcscd reports a powered card in the reader (or none); false after timeoutMs.
    bool waitForCard(bool present, int timeoutMs = 5000);

    // start() brings the daemon back on the same socket and ports.
    void stop();
    bool start(QString* whyNot);

private:
    PcscStack() = default;
    bool prepare(QString* whyNot);
    QString logTail() const;

    QTemporaryDir m_dir;
    QByteArray m_pcscd;
    int m_listener = -1;
    quint16 m_port = 0;
    QByteArray m_readerName;
    int m_pid = -1;
    SCARDCONTEXT m_context = 0;
    bool m_hasContext = false;
};

} // namespace pondar::test
