// What only a PC/SC reader does: reader dialects, bad answers, cards and services that go away,
// other applications on the same reader. The card paths themselves run in tst_reader and
// tst_membercard over both back ends.
#include "card/cardbench.h"
#include "card/pcscstack.h"
#include "card/vpcdcard.h"

#include <QElapsedTimer>
#include <QTest>

#include <winscard.h>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

const uint8 TransportKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
const uint8 WrongKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
const uint8 Data[16] = {'1', '2', '3', '4', '.', '5'};

constexpr quint8 GetUid = 0xCA;
constexpr quint8 ReadBinary = 0xB0;
constexpr quint8 UpdateBinary = 0xD6;

// Opens, selects and logs in to a sector; the status of the first step that failed.
int16 ready(ReaderLibrary& lib, int16& h, uint8 sector, const uint8* key = TransportKey) {
    h = lib.Open(0);
    if (h < 0)
        return h;
    uint8 type = 0, length = 0, serial[10];
    if (const int16 s = lib.Select(h, type, length, serial); s != status::Ok)
        return s;
    return lib.Login(h, sector, KeyTypeA, 0, key);
}

// Another application on the same reader, with its own context.
struct OtherApplication {
    SCARDCONTEXT context = 0;
    SCARDHANDLE card = 0;

    explicit OtherApplication(const QByteArray& reader, DWORD share) {
        DWORD active = 0;
        if (SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context) !=
                SCARD_S_SUCCESS ||
            SCardConnect(context, reader.constData(), share, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                         &card, &active) != SCARD_S_SUCCESS)
            qFatal("the other application cannot connect");
    }
    ~OtherApplication() {
        SCardDisconnect(card, SCARD_LEAVE_CARD);
        SCardReleaseContext(context);
    }
};

} // namespace

class TestPcscReader final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (const QString why = test::CardBench::unavailable(); !why.isEmpty())
            QSKIP(qPrintable(why));
    }
    void cleanupTestCase() { test::CardBench::finish(); }

    void readerDialects_data() {
        QTest::addColumn<bool>("refusesSlot0");
        QTest::addColumn<bool>("olderOnly");
        QTest::newRow("current") << false << false;
        QTest::newRow("key slot 20") << true << false;
        QTest::newRow("older authenticate") << false << true;
        QTest::newRow("both") << true << true;
    }
    void readerDialects() {
        QFETCH(bool, refusesSlot0);
        QFETCH(bool, olderOnly);
        test::CardBench bench;
        bench.put({1, 2, 3, 4});
        bench.card()->setDialect(refusesSlot0, olderOnly);
        ReaderLibrary& lib = *bench.reader;
        int16 h = 0;
        QCOMPARE(ready(lib, h, 9), status::Ok);
        QCOMPARE(lib.Write(h, 37, Data), status::Ok);
        uint8 data[16];
        QCOMPARE(lib.Read(h, 37, data), status::Ok);
        QCOMPARE(QByteArray(reinterpret_cast<char*>(data), 16), bench.block(37));
        QCOMPARE(bench.block(37).left(6), QByteArray("1234.5"));
        QCOMPARE(ready(lib, h, 9, WrongKey), status::InvalidKeyFormat);
    }

    void badAnswers_data() {
        QTest::addColumn<quint8>("ins");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("read: short data") << ReadBinary << QByteArray::fromHex("3132333435 9000");
        QTest::newRow("read: status only") << ReadBinary << QByteArray::fromHex("9000");
        QTest::newRow("read: data, then failure")
            << ReadBinary << QByteArray(16, 'x') + QByteArray::fromHex("6300");
        QTest::newRow("read: too long") << ReadBinary << QByteArray(17, 'x') + "\x90\x00";
        QTest::newRow("write: garbage") << UpdateBinary << QByteArray::fromHex("DEADBEEF");
        QTest::newRow("uid: none") << GetUid << QByteArray::fromHex("9000");
        QTest::newRow("uid: one byte") << GetUid << QByteArray::fromHex("6A");
        QTest::newRow("uid: too long") << GetUid << QByteArray(11, 'u') + "\x90\x00";
    }
    // A garbled answer fails the one operation, writes nothing, and the next attempt works.
    void badAnswers() {
        QFETCH(quint8, ins);
        QFETCH(QByteArray, answer);
        test::CardBench bench;
        bench.put({1, 2, 3, 4});
        const QByteArray before = bench.image();
        ReaderLibrary& lib = *bench.reader;
        bench.card()->answerNext(ins, answer);
        int16 h = 0;
        int16 s = ready(lib, h, 9);
        uint8 data[16] = {};
        if (s == status::Ok)
            s = ins == UpdateBinary ? lib.Write(h, 37, Data) : lib.Read(h, 37, data);
        QVERIFY2(s < 0, qPrintable(QString::number(s)));
        QCOMPARE(bench.image(), before);
        QVERIFY(bench.card()->count(UpdateBinary) <= 1);

        QCOMPARE(ready(lib, h, 9), status::Ok);
        QCOMPARE(lib.Write(h, 37, Data), status::Ok);
    }

    // Pulled as the write arrives: nothing written, nothing retried. Pulled once the card has
    // acknowledged it: the write stands, though it cannot be read back. A write the read-back
    // shows did not stick is reported, not retried.
    void cardPulledDuringAWrite() {
        test::CardBench bench;
        bench.put({1, 2, 3, 4});
        const QByteArray before = bench.image();
        ReaderLibrary& lib = *bench.reader;
        int16 h = 0;
        QCOMPARE(ready(lib, h, 9), status::Ok);
        bench.card()->vanishOn(UpdateBinary);
        QVERIFY(lib.Write(h, 36, Data) < 0);
        QCOMPARE(bench.card()->count(UpdateBinary), 1);
        QCOMPARE(bench.image(), before);
        QVERIFY(bench.stack()->waitForCard(false));
        uint8 type, length, serial[10];
        QCOMPARE(lib.Select(h, type, length, serial), status::NoTag);

        bench.put(before);
        QCOMPARE(ready(lib, h, 9), status::Ok);
        bench.card()->vanishOn(ReadBinary);
        QCOMPARE(lib.Write(h, 36, Data), status::Ok);
        QCOMPARE(bench.card()->count(UpdateBinary), 1);
        QCOMPARE(bench.block(36), QByteArray(reinterpret_cast<const char*>(Data), 16));

        bench.put(before);
        QCOMPARE(ready(lib, h, 9), status::Ok);
        bench.card()->setLosesWrites(true);
        QCOMPARE(lib.Write(h, 36, Data), status::ReadAfterWriteFailed);
        QCOMPARE(bench.card()->count(UpdateBinary), 1);
    }

    // Another application's hold on the reader is reported at once, never waited out.
    void otherApplications() {
        test::CardBench bench;
        bench.put({1, 2, 3, 4});
        const QByteArray name = bench.stack()->readerName();
        ReaderLibrary& lib = *bench.reader;
        int16 h = 0;
        uint8 data[16];
        {
            OtherApplication other(name, SCARD_SHARE_EXCLUSIVE);
            QCOMPARE(ready(lib, h, 9), status::PortOccupied);
        }
        QCOMPARE(ready(lib, h, 9), status::Ok);
        {
            OtherApplication other(name, SCARD_SHARE_SHARED);
            QCOMPARE(SCardBeginTransaction(other.card), SCARD_S_SUCCESS);
            QElapsedTimer took;
            took.start();
            QCOMPARE(lib.Read(h, 36, data), status::PortOccupied);
            QVERIFY(took.restart() < 2000);
            QCOMPARE(lib.Write(h, 36, Data), status::PortOccupied);
            QVERIFY(took.elapsed() < 2000);
            QCOMPARE(bench.card()->count(UpdateBinary), 0);
            SCardEndTransaction(other.card, SCARD_LEAVE_CARD);
            QCOMPARE(lib.Read(h, 36, data), status::Ok);
        }
    }

    // A restarted service is found again by the next open; meanwhile every call fails fast.
    void serviceRestarts() {
        test::CardBench bench;
        bench.put({1, 2, 3, 4});
        const QByteArray image = bench.image();
        ReaderLibrary& lib = *bench.reader;
        int16 h = 0;
        uint8 data[16];
        QCOMPARE(ready(lib, h, 9), status::Ok);

        bench.stack()->stop();
        QElapsedTimer took;
        took.start();
        QVERIFY(lib.Read(h, 36, data) < 0);
        QCOMPARE(lib.Open(0), status::InvalidPort);
        QVERIFY(took.elapsed() < 3000);

        QString whyNot;
        QVERIFY2(bench.stack()->start(&whyNot), qPrintable(whyNot));
        bench.put(image);
        QCOMPARE(ready(lib, h, 9), status::Ok);
        QCOMPARE(lib.Read(h, 36, data), status::Ok);
    }

    void choosingTheReader() {
        test::CardBench bench;
        bench.setType(3);
        bench.put({1, 2, 3, 4});
        uint8 type = 0, length = 0, serial[10];

        // Unset, this platform's own reader stack, and its first reader.
        qunsetenv("PONDAR_READER");
        auto lib = makeReaderLibrary();
        int16 h = lib->Open(0);
        QVERIFY(h >= 0);
        QCOMPARE(lib->Select(h, type, length, serial), status::Ok);
        QCOMPARE(int(type), 3); // a 4K by its ATR
        QCOMPARE(QByteArray(reinterpret_cast<char*>(serial), length), QByteArray("\1\2\3\4"));
        QCOMPARE(lib->Close(h), status::Ok);
        QCOMPARE(lib->Select(h, type, length, serial), status::InvalidHandle);

        qputenv("PONDAR_READER", "pcsc:no such reader");
        QCOMPARE(makeReaderLibrary()->Open(0), status::InvalidPort);
        qputenv("PONDAR_READER", "pcsc");
        QVERIFY(makeReaderLibrary()->Open(0) >= 0);
        qunsetenv("PONDAR_READER");
    }
};

QTEST_APPLESS_MAIN(TestPcscReader)
#include "tst_pcscreader.moc"
