#pragma once

#include <QList>
#include <QString>

namespace pondar::card {

// The simulated reader's folder seen as a tray of cards beside the reader, for the demo host and
// for people trying the component without hardware. The card on the reader is field.mfd; the
// cards in the tray are card-<UID>.mfd. Putting a card on the reader renames its file to
// field.mfd and taking it off renames it back under its UID, so whatever the component wrote
// stays with the card, on every system. Failures throw pondar::Error with a text for the user.
class SimFolder final {
public:
    explicit SimFolder(QString dir);

    struct Card {
        QString file; // file name inside the folder
        QString uid;  // hex digits of the UID, as in block 0
        QString code; // CODE and NAME as written, empty on a blank card
        QString name;
    };

    QString dir() const { return m_dir; }

    // The cards in the tray, by file name.
    QList<Card> tray() const;
    // The card on the reader; false when the reader is empty.
    bool onReader(Card& card) const;

    // Takes the card on the reader off first, then puts the tray card named file on it.
    void put(const QString& file);
    // Puts the card on the reader back into the tray; nothing happens when the reader is empty.
    void takeOff();
    // A factory-fresh card with a random UID, into the tray; returns its file name.
    QString addBlank();
    // Adds blank cards when the folder holds no card at all, on the reader or in the tray.
    void stock(int count);

private:
    QString path(const QString& file) const;
    Card describe(const QString& file) const;

    QString m_dir;
};

} // namespace pondar::card
