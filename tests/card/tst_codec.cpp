#include "card/codec.h"

#include <QSet>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar::card;

class TestCodec final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Random keys: each round trips, and the same text is not always scrambled alike.
    void roundTrip() {
        for (const QByteArray& plain :
             {QByteArray(), QByteArray("V1A2B3C4DS"), QByteArray("\x00\x01\x7f\x80\xd6", 5)}) {
            QSet<QByteArray> seen;
            for (int i = 0; i < 50; ++i) {
                const QByteArray scrambled = encrypt(plain);
                QCOMPARE(decrypt(scrambled), plain);
                seen.insert(scrambled);
            }
            QVERIFY(seen.size() > 1);
        }
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
    }
};

QTEST_APPLESS_MAIN(TestCodec)
#include "tst_codec.moc"
