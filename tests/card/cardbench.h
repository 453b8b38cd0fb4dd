#pragma once

#include "card/cardsim.h"
#include "card/reader.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <memory>

namespace pondar::test {

class PcscStack;
class VpcdCard;

// A card reader with a card to place on it, under the back end that PONDAR_TEST_READER names:
// unset, the simulated reader on a temporary folder; "pcsc", the PC/SC library on a private
// pcscd whose virtual reader holds an emulated Mifare Classic 1K. The same card tests run on
// both. Placing and taking away return once the reader has seen it.
class CardBench {
public:
    // True when the tests run over PC/SC.
    static bool overPcsc();
    // Empty when the back end can run here, else why not (for QSKIP in initTestCase). Starts
    // the process's pcscd.
    static QString unavailable();
    // Stops the process's pcscd (cleanupTestCase).
    static void finish();

    CardBench();
    ~CardBench();
    CardBench(const CardBench&) = delete;
    CardBench& operator=(const CardBench&) = delete;

    std::shared_ptr<card::ReaderLibrary> reader;

    // The card in the field is replaced by this image.
    void put(const QByteArray& image);
    void put(std::array<card::uint8, 4> uid) { put(card::blankCardImage(uid)); }
    void takeAway();
    // The tag type of the cards placed from now on (and of the one in the field).
    void setType(int type);
    // The card in the field refuses every write.
    void lock();

    // The card in the field; empty with none.
    QByteArray image() const;
    QByteArray block(int absolute) const { return image().mid(absolute * 16, 16); }

    // A session on this reader, as StartApp leaves it: port "1", key text "FF".
    void attach(SessionSettings& session) const {
        session.Reader = reader;
        session.ReaderPort = 1;
    }
    // The PONDAR_READER text that chooses this reader.
    QString readerChoice() const;

    // The emulated card over PC/SC; null on the simulator or with no card.
    VpcdCard* card() const { return m_card.get(); }
    PcscStack* stack() const { return m_stack; }

private:
    std::unique_ptr<CardSim> m_sim;
    PcscStack* m_stack = nullptr;
    std::unique_ptr<VpcdCard> m_card;
    int m_type = card::TagMifare1K;
};

} // namespace pondar::test
