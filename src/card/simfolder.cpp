#include "card/simfolder.h"

#include "card/membercard.h"
#include "card/reader.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QDir>
#include <QFile>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

namespace {

QByteArray readImage(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(CardImageSize) : QByteArray();
}

QString blockText(const QByteArray& image, int block) {
    QByteArray bytes = image.mid(block * 16, 16);
    const qsizetype nul = bytes.indexOf('\0');
    if (nul >= 0)
        bytes.truncate(nul);
    return fromAnsi(bytes).trimmed();
}

} // namespace

SimFolder::SimFolder(QString dir)
    : m_dir(std::move(dir)) {}

QString SimFolder::path(const QString& file) const {
    return QDir(m_dir).filePath(file);
}

SimFolder::Card SimFolder::describe(const QString& file) const {
    const QByteArray image = readImage(path(file));
    Card card;
    card.file = file;
    card.uid = QString::fromLatin1(image.left(4).toHex().toUpper());
    // CODE and NAME are plain text; a card with an unreadable record just shows none.
    card.code = blockText(image, MemberSector * 4 + 1);
    card.name = blockText(image, MemberSector * 4 + 2);
    return card;
}

QList<SimFolder::Card> SimFolder::tray() const {
    QList<Card> cards;
    const QStringList files =
        QDir(m_dir).entryList({u"*.mfd"_s}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QString& file : files) {
        if (file != QString::fromLatin1(FieldFileName))
            cards.append(describe(file));
    }
    return cards;
}

bool SimFolder::onReader(Card& card) const {
    if (!QFile::exists(path(QString::fromLatin1(FieldFileName))))
        return false;
    card = describe(QString::fromLatin1(FieldFileName));
    return true;
}

void SimFolder::put(const QString& file) {
    if (file == QString::fromLatin1(FieldFileName) || !QFile::exists(path(file)))
        throw Error(u"No card "_s + file + u" in the tray !!!"_s);
    takeOff();
    if (!QFile::rename(path(file), path(QString::fromLatin1(FieldFileName))))
        throw Error(u"Cannot put card "_s + file + u" on the reader !!!"_s);
}

void SimFolder::takeOff() {
    Card card;
    if (!onReader(card))
        return;
    const QString base = u"card-"_s + (card.uid.isEmpty() ? u"UNKNOWN"_s : card.uid);
    // Two images may carry the same UID (a copied card); neither may overwrite the other.
    QString name = base + u".mfd"_s;
    for (int n = 2; QFile::exists(path(name)); ++n)
        name = base + u'-' + QString::number(n) + u".mfd"_s;
    if (!QFile::rename(path(QString::fromLatin1(FieldFileName)), path(name)))
        throw Error(u"Cannot take the card off the reader !!!"_s);
}

QString SimFolder::addBlank() {
    if (!QDir().mkpath(m_dir))
        throw Error(u"Cannot create the card folder "_s + m_dir + u" !!!"_s);
    QByteArray image;
    QString name;
    do {
        image = blankCardImage();
        name = u"card-"_s + QString::fromLatin1(image.left(4).toHex().toUpper()) + u".mfd"_s;
    } while (QFile::exists(path(name)));
    QFile file(path(name));
    if (!file.open(QIODevice::NewOnly) || file.write(image) != image.size())
        throw Error(u"Cannot write a new card into "_s + m_dir + u" !!!"_s);
    return name;
}

void SimFolder::stock(int count) {
    Card card;
    if (onReader(card) || !tray().isEmpty())
        return;
    for (int i = 0; i < count; ++i)
        addBlank();
}

} // namespace pondar::card
