// What only a PC/SC reader does; the card paths themselves run in tst_reader and tst_membercard
// over both back ends.
#include "card/cardbench.h"
#include "card/pcscstack.h"
#include "card/vpcdcard.h"

#include <QElapsedTimer>
#include <QTest>

#include <winscard.h>

using namespace pondar;
using namespace pondar::card;

namespace {

const uint8 TransportKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
const uint8 WrongKey[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
const uint8 Data[16] = {'1', '2', '3', '4', '.', '5'};

constexpr quint8 GetUid = 0xCA;
constexpr quint8 ReadBinary = 0xB0;
constexpr quint8 UpdateBinary = 0xD6;

// A blank card on the bench's reader.
struct OnBench {
    test::CardBench bench;
    ReaderLibrary& lib = *bench.reader;
    QByteArray before;
    int16 h = 0;
    uint8 data[16] = {};

    OnBench() {
        bench.put({1, 2, 3, 4});
        before = bench.image();
    }
    // Opens, selects and logs in to sector 9; the status of the first step that failed.
    int16 ready(const uint8* key = TransportKey) {
        h = lib.Open(0);
        uint8 type = 0, length = 0, serial[10];
        int16 s = h < 0 ? h : lib.Select(h, type, length, serial);
        return s != status::Ok ? s : lib.Login(h, 9, KeyTypeA, 0, key);
    }
};

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

class TestPcscReader final : public test::CardTest {
    Q_OBJECT

private Q_SLOTS:
    void readerDialects_data() {
        QTest::addColumn<bool>("refusesSlot0");
        QTest::addColumn<bool>("olderOnly");
        QTest::newRow("key slot 20") << true << false;
        QTest::newRow("older authenticate") << false << true;
    }
    void readerDialects() {
        QFETCH(bool, refusesSlot0);
        QFETCH(bool, olderOnly);
        OnBench b;
        b.bench.card()->refusesSlot0 = refusesSlot0;
        b.bench.card()->olderOnly = olderOnly;
        QCOMPARE(b.ready(), status::Ok);
        QCOMPARE(b.lib.Write(b.h, 37, Data), status::Ok);
        QCOMPARE(b.bench.block(37).left(6), QByteArray("1234.5"));
        QCOMPARE(b.ready(WrongKey), status::InvalidKeyFormat);
    }

    void badAnswers_data() {
        QTest::addColumn<quint8>("ins");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("read: short data") << ReadBinary << QByteArray::fromHex("3132333435 9000");
        QTest::newRow("read: data, then failure")
            << ReadBinary << QByteArray(16, 'x') + QByteArray::fromHex("6300");
        QTest::newRow("write: garbage") << UpdateBinary << QByteArray::fromHex("DEADBEEF");
        QTest::newRow("write: card pulled") << UpdateBinary << QByteArray();
        QTest::newRow("uid: one byte") << GetUid << QByteArray::fromHex("6A");
    }
    // A garbled answer, or none, fails the one operation, writes nothing and is not retried.
    void badAnswers() {
        QFETCH(quint8, ins);
        QFETCH(QByteArray, answer);
        OnBench b;
        if (answer.isEmpty())
            b.bench.card()->vanishOn = ins;
        else
            b.bench.card()->answerNext(ins, answer);
        int16 s = b.ready();
        if (s == status::Ok)
            s = ins == UpdateBinary ? b.lib.Write(b.h, 37, Data) : b.lib.Read(b.h, 37, b.data);
        QVERIFY2(s < 0, qPrintable(QString::number(s)));
        QCOMPARE(b.bench.image(), b.before);
        QVERIFY(b.bench.card()->count(UpdateBinary) <= 1);
        if (answer.isEmpty())
            b.bench.put(b.before);
        QCOMPARE(b.ready(), status::Ok);
        QCOMPARE(b.lib.Write(b.h, 37, Data), status::Ok);
    }

    // Another application's hold on the reader is reported at once, never waited out.
    void otherApplications() {
        OnBench b;
        const QByteArray name = b.bench.stack()->readerName();
        {
            OtherApplication other(name, SCARD_SHARE_EXCLUSIVE);
            QCOMPARE(b.ready(), status::PortOccupied);
        }
        QCOMPARE(b.ready(), status::Ok);
        OtherApplication other(name, SCARD_SHARE_SHARED);
        QCOMPARE(SCardBeginTransaction(other.card), SCARD_S_SUCCESS);
        QElapsedTimer took;
        took.start();
        QCOMPARE(b.lib.Write(b.h, 36, Data), status::PortOccupied);
        QVERIFY(took.elapsed() < 2000);
        QCOMPARE(b.bench.card()->count(UpdateBinary), 0);
        SCardEndTransaction(other.card, SCARD_LEAVE_CARD);
        QCOMPARE(b.lib.Read(b.h, 36, b.data), status::Ok);
    }

    // A restarted service is found again by the next open; meanwhile every call fails fast.
    void serviceRestarts() {
        OnBench b;
        QCOMPARE(b.ready(), status::Ok);
        b.bench.stack()->stop();
        QElapsedTimer took;
        took.start();
        QVERIFY(b.lib.Read(b.h, 36, b.data) < 0);
        QCOMPARE(b.lib.Open(0), status::InvalidPort);
        QVERIFY(took.elapsed() < 3000);
        QString whyNot;
        QVERIFY2(b.bench.stack()->start(&whyNot), qPrintable(whyNot));
        b.bench.put(b.before);
        QCOMPARE(b.ready(), status::Ok);
    }
};

QTEST_APPLESS_MAIN(TestPcscReader)
#include "tst_pcscreader.moc"
