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
        QTest::newRow("serial") << QByteArray("V1A2B3C4DS");
        QTest::newRow("low and high codes") << QByteArray("\x00\x01\x7f\x80\xd6", 5);
    }
    // Random keys: many rounds, each key in its range, and the same text not always alike.
    void roundTrip() {
        QFETCH(QByteArray, plain);
        QSet<QByteArray> seen;
        for (int i = 0; i < 50; ++i) {
            const QByteArray scrambled = encrypt(plain);
            QCOMPARE(scrambled.size(), plain.size() + 4);
            for (qsizetype k : {qsizetype(0), qsizetype(1), qsizetype(2), scrambled.size() - 1}) {
                const int key = static_cast<unsigned char>(scrambled[k]);
                QVERIFY2(key >= 33 && key <= 41, qPrintable(QString::number(key)));
            }
            QCOMPARE(decrypt(scrambled), plain);
            seen.insert(scrambled);
        }
        QVERIFY(seen.size() > 1);
    }

    // Written by hand: header k1, k3, k2, then the cycle k1, k3, k2, k4, then k4. A round trip
    // alone would pass with any consistent order.
    void layoutIsFixed() {
        const QByteArray scrambled = QByteArray("!#%") + char('A' + 33) + char('B' + 35) +
                                     char('C' + 37) + char('D' + 39) + char('E' + 33) + '\'';
        QCOMPARE(decrypt(scrambled), QByteArray("ABCDE"));
    }

    void failuresAreResultTexts() {
        const QByteArray cannotDecrypt("Error: Invalid text to Decrypt");
        QCOMPARE(encrypt("AB\xff"), QByteArray("Error: Invalid text to Encrypt"));
        QCOMPARE(decrypt("!!!"), cannotDecrypt);
        QCOMPARE(decrypt("(((\x05("), cannotDecrypt); // a byte below its key
        QCOMPARE(decrypt("!!!!"), QByteArray());
    }

    // Upper-case digits only; a position past the end counts as 0.
    void hexHelpers() {
        QCOMPARE(hexDigitValue(u"F"), 15);
        QCOMPARE(hexDigitValue(u"a"), 0);
        QCOMPARE(hexDigitValue(u"1A"), 0);
        QCOMPARE(int(hexByte(u"x0C", 2)), 12);
        QCOMPARE(int(hexByte(u"F", 1)), 240);
        QCOMPARE(twoDigitHex(5), u"05 "_s);
        QCOMPARE(twoDigitHex(250), u"FA "_s);
    }
};

QTEST_APPLESS_MAIN(TestCodec)
#include "tst_codec.moc"
