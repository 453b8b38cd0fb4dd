#include "card/cardbench.h"
#include "card/membercard.h"

#include <pondar/error.h>

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

QByteArray padded(const QByteArray& text) {
    return text + QByteArray(16 - text.size(), '\0');
}

// The bench's reader, a session on it and the card record over both.
struct OnReader {
    test::CardBench bench;
    SessionSettings s;
    test::RecordingPrompts prompts;
    MemberCard card{s, prompts};
    CardData data;

    OnReader() {
        bench.attach(s);
        bench.put({1, 2, 3, 4});
    }

    // Writes a member record onto the card in the field, as card issue does.
    void issue(const QString& code, const QString& value) {
        if (!card.openSelectLogin(MemberSector) || !card.writeSerial() || !card.writeCode(code) ||
            !card.writeName(u"TAN AH KOW"_s) || !card.openSelectLogin(ValueSector) ||
            !card.writeField(ValueSector, u"VALUE"_s, value))
            qWarning("issue failed");
    }
};

} // namespace

class TestMemberCard final : public test::CardTest {
    Q_OBJECT

private Q_SLOTS:
    // A copy of the record on another card, or a garbled balance, stops the read.
    void readsOnlyItsOwnRecord() {
        OnReader r;
        const QByteArray blank = r.bench.image();
        r.bench.put({0x1A, 0x2B, 0x3C, 0x4D});
        r.issue(u"000001"_s, u"150.5"_s);
        QCOMPARE(r.card.read(r.data), ReadResult::Ok);
        QCOMPARE(QStringList({r.data.code, r.data.name, r.data.balance.toShortString()}),
                 QStringList({u"000001"_s, u"TAN AH KOW"_s, u"150.5"_s}));

        QByteArray copy = blank;
        copy.replace(36 * 16, 8 * 16, r.bench.image().mid(36 * 16, 8 * 16));
        r.bench.put(copy);
        r.data = {};
        QCOMPARE(r.card.read(r.data), ReadResult::NotOwnSerial);
        QVERIFY(r.data.code.isEmpty());

        r.bench.put({0x11, 0x22, 0x33, 0x44});
        r.issue(u"000004"_s, u"12x"_s);
        QCOMPARE(r.card.read(r.data), ReadResult::BadBalance);
    }

    // What a Save would pass on to the hand-off, the slip or a posting must not read.
    void hostileRecordIsUnreadable_data() {
        QTest::addColumn<int>("block");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("result");
        const int bad = int(ReadResult::BadRecord);
        const int badBalance = int(ReadResult::BadBalance);
        QTest::newRow("CR LF in NAME") << 42 << padded("A\r\nWriteValue=9") << bad;
        QTest::newRow("ESC p in NAME") << 42 << padded("TAN\x1bp\x00") << bad;
        QTest::newRow("GS V in CODE") << 41 << padded("0001\x1dV\x42") << bad;
        QTest::newRow("text after NUL") << 41 << QByteArray("0001\0ABCDEFGHIJK", 16) << bad;
        QTest::newRow("DEL in CODE") << 41 << padded("0001\x7f") << bad;
        QTest::newRow("tab in NAME") << 42 << padded("TAN\tKOW") << bad;
        QTest::newRow("0xFF is a letter") << 42 << padded("\xff\xff") << int(ReadResult::Ok);
        QTest::newRow("VALUE -50") << 36 << padded("-50") << badBalance;
        QTest::newRow("VALUE 1e308") << 36 << padded("1e308") << badBalance;
        QTest::newRow("VALUE NaN") << 36 << padded("NaN") << badBalance;
        QTest::newRow("VALUE 16 digits") << 36 << QByteArray("9999999999999999") << badBalance;
        QTest::newRow("VALUE all 0xFF") << 36 << QByteArray(16, '\xff') << badBalance;
    }
    void hostileRecordIsUnreadable() {
        QFETCH(int, block);
        QFETCH(QByteArray, bytes);
        OnReader r;
        r.issue(u"000001"_s, u"10"_s);
        QByteArray image = r.bench.image();
        image.replace(block * 16, 16, bytes);
        r.bench.put(image);
        const ReadResult result = r.card.read(r.data);
        QTEST(int(result), "result");
        if (result != ReadResult::Ok)
            QCOMPARE(readFailureMessage(result), u"Error Reading Device !!!"_s);
    }

    void fieldOf16Or17Characters() {
        OnReader r;
        QVERIFY(r.card.openSelectLogin(MemberSector));
        QVERIFY(r.card.writeField(MemberSector, u"NAME"_s, u"ABCDEFGHIJKLMNOP"_s));
        QCOMPARE(r.card.readField(MemberSector, 2), u"ABCDEFGHIJKLMNOP"_s);
        const QByteArray before = r.bench.image();
        QVERIFY_THROWS_EXCEPTION(
            pondar::Error, r.card.writeField(MemberSector, u"NAME"_s, u"ABCDEFGHIJKLMNOPQ"_s));
        QCOMPARE(r.bench.image(), before);
    }
};

QTEST_APPLESS_MAIN(TestMemberCard)
#include "tst_membercard.moc"
