#pragma once

#include "card/prompts.h"
#include "card/reader.h"

#include <QByteArray>
#include <QString>

namespace pondar {
struct SessionSettings;
}

namespace pondar::card {

// The title of a message box that names none: the component's own name.
inline constexpr char DefaultTitle[] = "Pondar";

// The library port of a port text: "0" and "1" both give 0, "2".."5" give 1..4, anything
// else 0.
int16 libraryPort(const QString& portText);

// CardSerial of a selected tag: "V" + body + "S". A 4-byte serial gives its hex digits; the
// 7-byte serials of tag types 4 and 5 are folded into the decimal sum of the codes of the
// first hex digit of each byte, to keep the text short enough for a scrambled block.
QString serialText(uint8 tagType, uint8 serialLength, const uint8 serial[10]);

// The reader operations over the session's reader fields (ReaderHandle, ReaderStatus,
// LoginSector, CardSerial). The session's library is made on first use.
// Failures are negative statuses kept in the session; nothing is retried.
class ReaderAccess final {
public:
    ReaderAccess(SessionSettings& session, CardPrompts& prompts);

    ReaderLibrary& library();

    // Opens the reader; the handle goes to ReaderHandle. True when it is not negative.
    bool openReader(const QString& portText);
    // Selects the card in the field and builds CardSerial (empty on failure).
    bool selectCard();
    // Logs in to LoginSector with key A: six equal bytes, each the first two hex digits of
    // DefFF.
    bool logIn();
    // Every group of card operations starts here, against a freshly opened reader.
    bool openSelectLogin(int port, int sector);
    // Logs in to another sector of the card already selected.
    bool logInTo(int sector);
    // Whether the card selected on the open handle is logged in to this sector and nothing has
    // failed since: a write there needs no new select or login.
    bool loggedInTo(int sector) const;

    // The 16 bytes of block sector * 4 + the block text's number (a non-number is block 0).
    // On failure an "Error" box, empty bytes, and the status stays in ReaderStatus. Throws
    // pondar::Error for a block number outside 0..255.
    QByteArray readBlock(int sector, const QString& blockText);
    // Writes exactly 16 bytes to block sector * 4 + block; the status goes to ReaderStatus.
    bool writeBlock(int sector, int block, const QByteArray& data);

    // Closes ReaderHandle; the handle keeps its value.
    void close();

private:
    SessionSettings& m_session;
    CardPrompts& m_prompts;
};

} // namespace pondar::card
