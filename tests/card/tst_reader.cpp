#include "card/cardbench.h"
#include "card/readeraccess.h"

#include <pondar/error.h>

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

const uint8 TransportKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
const uint8 Data[16] = {'P', 'O', 'N', 'D', 'A', 'R', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x7F};

// Opens, selects and logs in to a sector directly on the library; returns the handle.
int16 ready(ReaderLibrary& lib, uint8 sector) {
    const int16 h = lib.Open(0);
    uint8 type = 0, length = 0, serial[10];
    if (h < 0 || lib.Select(h, type, length, serial) != 0 ||
        lib.Login(h, sector, KeyTypeA, 0, TransportKey) != 0)
        qWarning("card not ready");
    return h;
}

} // namespace

class TestReader final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (const QString why = test::CardBench::unavailable(); !why.isEmpty())
            QSKIP(qPrintable(why));
    }
    void cleanupTestCase() { test::CardBench::finish(); }

    void portTexts_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("port");
        for (const auto& [t, p] : {std::pair{"0", 0},
                                   {"1", 0},
                                   {"2", 1},
                                   {"3", 2},
                                   {"4", 3},
                                   {"5", 4},
                                   {"6", 0},
                                   {"7", 0},
                                   {"", 0},
                                   {"x", 0},
                                   {" 2", 0}})
            QTest::newRow(t) << QString::fromLatin1(t) << p;
    }
    void portTexts() {
        QFETCH(QString, text);
        QFETCH(int, port);
        QCOMPARE(int(libraryPort(text)), port);
    }

    void serialTexts_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("uid");
        QTest::addColumn<QString>("serial");
        QTest::newRow("4-byte") << 2 << QByteArray("\x1a\x2b\x3c\x4d") << u"V1A2B3C4DS"_s;
        QTest::newRow("4-byte zeros") << 2 << QByteArray("\x00\x00\x00\x01", 4) << u"V00000001S"_s;
        // '0' + 'A' + 'B' + 'C' + 'D' + 'E' + 'F' = 48 + 65 + ... + 70
        QTest::newRow("7-byte type 4")
            << 4 << QByteArray("\x04\xa1\xb2\xc3\xd4\xe5\xf6") << u"V453S"_s;
        QTest::newRow("7-byte type 5")
            << 5 << QByteArray("\x99\x00\x00\x00\x00\x00\x10", 7) << u"V346S"_s;
    }
    void serialTexts() {
        QFETCH(int, type);
        QFETCH(QByteArray, uid);
        QFETCH(QString, serial);
        if (type == 4 && test::CardBench::overPcsc())
            QSKIP("no PC/SC storage card reports this tag type");
        test::CardBench sim;
        QByteArray image = blankCardImage({0, 0, 0, 0});
        image.replace(0, uid.size(), uid);
        sim.setType(type);
        sim.put(image);
        SessionSettings s;
        sim.attach(s);
        test::RecordingPrompts prompts;
        QVERIFY(ReaderAccess(s, prompts).openSelectLogin(1, 10));
        QCOMPARE(s.CardSerial, serial);
        QCOMPARE(s.LoggedSector, std::uint16_t(10));
    }

    void blankImageHasCheckByteAndTransportKeys() {
        const QByteArray image = blankCardImage({0x12, 0x34, 0x56, 0x78});
        QCOMPARE(image.size(), 1024);
        QCOMPARE(quint8(image[4]), quint8(0x12 ^ 0x34 ^ 0x56 ^ 0x78));
        const QByteArray trailer = QByteArray::fromHex("FFFFFFFFFFFFFF078069FFFFFFFFFFFF");
        for (int sector = 0; sector < 16; ++sector)
            QCOMPARE(image.mid((sector * 4 + 3) * 16, 16), trailer);
        QVERIFY(blankCardImage().left(4) != blankCardImage().left(4));
    }

    // Each failure of the card, on the library itself.
    void libraryRefuses() {
        test::CardBench sim;
        ReaderLibrary& lib = *sim.reader;
        uint8 type = 0, length = 0, serial[10], data[16];

        QCOMPARE(lib.Open(1), status::InvalidPort);
        const int16 h = lib.Open(0);
        QCOMPARE(lib.Select(h, type, length, serial), status::NoTag);
        sim.put({1, 2, 3, 4});
        QCOMPARE(lib.Select(h, type, length, serial), status::Ok);
        QCOMPARE(int(length), 4);
        QCOMPARE(lib.Read(h, 41, data), status::OperationFailed); // no login yet

        const uint8 wrongKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
        QCOMPARE(lib.Login(h, 10, KeyTypeA, 0, wrongKey), status::InvalidKeyFormat);
        QCOMPARE(lib.Login(h, 10, KeyTypeA, 0, TransportKey), status::NoTag); // halted

        QCOMPARE(lib.Select(h, type, length, serial), status::Ok);
        QCOMPARE(lib.Login(h, 10, KeyTypeA, 0, TransportKey), status::Ok);
        QCOMPARE(lib.Read(h, 41, data), status::Ok);
        QCOMPARE(lib.Read(h, 36, data), status::OperationFailed); // sector 9 not logged in
        QCOMPARE(lib.Select(h, type, length, serial), status::Ok);
        QCOMPARE(lib.Read(h, 41, data), status::OperationFailed); // a select ends the login

        QCOMPARE(lib.Close(h), status::Ok);
        QCOMPARE(lib.Read(h, 41, data), status::InvalidHandle);
    }

    void libraryWrites() {
        test::CardBench sim;
        sim.put({1, 2, 3, 4});
        const QByteArray before = sim.image();
        ReaderLibrary& lib = *sim.reader;
        const int16 h = ready(lib, 0);
        QCOMPARE(lib.Write(h, 0, Data), status::OperationFailed);
        QCOMPARE(sim.image(), before);
        QCOMPARE(lib.Write(h, 1, Data), status::Ok);
        QCOMPARE(sim.block(1), QByteArray(reinterpret_cast<const char*>(Data), 16));

        sim.lock();
        const QByteArray locked = sim.image();
        QCOMPARE(lib.Write(h, 2, Data), status::OperationFailed);
        QCOMPARE(sim.image(), locked);
        uint8 data[16];
        QCOMPARE(lib.Read(h, 1, data), status::Ok);
    }

    void cardTakenAwayOrSwappedBetweenCalls() {
        test::CardBench sim;
        sim.put({1, 2, 3, 4});
        SessionSettings s;
        sim.attach(s);
        test::RecordingPrompts prompts;
        ReaderAccess access(s, prompts);
        QVERIFY(access.openSelectLogin(1, 10));
        QCOMPARE(access.readBlock(10, u"3"_s).size(), 16);

        sim.takeAway();
        QCOMPARE(access.readBlock(10, u"1"_s), QByteArray());
        QCOMPARE(s.ReaderStatus, status::NoTag);
        QCOMPARE(prompts.errors, QStringList{u"Pondar: Error"_s});

        QVERIFY(access.openSelectLogin(1, 10) == false);
        sim.put({1, 2, 3, 4});
        QVERIFY(access.openSelectLogin(1, 10));
        sim.put({9, 9, 9, 9}); // another card, same key, never selected
        QVERIFY(!access.writeBlock(10, 1, QByteArray(16, 'x')));
        QCOMPARE(s.ReaderStatus, status::NoTag);
    }

    // A screen that reads the card over and over holds one handle at a time.
    void repeatedReadsHoldOneHandle() {
        struct Counting final : ReaderLibrary {
            std::shared_ptr<ReaderLibrary> inner;
            int open = 0;
            int16 Open(int16 port) override {
                const int16 h = inner->Open(port);
                open += h >= 0;
                return h;
            }
            int16 Close(int16 h) override {
                const int16 status = inner->Close(h);
                open -= status >= 0;
                return status;
            }
            int16 Select(int16 h, uint8& t, uint8& l, uint8 s[10]) override {
                return inner->Select(h, t, l, s);
            }
            int16 Login(int16 h, uint8 s, uint8 t, uint8 n, const uint8 k[6]) override {
                return inner->Login(h, s, t, n, k);
            }
            int16 Read(int16 h, uint8 b, uint8 d[16]) override { return inner->Read(h, b, d); }
            int16 Write(int16 h, uint8 b, const uint8 d[16]) override {
                return inner->Write(h, b, d);
            }
        };
        test::CardSim sim;
        sim.put({1, 2, 3, 4});
        auto counting = std::make_shared<Counting>();
        counting->inner = sim.reader;
        SessionSettings s;
        s.Reader = counting;
        test::RecordingPrompts prompts;
        ReaderAccess access(s, prompts);
        for (int sector : {10, 9, 10})
            QVERIFY(access.openSelectLogin(1, sector));
        QCOMPARE(counting->open, 1);
        access.close();
        access.close();
        QCOMPARE(counting->open, 0);
    }

    void loginUsesFirstTwoDigitsOfTheKeyText() {
        test::CardBench sim;
        QByteArray image = blankCardImage({1, 2, 3, 4});
        image.replace(43 * 16, 6, QByteArray(6, '\x3c'));
        sim.put(image);
        SessionSettings s;
        sim.attach(s);
        test::RecordingPrompts prompts;
        ReaderAccess access(s, prompts);
        QVERIFY(!access.openSelectLogin(1, 10));
        QCOMPARE(s.ReaderStatus, status::InvalidKeyFormat);
        s.DefFF = u"3C99"_s;
        QVERIFY(access.openSelectLogin(1, 10));
    }

    void blockNumbers() {
        test::CardBench sim;
        sim.put({1, 2, 3, 4});
        SessionSettings s;
        sim.attach(s);
        test::RecordingPrompts prompts;
        ReaderAccess access(s, prompts);
        QVERIFY(access.openSelectLogin(1, 10));
        QCOMPARE(access.readBlock(10, u"x"_s), sim.block(40)); // not a number: block 0
        QCOMPARE(access.readBlock(10, u"3"_s), sim.block(43));
        QVERIFY_THROWS_EXCEPTION(pondar::Error, access.readBlock(64, u"0"_s));
    }

    void environmentChoosesTheLibrary() {
        test::CardBench sim;
        sim.put({1, 2, 3, 4});
        qputenv("PONDAR_READER", sim.readerChoice().toLocal8Bit());
        SessionSettings s;
        test::RecordingPrompts prompts;
        QVERIFY(ReaderAccess(s, prompts).openSelectLogin(1, 10));
        QVERIFY(s.Reader);

        qputenv("PONDAR_READER", "none");
        SessionSettings none;
        QVERIFY(!ReaderAccess(none, prompts).openReader(u"1"_s));
        QCOMPARE(none.ReaderHandle, status::InvalidPort);
        qunsetenv("PONDAR_READER");
    }
};

QTEST_APPLESS_MAIN(TestReader)
#include "tst_reader.moc"
