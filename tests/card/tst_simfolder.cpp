#include "card/membercard.h"
#include "card/reader.h"
#include "card/simfolder.h"

#include <pondar/error.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using namespace pondar::card;

namespace {

QByteArray fileBytes(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

QStringList files(const SimFolder& folder) {
    QStringList out;
    for (const auto& card : folder.tray())
        out.append(card.file);
    return out;
}

} // namespace

class TestSimFolder final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Random serials with their check byte, transport keys and access bits in every trailer.
    void stocksBlankCardsOnlyIntoAnEmptyFolder() {
        QTemporaryDir dir;
        SimFolder folder(dir.filePath(u"cards"_s));
        folder.stock(3);
        const auto cards = folder.tray();
        QCOMPARE(cards.size(), 3);
        const QByteArray trailer = QByteArray::fromHex("FFFFFFFFFFFFFF078069FFFFFFFFFFFF");
        for (const auto& card : cards) {
            const QByteArray image = fileBytes(dir.filePath(u"cards/"_s + card.file));
            QCOMPARE(image.size(), 1024);
            QCOMPARE(quint8(image[4]), quint8(image[0] ^ image[1] ^ image[2] ^ image[3]));
            for (int sector = 0; sector < 16; ++sector)
                QCOMPARE(image.mid((sector * 4 + 3) * 16, 16), trailer);
            QCOMPARE(card.file, u"card-"_s + card.uid + u".mfd"_s);
            QVERIFY(card.code.isEmpty());
        }
        folder.put(cards.first().file);
        folder.stock(3);
        QCOMPARE(folder.tray().size(), 2); // a card on the reader counts
    }

    // What the reader wrote must travel with the card back into the tray.
    void cardsMoveBetweenTrayAndReader() {
        QTemporaryDir dir;
        SimFolder folder(dir.path());
        writeFile(dir.filePath(u"card-01020304.mfd"_s), blankCardImage({1, 2, 3, 4}));
        writeFile(dir.filePath(u"card-05060708.mfd"_s), blankCardImage({5, 6, 7, 8}));
        SimFolder::Card card;
        QVERIFY(!folder.onReader(card));
        folder.takeOff(); // an empty reader is fine

        folder.put(u"card-01020304.mfd"_s);
        QVERIFY(folder.onReader(card));
        QCOMPARE(card.uid, u"01020304"_s);
        QCOMPARE(files(folder), QStringList{u"card-05060708.mfd"_s});

        QByteArray image = fileBytes(dir.filePath(u"field.mfd"_s));
        image.replace((MemberSector * 4 + 1) * 16, 6, "000007");
        image.replace((MemberSector * 4 + 2) * 16, 10, "NUR AISYAH");
        writeFile(dir.filePath(u"field.mfd"_s), image);

        folder.put(u"card-05060708.mfd"_s); // swaps: the first card goes back to the tray
        QVERIFY(folder.onReader(card));
        QCOMPARE(card.uid, u"05060708"_s);
        const auto tray = folder.tray();
        QCOMPARE(tray.size(), 1);
        QCOMPARE(tray[0].file, u"card-01020304.mfd"_s);
        QCOMPARE(tray[0].code, u"000007"_s);
        QCOMPARE(tray[0].name, u"NUR AISYAH"_s);
        QCOMPARE(fileBytes(dir.filePath(tray[0].file)), image);

        QVERIFY_THROWS_EXCEPTION(Error, folder.put(u"card-FFFFFFFF.mfd"_s));
        QVERIFY_THROWS_EXCEPTION(Error, folder.put(u"field.mfd"_s));
        QVERIFY(folder.onReader(card)); // a refused put leaves the reader as it was
    }

    void aCopiedCardKeepsItsOwnFile() {
        QTemporaryDir dir;
        SimFolder folder(dir.path());
        writeFile(dir.filePath(u"card-01020304.mfd"_s), blankCardImage({1, 2, 3, 4}));
        writeFile(dir.filePath(u"field.mfd"_s), blankCardImage({1, 2, 3, 4}));
        folder.takeOff();
        QCOMPARE(files(folder), (QStringList{u"card-01020304-2.mfd"_s, u"card-01020304.mfd"_s}));
    }
};

QTEST_APPLESS_MAIN(TestSimFolder)
#include "tst_simfolder.moc"
