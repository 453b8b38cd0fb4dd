#include "card/codec.h"

#include <QSet>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar::card;

class TestCodec final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void roundTrip_data() {
        QTest::addColumn<QByteArray>("plain");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("one") << QByteArray("A");
        QTest::newRow("five") << QByteArray("HELLO");
        QTest::newRow("serial") << QByteArray("V1A2B3C4DS");
        QTest::newRow("twelve") << QByteArray("V9876543210S");
        QTest::newRow("low and high codes") << QByteArray("\x00\x01\x7f\x80\xd6", 5);
    }
    void roundTrip() {
        QFETCH(QByteArray, plain);
        for (int i = 0; i < 50; ++i) {
            const QByteArray scrambled = encrypt(plain);
            QCOMPARE(scrambled.size(), plain.size() + 4);
            for (qsizetype k : {qsizetype(0), qsizetype(1), qsizetype(2), scrambled.size() - 1}) {
                const int key = static_cast<unsigned char>(scrambled[k]);
                QVERIFY2(key >= 33 && key <= 41, qPrintable(QString::number(key)));
            }
            QCOMPARE(decrypt(scrambled), plain);
        }
    }

    void sameTextScramblesDifferently() {
        QSet<QByteArray> seen;
        for (int i = 0; i < 20; ++i)
            seen.insert(encrypt("HELLO"));
        QVERIFY(seen.size() > 1);
    }

    // Written by hand: header k1, k3, k2, then the cycle k1, k3, k2, k4, then k4. A round trip
    // alone would pass with any consistent order.
    void layoutIsFixed() {
        const QByteArray scrambled = QByteArray("!#%") + char('A' + 33) + char('B' + 35) +
                                     char('C' + 37) + char('D' + 39) + char('E' + 33) + '\'';
        QCOMPARE(decrypt(scrambled), QByteArray("ABCDE"));
    }

    void failuresAreResultTexts_data() {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<bool>("encrypting");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("encrypt past 255")
            << QByteArray("AB\xff") << true << QByteArray("Error: Invalid text to Encrypt");
        QTest::newRow("decrypt empty")
            << QByteArray() << false << QByteArray("Error: Invalid text to Decrypt");
        QTest::newRow("decrypt three")
            << QByteArray("!!!") << false << QByteArray("Error: Invalid text to Decrypt");
        QTest::newRow("decrypt below 0")
            << QByteArray("(((\x05(") << false << QByteArray("Error: Invalid text to Decrypt");
        QTest::newRow("decrypt header only") << QByteArray("!!!!") << false << QByteArray();
    }
    void failuresAreResultTexts() {
        QFETCH(QByteArray, input);
        QFETCH(bool, encrypting);
        QFETCH(QByteArray, expected);
        QCOMPARE(encrypting ? encrypt(input) : decrypt(input), expected);
    }

    void hexDigits_data() {
        QTest::addColumn<QString>("digit");
        QTest::addColumn<int>("value");
        QTest::newRow("0") << u"0"_s << 0;
        QTest::newRow("A") << u"A"_s << 10;
        QTest::newRow("F") << u"F"_s << 15;
        QTest::newRow("lower a") << u"a"_s << 0;
        QTest::newRow("empty") << QString() << 0;
        QTest::newRow("two characters") << u"1A"_s << 0;
    }
    void hexDigits() {
        QFETCH(QString, digit);
        QFETCH(int, value);
        QCOMPARE(hexDigitValue(digit), value);
    }

    void hexBytes_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("value");
        QTest::newRow("1A") << u"1A"_s << 1 << 26;
        QTest::newRow("second position") << u"x0C"_s << 2 << 12;
        QTest::newRow("half past the end") << u"F"_s << 1 << 240;
        QTest::newRow("past the end") << u"FF"_s << 3 << 0;
    }
    void hexBytes() {
        QFETCH(QString, text);
        QFETCH(int, position);
        QFETCH(int, value);
        QCOMPARE(int(hexByte(text, position)), value);
    }

    void twoDigitHexTexts_data() {
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("text");
        // 10 to 15 and every value ending in A come from a fixed table; the rest are computed.
        for (const auto& [v, t] :
             {std::pair{5, "05 "}, {10, "0A "}, {26, "1A "}, {171, "AB "}, {250, "FA "}})
            QTest::newRow(t) << v << QString::fromLatin1(t);
    }
    void twoDigitHexTexts() {
        QFETCH(int, value);
        QFETCH(QString, text);
        QCOMPARE(twoDigitHex(std::uint8_t(value)), text);
    }
};

QTEST_APPLESS_MAIN(TestCodec)
#include "tst_codec.moc"
