#pragma once

#include "card/cardsim.h"
#include "card/reader.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <array>
#include <memory>

namespace pondar::test {

class PcscStack;
class VpcdCard;

// The same card tests on the simulated reader and, with PONDAR_TEST_READER=pcsc, over PC/SC.
// Placing and taking away return once the reader has seen it.
class CardBench {
public:
    CardBench();
    ~CardBench();
    CardBench(const CardBench&) = delete;
    CardBench& operator=(const CardBench&) = delete;

    std::shared_ptr<card::ReaderLibrary> reader;

    void put(const QByteArray& image);
    void put(std::array<card::uint8, 4> uid) { put(card::blankCardImage(uid)); }
    void takeAway();
    // The tag type of the cards placed from now on (and of the one in the field).
    void setType(int type);
    // The card in the field refuses every write.
    void lock();
    QByteArray image() const;
    QByteArray block(int absolute) const { return image().mid(absolute * 16, 16); }

    void attach(SessionSettings& session) const {
        session.Reader = reader;
        session.ReaderPort = 1;
    }

    // The emulated card over PC/SC; null on the simulator or with no card.
    VpcdCard* card() const { return m_card.get(); }
    PcscStack* stack() const { return m_stack; }

private:
    std::unique_ptr<CardSim> m_sim;
    PcscStack* m_stack = nullptr;
    std::unique_ptr<VpcdCard> m_card;
    int m_type = card::TagMifare1K;
};

// The card tests' class: skipped where the bench's back end cannot run, which starts pcscd.
class CardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
};

} // namespace pondar::test
