#include "card/cardbench.h"
#include "card/membercard.h"

#include <pondar/error.h>

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

// The bench's reader, a session on it and the card record over both.
struct OnReader {
    test::CardBench bench;
    SessionSettings s;
    test::RecordingPrompts prompts;
    MemberCard card{s, prompts};
    CardData data;

    OnReader() { bench.attach(s); }
};

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
        OnReader r;
        r.bench.put({0x1A, 0x2B, 0x3C, 0x4D});
        issue(r.s, u"000001"_s, u"TAN AH KOW"_s, u"150.5"_s);
        QCOMPARE(r.bench.block(41), padded("000001"));
        QCOMPARE(r.bench.block(36), padded("150.5"));
        QCOMPARE(r.bench.block(40).indexOf('\0'), 14); // "V1A2B3C4DS" scrambled

        QCOMPARE(r.card.read(r.data), ReadResult::Ok);
        QCOMPARE(r.data.code, u"000001"_s);
        QCOMPARE(r.data.name, u"TAN AH KOW"_s);
        QCOMPARE(r.data.balance.toShortString(), u"150.5"_s);
        QVERIFY(r.prompts.errors.isEmpty());
    }

    // Each failure stops the read at its step. A copied record carries the serial of the card
    // it came from.
    void readFailuresStopAtTheirStep() {
        OnReader r;
        QCOMPARE(r.card.read(r.data), ReadResult::DeviceFailed);
        QCOMPARE(readFailureMessage(ReadResult::DeviceFailed),
                 u"Error Reading Device !!! Please unplug again your USB Cable "_s);

        r.bench.put({0x55, 0x66, 0x77, 0x88}); // blank: no record at all
        QCOMPARE(r.card.read(r.data), ReadResult::NotOwnSerial);
        const QByteArray blank = r.bench.image();

        r.bench.put({0x11, 0x22, 0x33, 0x44});
        issue(r.s, u"000002"_s, u"SITI"_s, u"20"_s);
        const QByteArray original = r.bench.image();
        QByteArray copy = blank;
        copy.replace(36 * 16, 8 * 16, original.mid(36 * 16, 8 * 16));
        r.bench.put(copy);
        QCOMPARE(r.card.read(r.data), ReadResult::NotOwnSerial);
        QCOMPARE(readFailureMessage(ReadResult::NotOwnSerial), u"Error Reading Device !!!"_s);
        QVERIFY(r.data.code.isEmpty());

        QByteArray rekeyed = original;
        rekeyed.replace(39 * 16, 6, QByteArray(6, '\x11')); // sector 9 keyed differently
        r.bench.put(rekeyed);
        QCOMPARE(r.card.read(r.data), ReadResult::ValueSectorFailed);
        QCOMPARE(r.data.code, u"000002"_s); // what was read before the failure stays
        QCOMPARE(readFailureMessage(ReadResult::ValueSectorFailed), u"Error Open Device !!!"_s);

        r.bench.put(original);
        QCOMPARE(r.card.read(r.data), ReadResult::Ok);
        // A garbled balance must stop the read, or a top-up would write over it.
        issue(r.s, u"000004"_s, u"LIM"_s, u"12x"_s);
        QCOMPARE(r.card.read(r.data), ReadResult::BadBalance);
    }

    // A plain decimal, zero padded, or nothing at all (a balance of 0).
    void balanceBlocks() {
        Currency value;
        QVERIFY(parseBalance(padded("-20.25"), value));
        QCOMPARE(value.toShortString(), u"-20.25"_s);
        QVERIFY(parseBalance(QByteArray(16, '\0'), value));
        QCOMPARE(value.toShortString(), u"0"_s);
        for (const QByteArray& bad :
             {QByteArray("5\0\0\0\0\0\0\0\0\0\0\0\0\0\0x", 16), QByteArray("9999999999999999")})
            QVERIFY2(!parseBalance(bad, value), bad.toHex().constData());
    }

    void fieldLimits() {
        OnReader r;
        r.bench.put({1, 2, 3, 4});
        QVERIFY(r.card.openSelectLogin(MemberSector));
        QVERIFY(r.card.writeField(MemberSector, u"NAME"_s, u"ABCDEFGHIJKLMNOP"_s));
        QCOMPARE(r.card.readField(MemberSector, 2), u"ABCDEFGHIJKLMNOP"_s);

        const QByteArray before = r.bench.image();
        QVERIFY_THROWS_EXCEPTION(
            pondar::Error, r.card.writeField(MemberSector, u"NAME"_s, u"ABCDEFGHIJKLMNOPQ"_s));
        QVERIFY_THROWS_EXCEPTION(pondar::Error,
                                 r.card.writeField(MemberSector, u"BLACKLISTED"_s, u"Y"_s));
        QCOMPARE(r.bench.image(), before);

        // Card issue cuts a long register name to what the block holds.
        QVERIFY(r.card.writeName(u"FARAH HANIM BINTI AZMAN"_s));
        QCOMPARE(r.card.readField(MemberSector, 2), u"FARAH HANIM BINT"_s);
        // A name the card record does not know reuses the block of the last write.
        QVERIFY(r.card.writeField(MemberSector, u"OTHER"_s, u"X"_s));
        QCOMPARE(r.bench.block(42), padded("X"));
        // Windows-1252 on the card.
        QVERIFY(r.card.writeCode(u"CAF\u00c9\u20ac"_s));
        QCOMPARE(r.bench.block(41), padded("CAF\xc9\x80"));
        QCOMPARE(r.card.readField(MemberSector, 1), u"CAF\u00c9\u20ac"_s);
    }

    void confirmAndWriteValue() {
        OnReader r;
        r.bench.put({1, 2, 3, 4});
        issue(r.s, u"000005"_s, u"FAIZ"_s, u"50"_s);
        const QByteArray before = r.bench.image();

        r.prompts.answers = {false};
        QVERIFY(!r.card.confirmAndWriteValue(u"OUT"_s, Currency::parse(u"10"_s),
                                             Currency::parse(u"40"_s)));
        QCOMPARE(r.prompts.asked,
                 QStringList{u"Confirm to withdraw out value : 10.00 from Card ?"_s});
        QCOMPARE(r.s.ConfirmQuestion, r.prompts.asked.last());
        QCOMPARE(r.bench.image(), before);

        QVERIFY(r.card.confirmAndWriteValue(u"IN"_s, Currency::parse(u"1184.5"_s),
                                            Currency::parse(u"1234.50"_s)));
        QCOMPARE(r.prompts.asked.last(), u"Confirm to Add in value : 1184.50 to Card ?"_s);
        QCOMPARE(r.bench.block(36), padded("1234.5"));

        QVERIFY(r.card.confirmAndWriteValue(u"AOT"_s, Currency::parse(u"0.004"_s), Currency()));
        QCOMPARE(r.prompts.asked.last(), u"Confirm to withdraw out value : 0.00 from Card ?"_s);
        QCOMPARE(r.bench.block(36), padded("0"));

        r.bench.takeAway();
        QVERIFY(!r.card.confirmAndWriteValue(u"AIN"_s, Currency(), Currency()));
    }
};

QTEST_APPLESS_MAIN(TestMemberCard)
#include "tst_membercard.moc"
