#pragma once

#include "card/prompts.h"
#include "card/readeraccess.h"
#include "shell/modes.h"

#include <pondar/currency.h>

#include <QByteArray>
#include <QString>

namespace pondar {
struct SessionSettings;
}

namespace pondar::card {

// Where the member record lives on a card. Sector 10: SERIAL (block 0, the card's own serial
// text, scrambled), CODE (1), NAME (2). Sector 9: VALUE (block 0, the balance as plain decimal
// text). Each field is one 16-byte block of Windows-1252 text padded with zero bytes.
inline constexpr int MemberSector = 10;
inline constexpr int ValueSector = 9;
inline constexpr int FieldSize = 16;

// What a card read gave; code and name are trimmed.
struct CardData {
    QString code;
    QString name;
    Currency balance;
};

// How far a card read got. Anything but Ok stops the read at that step; the fields read
// before it are filled in.
enum class ReadResult {
    Ok,
    DeviceFailed,      // no reader, no card, or sector 10 refused the key
    NotOwnSerial,      // the card does not carry its own serial: a copy, or not a member card
    BadRecord,         // CODE or NAME holds a control byte or bytes after its zero padding
    ValueSectorFailed, // sector 9 could not be opened
    BadBalance,        // VALUE could not be read or is not a plain decimal number
};

// The question asked before a card's value changes by this amount.
QString valueQuestion(BillType billType, Currency amount);

// The message a screen shows for a failed read (empty for Ok).
QString readFailureMessage(ReadResult result);

// The balance held in a VALUE block: a plain decimal number ("150.5", "0", never negative)
// followed by zero padding. A block of zeros (never written) is 0. Returns false for anything
// else, so that a garbled balance is never taken for a number and then overwritten.
bool parseBalance(const QByteArray& block, Currency& balance);

// The member record on the card in the field, read and written through the session's reader.
class MemberCard final {
public:
    MemberCard(SessionSettings& session, CardPrompts& prompts);

    // Open, select and log in to a sector on the session's ReaderPort.
    bool openSelectLogin(int sector);

    // Writes a field of the record in a logged-in sector: SERIAL, CODE, NAME, VALUE, or a name
    // it does not know, which reuses the block of the last write. The bytes are padded with
    // zeros to 16. Throws pondar::Error, writing nothing, for more than 16 bytes and for the
    // reserved names (LASTUPDATEDATE, LASTUPDATETIME, BLACKLISTED) in sectors 9 and 10, whose
    // blocks hold the record's own fields.
    bool writeField(int sector, const QString& fieldName, const QByteArray& bytes);
    // The same with a text, encoded as Windows-1252.
    bool writeField(int sector, const QString& fieldName, const QString& text);

    // Card issue, after openSelectLogin(MemberSector): the scrambled CardSerial, the code, and
    // the name cut to the block's 16 characters.
    bool writeSerial();
    bool writeCode(const QString& code);
    bool writeName(const QString& name);

    // True when block 0 of the sector, unscrambled, is this card's CardSerial.
    bool checkCard(int sector);

    // The text of a block with its zero padding removed; empty after a failed read.
    QString readField(int sector, int block);

    // Reads code, name and balance. Shows no message of its own beyond a failed block read
    // (through the prompts); the caller shows readFailureMessage().
    ReadResult read(CardData& data);

    // Asks "Confirm to Add in value : 10.00 to Card ?" (or "Confirm to withdraw out value : ...
    // from Card ?" for OUT and AOT). No writes nothing. Otherwise opens sector 9 and writes the
    // new balance's shortest text to VALUE. True when it was written.
    bool confirmAndWriteValue(BillType billType, Currency amount, Currency newBalance);
    // The write alone: writes the balance in sector 9 as a read left it logged in, or after
    // opening it. Throws pondar::Error, writing
    // nothing, for a balance whose text is too long for the block.
    bool writeValue(Currency newBalance);
    static void checkBalanceFits(Currency balance);

    // Closes the session's reader handle.
    void close();

    // The block in sector of the last field written.
    int lastBlock() const { return m_block; }

private:
    SessionSettings& m_session;
    CardPrompts& m_prompts;
    ReaderAccess m_reader;
    int m_block = 0;
};

// Closes the session's reader when it goes out of scope, whichever way an action ends: the
// register and the supervisor keep no reader open between actions.
class ReaderClosing final {
public:
    ReaderClosing(SessionSettings& session, MemberCard& card);
    ~ReaderClosing();
    ReaderClosing(const ReaderClosing&) = delete;
    ReaderClosing& operator=(const ReaderClosing&) = delete;

private:
    SessionSettings& m_session;
    MemberCard& m_card;
};

} // namespace pondar::card
