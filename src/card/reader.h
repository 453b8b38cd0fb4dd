#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <memory>

namespace pondar::card {

using int16 = std::int16_t;
using uint8 = std::uint8_t;

// The reader library's status codes. Success is 0; every failure is negative.
namespace status {
inline constexpr int16 Ok = 0;
inline constexpr int16 InternalError = -1000;
inline constexpr int16 InvalidPort = -2000;
inline constexpr int16 PortOccupied = -2010;
inline constexpr int16 InvalidHandle = -2020;
inline constexpr int16 IncorrectParameter = -2030;
inline constexpr int16 NoTag = -3000;
inline constexpr int16 ReadFailed = -3010;
inline constexpr int16 NotValueBlock = -3020;
inline constexpr int16 OperationFailed = -3030;
inline constexpr int16 UnknownReaderError = -3040;
inline constexpr int16 InvalidKeyFormat = -4010;
inline constexpr int16 ReadAfterWriteFailed = -4020;
inline constexpr int16 DecrementFailure = -4030;
} // namespace status

// Tag types as Select reports them. Types 4 and 5 carry 7-byte serials.
inline constexpr uint8 TagMifare1K = 2;

// Key type of a login with key A.
inline constexpr uint8 KeyTypeA = 0xAA;
inline constexpr uint8 KeyTypeB = 0xBB;

// The six operations of the ACR120 reader library that the component calls, with the library's
// own types and status codes. Open gives a handle (negative on failure); the others give a
// status. Blocks are absolute (sector * 4 + block in sector); buffers are owned by the caller.
class ReaderLibrary {
public:
    virtual ~ReaderLibrary();

    virtual int16 Open(int16 port) = 0;
    virtual int16 Close(int16 handle) = 0;
    virtual int16 Select(int16 handle, uint8& tagType, uint8& serialLength, uint8 serial[10]) = 0;
    virtual int16 Login(int16 handle, uint8 sector, uint8 keyType, uint8 storedNo,
                        const uint8 key[6]) = 0;
    virtual int16 Read(int16 handle, uint8 block, uint8 data[16]) = 0;
    virtual int16 Write(int16 handle, uint8 block, const uint8 data[16]) = 0;
};

// The library's text for a status, ending in its code; empty for a code it does not know.
QString statusText(int16 status);

// The library chosen by PONDAR_READER: "sim:DIR" is the simulated reader on folder DIR, "pcsc"
// the first PC/SC reader and "pcsc:NAME" the first whose name contains NAME, "none" a reader
// that is never there; unset gives the platform's own (the vendor DLL on Windows, PC/SC
// elsewhere).
std::shared_ptr<ReaderLibrary> makeReaderLibrary();

// The reader library over PC/SC. Library port N is the N-th reader whose name contains
// nameFilter (any reader when it is empty). Tag type and serial come from the card's ATR and
// its UID; logins load the key into the reader and authenticate; every operation on the card
// runs in a PC/SC transaction and waits on nothing without a bound.
std::shared_ptr<ReaderLibrary> makePcscReader(const QString& nameFilter = {});

// A library with no reader behind it: Open fails with InvalidPort.
std::shared_ptr<ReaderLibrary> makeAbsentReader();

#ifdef _WIN32
// ACR120U.DLL bound at run time.
std::shared_ptr<ReaderLibrary> makeVendorReader();
#endif

// The simulated reader. The card in the field is the file DIR/field.mfd, a 1024-byte Mifare
// Classic 1K image, looked up afresh at every call: no file means no card, and removing it
// between calls is a card taken away. DIR/field.type may hold the tag type in decimal
// (default 2); types 4 and 5 report the first 7 bytes of block 0 as the serial, others the
// first 4. Only library port 0 opens. Login compares key A (or key B) with the sector trailer
// and lasts until the next select; reads and writes need it. Writes go to the file at once;
// block 0 and a file without write permission refuse every write.
std::shared_ptr<ReaderLibrary> makeSimulatedReader(const QString& dir);

inline constexpr char FieldFileName[] = "field.mfd";
inline constexpr char FieldTypeFileName[] = "field.type";
inline constexpr int CardImageSize = 1024;

// A factory-fresh Mifare Classic 1K image: the UID and its check byte in block 0, the transport
// keys FF..FF as key A and key B and access bits FF 07 80 69 in every trailer, all else zero.
QByteArray blankCardImage(const std::array<uint8, 4>& uid);
// The same with a random UID.
QByteArray blankCardImage();

} // namespace pondar::card
