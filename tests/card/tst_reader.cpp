#include "card/cardbench.h"
#include "card/readeraccess.h"

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
        bench.setType(type);
        bench.put(image);
        bench.attach(s);
    }
};

} // namespace

class TestReader final : public test::CardTest {
    Q_OBJECT

private Q_SLOTS:
    void serialTexts_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("uid");
        QTest::addColumn<QString>("serial");
        QTest::newRow("4-byte") << 2 << QByteArray("\x1a\x2b\x3c\x4d") << u"V1A2B3C4DS"_s;
        // The sum of the hex digits' character codes.
        QTest::newRow("7-byte") << 5 << QByteArray("\x99\x00\x00\x00\x00\x00\x10", 7) << u"V346S"_s;
    }
    void serialTexts() {
        QFETCH(int, type);
        QFETCH(QByteArray, uid);
        QFETCH(QString, serial);
        QByteArray image = blankCardImage({0, 0, 0, 0});
        image.replace(0, uid.size(), uid);
        OnReader r(image, type);
        QVERIFY(r.access.openSelectLogin(1, 10));
        QCOMPARE(r.s.CardSerial, serial);
    }

    // Each failure of the card, on the library itself.
    void libraryRefuses() {
        test::CardBench sim;
        ReaderLibrary& lib = *sim.reader;
        uint8 type = 0, length = 0, serial[10], data[16];

        const int16 h = lib.Open(0);
        QCOMPARE(lib.Select(h, type, length, serial), status::NoTag);
        sim.put({1, 2, 3, 4});
        const QByteArray before = sim.image();
        QCOMPARE(lib.Select(h, type, length, serial), status::Ok);
        QCOMPARE(lib.Read(h, 41, data), status::OperationFailed); // no login yet

        const uint8 wrongKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
        QCOMPARE(lib.Login(h, 10, KeyTypeA, 0, wrongKey), status::InvalidKeyFormat);
        QCOMPARE(lib.Login(h, 10, KeyTypeA, 0, TransportKey), status::NoTag); // halted

        QCOMPARE(lib.Select(h, type, length, serial), status::Ok);
        QCOMPARE(lib.Login(h, 10, KeyTypeA, 0, TransportKey), status::Ok);
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
        QCOMPARE(lib.Close(h), status::Ok);
    }

    void cardTakenAwayBetweenCalls() {
        OnReader r(blankCardImage({1, 2, 3, 4}));
        QVERIFY(r.access.openSelectLogin(1, 10));
        r.bench.takeAway();
        QCOMPARE(r.access.readBlock(10, u"1"_s), QByteArray());
        QCOMPARE(r.s.ReaderStatus, status::NoTag);
        QCOMPARE(r.prompts.errors, QStringList{u"Pondar: Error"_s});
    }
};

QTEST_APPLESS_MAIN(TestReader)
#include "tst_reader.moc"
