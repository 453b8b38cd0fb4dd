#include "card/membercard.h"
#include "card/reader.h"
#include "card/simfolder.h"
#include "support/fixtures.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

class TestSimFolder final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Random serials with their check byte, transport keys and access bits in every trailer.
    void stocksBlankCards() {
        QTemporaryDir dir;
        SimFolder folder(dir.path());
        folder.stock(3);
        const auto cards = folder.tray();
        QCOMPARE(cards.size(), 3);
        const QByteArray trailer = QByteArray::fromHex("FFFFFFFFFFFFFF078069FFFFFFFFFFFF");
        for (const auto& card : cards) {
            const QByteArray image = test::readFile(dir.filePath(card.file));
            QCOMPARE(image.size(), 1024);
            QCOMPARE(quint8(image[4]), quint8(image[0] ^ image[1] ^ image[2] ^ image[3]));
            for (int sector = 0; sector < 16; ++sector)
                QCOMPARE(image.mid((sector * 4 + 3) * 16, 16), trailer);
        }
    }

    // What the reader wrote must travel with the card back into the tray.
    void cardsMoveBetweenTrayAndReader() {
        QTemporaryDir dir;
        SimFolder folder(dir.path());
        folder.stock(2);
        const auto cards = folder.tray();
        folder.put(cards[0].file);

        const QString field = dir.filePath(u"field.mfd"_s);
        QByteArray image = test::readFile(field);
        test::writeFile(field, image.replace((MemberSector * 4 + 1) * 16, 6, "000007"));

        folder.put(cards[1].file); // swaps: the first card goes back to the tray
        const auto tray = folder.tray();
        QCOMPARE(tray.size(), 1);
        QCOMPARE(tray[0].code, u"000007"_s);
        QCOMPARE(test::readFile(dir.filePath(tray[0].file)), image);
    }
};

QTEST_APPLESS_MAIN(TestSimFolder)
#include "tst_simfolder.moc"
