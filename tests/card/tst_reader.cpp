#include "card/cardbench.h"
#include "card/readeraccess.h"

#include <pondar/error.h>

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

const uint8 TransportKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
const uint8 Data[16] = {'P', 'O', 'N', 'D', 'A', 'R', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x7F};

// A card on the bench's reader and a session that reaches it as StartApp leaves one.
struct OnReader {
    test::CardBench bench;
    SessionSettings s;
    test::RecordingPrompts prompts;
    ReaderAccess access{s, prompts};

    explicit OnReader(const QByteArray& image, int type = TagMifare1K) {
        if (type != TagMifare1K)
            bench.setType(type);
        bench.put(image);
        bench.attach(s);
    }
};

} // namespace

class TestReader final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (const QString why = test::CardBench::unavailable(); !why.isEmpty())
            QSKIP(qPrintable(why));
    }
    void cleanupTestCase() { test::CardBench::finish(); }

    void portTexts() {
        for (const auto& [text, port] :
             {std::pair{"0", 0}, {"1", 0}, {"2", 1}, {"5", 4}, {"7", 0}, {" 2", 0}})
            QCOMPARE(int(libraryPort(QString::fromLatin1(text))), port);
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
        QByteArray image = blankCardImage({0, 0, 0, 0});
        image.replace(0, uid.size(), uid);
        OnReader r(image, type);
        QVERIFY(r.access.openSelectLogin(1, 10));
        QCOMPARE(r.s.CardSerial, serial);
        QCOMPARE(r.s.LoggedSector, std::uint16_t(10));
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
        const QByteArray before = sim.image();
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

        // Block 0 is read-only, the others take the data; a locked card takes nothing.
        QCOMPARE(lib.Login(h, 0, KeyTypeA, 0, TransportKey), status::Ok);
        QCOMPARE(lib.Write(h, 0, Data), status::OperationFailed);
        QCOMPARE(sim.image(), before);
        QCOMPARE(lib.Write(h, 1, Data), status::Ok);
        QCOMPARE(sim.block(1), QByteArray(reinterpret_cast<const char*>(Data), 16));
        sim.lock();
        const QByteArray locked = sim.image();
        QCOMPARE(lib.Write(h, 2, Data), status::OperationFailed);
        QCOMPARE(sim.image(), locked);
        QCOMPARE(lib.Read(h, 1, data), status::Ok);

        QCOMPARE(lib.Close(h), status::Ok);
        QCOMPARE(lib.Read(h, 1, data), status::InvalidHandle);
    }

    void cardTakenAwayOrSwappedBetweenCalls() {
        OnReader r(blankCardImage({1, 2, 3, 4}));
        QVERIFY(r.access.openSelectLogin(1, 10));
        QCOMPARE(r.access.readBlock(10, u"3"_s).size(), 16);

        r.bench.takeAway();
        QCOMPARE(r.access.readBlock(10, u"1"_s), QByteArray());
        QCOMPARE(r.s.ReaderStatus, status::NoTag);
        QCOMPARE(r.prompts.errors, QStringList{u"Pondar: Error"_s});

        QVERIFY(!r.access.openSelectLogin(1, 10));
        r.bench.put({1, 2, 3, 4});
        QVERIFY(r.access.openSelectLogin(1, 10));
        r.bench.put({9, 9, 9, 9}); // another card, same key, never selected
        QVERIFY(!r.access.writeBlock(10, 1, QByteArray(16, 'x')));
        QCOMPARE(r.s.ReaderStatus, status::NoTag);
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
        OnReader r(blankCardImage({1, 2, 3, 4}));
        auto counting = std::make_shared<Counting>();
        counting->inner = r.bench.reader;
        r.s.Reader = counting;
        for (int sector : {10, 9, 10})
            QVERIFY(r.access.openSelectLogin(1, sector));
        QCOMPARE(counting->open, 1);
        r.access.close();
        r.access.close();
        QCOMPARE(counting->open, 0);
    }

    // The key is the first two digits of the key text, six times; a block text that is not a
    // number is block 0.
    void keyTextAndBlockNumbers() {
        QByteArray image = blankCardImage({1, 2, 3, 4});
        image.replace(43 * 16, 6, QByteArray(6, '\x3c'));
        OnReader r(image);
        QVERIFY(!r.access.openSelectLogin(1, 10));
        QCOMPARE(r.s.ReaderStatus, status::InvalidKeyFormat);
        r.s.DefFF = u"3C99"_s;
        QVERIFY(r.access.openSelectLogin(1, 10));
        QCOMPARE(r.access.readBlock(10, u"x"_s), r.bench.block(40));
        QCOMPARE(r.access.readBlock(10, u"2"_s), r.bench.block(42));
        QVERIFY_THROWS_EXCEPTION(pondar::Error, r.access.readBlock(64, u"0"_s));
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
