#include "card/cardbench.h"
#include "card/membercard.h"

#include <pondar/error.h>

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

// Writes a member record onto the card in the field, as card issue does.
void issue(SessionSettings& s, const QString& code, const QString& name, const QString& value) {
    test::RecordingPrompts prompts;
    MemberCard card(s, prompts);
    if (!card.openSelectLogin(MemberSector) || !card.writeSerial() || !card.writeCode(code) ||
        !card.writeName(name) || !card.openSelectLogin(ValueSector) ||
        !card.writeField(ValueSector, u"VALUE"_s, value))
        qWarning("issue failed");
}

QByteArray padded(const QByteArray& text) {
    return text + QByteArray(16 - text.size(), '\0');
}

} // namespace

class TestMemberCard final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (const QString why = test::CardBench::unavailable(); !why.isEmpty())
            QSKIP(qPrintable(why));
    }
    void cleanupTestCase() { test::CardBench::finish(); }

    void readsAnIssuedCard() {
        test::CardBench sim;
        sim.put({0x1A, 0x2B, 0x3C, 0x4D});
        SessionSettings s;
        sim.attach(s);
        issue(s, u"000001"_s, u"TAN AH KOW"_s, u"150.5"_s);
        QCOMPARE(sim.block(41), padded("000001"));
        QCOMPARE(sim.block(36), padded("150.5"));
        QCOMPARE(sim.block(40).indexOf('\0'), 14); // "V1A2B3C4DS" scrambled

        test::RecordingPrompts prompts;
        MemberCard card(s, prompts);
        CardData data;
        QCOMPARE(card.read(data), ReadResult::Ok);
        QCOMPARE(data.code, u"000001"_s);
        QCOMPARE(data.name, u"TAN AH KOW"_s);
        QCOMPARE(data.balance.toShortString(), u"150.5"_s);
        QVERIFY(prompts.errors.isEmpty());
    }

    void readFailuresStopAtTheirStep() {
        test::CardBench sim;
        SessionSettings s;
        sim.attach(s);
        test::RecordingPrompts prompts;
        MemberCard card(s, prompts);
        CardData data;
        QCOMPARE(card.read(data), ReadResult::DeviceFailed);
        QCOMPARE(readFailureMessage(ReadResult::DeviceFailed),
                 u"Error Reading Device !!! Please unplug again your USB Cable "_s);

        sim.put({1, 2, 3, 4}); // blank: no record at all
        QCOMPARE(card.read(data), ReadResult::NotOwnSerial);

        issue(s, u"000002"_s, u"SITI"_s, u"20"_s);
        QByteArray image = sim.image();
        image.replace(39 * 16, 6, QByteArray(6, '\x11')); // sector 9 keyed differently
        sim.put(image);
        QCOMPARE(card.read(data), ReadResult::ValueSectorFailed);
        QCOMPARE(data.code, u"000002"_s); // what was read before the failure stays
        QCOMPARE(readFailureMessage(ReadResult::ValueSectorFailed), u"Error Open Device !!!"_s);

        // A garbled balance must stop the read, or a top-up would write over it.
        sim.put({1, 2, 3, 4});
        issue(s, u"000004"_s, u"LIM"_s, u"12x"_s);
        QCOMPARE(card.read(data), ReadResult::BadBalance);
    }

    // A copied record carries the serial of the card it came from.
    void copiedCardFailsTheCheck() {
        test::CardBench sim;
        SessionSettings s;
        sim.attach(s);
        sim.put({0x11, 0x22, 0x33, 0x44});
        issue(s, u"000003"_s, u"RAJESH"_s, u"99"_s);
        const QByteArray original = sim.image();

        QByteArray copy = blankCardImage({0x55, 0x66, 0x77, 0x88});
        copy.replace(36 * 16, 8 * 16, original.mid(36 * 16, 8 * 16));
        sim.put(copy);
        test::RecordingPrompts prompts;
        MemberCard card(s, prompts);
        CardData data;
        QCOMPARE(card.read(data), ReadResult::NotOwnSerial);
        QCOMPARE(readFailureMessage(ReadResult::NotOwnSerial), u"Error Reading Device !!!"_s);
        QVERIFY(data.code.isEmpty());

        sim.put(original);
        QCOMPARE(card.read(data), ReadResult::Ok);
    }

    void balanceBlocks_data() {
        QTest::addColumn<QByteArray>("block");
        QTest::addColumn<bool>("readable");
        QTest::addColumn<QString>("balance");
        QTest::newRow("decimal") << padded("150.5") << true << u"150.5"_s;
        QTest::newRow("negative") << padded("-20.25") << true << u"-20.25"_s;
        QTest::newRow("never written") << QByteArray(16, '\0') << true << u"0"_s;
        QTest::newRow("trailing letters") << padded("12x") << false << QString();
        QTest::newRow("garbage after padding")
            << QByteArray("5\0\0\0\0\0\0\0\0\0\0\0\0\0\0x", 16) << false << QString();
        QTest::newRow("out of range") << QByteArray("9999999999999999") << false << QString();
        QTest::newRow("garbled") << QByteArray("\xff\x01\x80"
                                               "abcdefghijklm")
                                 << false << QString();
    }
    void balanceBlocks() {
        QFETCH(QByteArray, block);
        QFETCH(bool, readable);
        QFETCH(QString, balance);
        Currency value = Currency::fromUnits(7);
        QCOMPARE(parseBalance(block, value), readable);
        if (readable)
            QCOMPARE(value.toShortString(), balance);
    }

    void fieldLimits() {
        test::CardBench sim;
        SessionSettings s;
        sim.attach(s);
        sim.put({1, 2, 3, 4});
        test::RecordingPrompts prompts;
        MemberCard card(s, prompts);
        QVERIFY(card.openSelectLogin(MemberSector));
        QVERIFY(card.writeField(MemberSector, u"NAME"_s, u"ABCDEFGHIJKLMNOP"_s));
        QCOMPARE(card.readField(MemberSector, 2), u"ABCDEFGHIJKLMNOP"_s);

        const QByteArray before = sim.image();
        QVERIFY_THROWS_EXCEPTION(pondar::Error,
                                 card.writeField(MemberSector, u"NAME"_s, u"ABCDEFGHIJKLMNOPQ"_s));
        QVERIFY_THROWS_EXCEPTION(pondar::Error,
                                 card.writeField(MemberSector, u"BLACKLISTED"_s, u"Y"_s));
        QCOMPARE(sim.image(), before);

        // Card issue cuts a long register name to what the block holds.
        QVERIFY(card.writeName(u"FARAH HANIM BINTI AZMAN"_s));
        QCOMPARE(card.readField(MemberSector, 2), u"FARAH HANIM BINT"_s);
        // A name the card record does not know reuses the block of the last write.
        QVERIFY(card.writeField(MemberSector, u"OTHER"_s, u"X"_s));
        QCOMPARE(sim.block(42), padded("X"));
        // Windows-1252 on the card.
        QVERIFY(card.writeCode(u"CAF\u00c9\u20ac"_s));
        QCOMPARE(sim.block(41), padded("CAF\xc9\x80"));
        QCOMPARE(card.readField(MemberSector, 1), u"CAF\u00c9\u20ac"_s);
    }

    void confirmAndWriteValue() {
        test::CardBench sim;
        SessionSettings s;
        sim.attach(s);
        sim.put({1, 2, 3, 4});
        issue(s, u"000005"_s, u"FAIZ"_s, u"50"_s);
        const QByteArray before = sim.image();

        test::RecordingPrompts prompts;
        MemberCard card(s, prompts);
        prompts.answers = {false};
        QVERIFY(!card.confirmAndWriteValue(u"OUT"_s, Currency::parse(u"10"_s),
                                           Currency::parse(u"40"_s)));
        QCOMPARE(prompts.asked,
                 QStringList{u"Confirm to withdraw out value : 10.00 from Card ?"_s});
        QCOMPARE(s.ConfirmQuestion, prompts.asked.last());
        QCOMPARE(sim.image(), before);

        QVERIFY(card.confirmAndWriteValue(u"IN"_s, Currency::parse(u"1184.5"_s),
                                          Currency::parse(u"1234.50"_s)));
        QCOMPARE(prompts.asked.last(), u"Confirm to Add in value : 1184.50 to Card ?"_s);
        QCOMPARE(sim.block(36), padded("1234.5"));

        QVERIFY(card.confirmAndWriteValue(u"AOT"_s, Currency::parse(u"0.004"_s), Currency()));
        QCOMPARE(prompts.asked.last(), u"Confirm to withdraw out value : 0.00 from Card ?"_s);
        QCOMPARE(sim.block(36), padded("0"));

        sim.takeAway();
        QVERIFY(!card.confirmAndWriteValue(u"AIN"_s, Currency(), Currency()));
    }
};

QTEST_APPLESS_MAIN(TestMemberCard)
#include "tst_membercard.moc"
