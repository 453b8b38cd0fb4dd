#include "card/cardbench.h"

#include "card/pcscstack.h"
#include "card/vpcdcard.h"

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace pondar::test {

namespace {

bool overPcsc() {
    return qEnvironmentVariable("PONDAR_TEST_READER") == u"pcsc"_s;
}

} // namespace

void CardTest::initTestCase() {
    QString whyNot;
    if (overPcsc() && !PcscStack::get(&whyNot))
        QSKIP(qPrintable(u"PC/SC back end not testable: "_s + whyNot));
}

void CardTest::cleanupTestCase() {
    PcscStack::finish();
}

CardBench::CardBench() {
    if (!overPcsc()) {
        m_sim = std::make_unique<CardSim>();
        reader = m_sim->reader;
        return;
    }
    QString whyNot;
    if (!(m_stack = PcscStack::get(&whyNot)))
        qFatal("%s", qPrintable(whyNot));
    reader = card::makePcscReader(QString::fromLatin1(m_stack->readerName()));
}

CardBench::~CardBench() {
    reader.reset();
    if (m_card)
        takeAway();
}

void CardBench::put(const QByteArray& image) {
    if (m_sim)
        return m_sim->put(image);
    if (m_card)
        takeAway();
    m_card = std::make_unique<VpcdCard>(m_stack->port(), image, m_type);
    if (!m_card->connected() || !m_stack->waitForCard(true))
        qFatal("the emulated card did not come up on the virtual reader");
}

void CardBench::takeAway() {
    if (m_sim)
        return m_sim->takeAway();
    m_card.reset();
    if (!m_stack->waitForCard(false))
        qFatal("the virtual reader still reports a card after it was taken away");
}

void CardBench::setType(int type) {
    if (m_sim)
        return m_sim->setType(type);
    m_type = type;
    if (m_card)
        put(m_card->image());
}

void CardBench::lock() {
    if (m_sim) {
        // By the mode bits, which the simulator honours even for root.
        if (!QFile::setPermissions(m_sim->field(), QFile::ReadOwner | QFile::ReadGroup))
            qFatal("cannot lock the simulated card");
        return;
    }
    if (m_card)
        m_card->locked = true;
}

QByteArray CardBench::image() const {
    if (m_sim)
        return m_sim->image();
    return m_card ? m_card->image() : QByteArray();
}

} // namespace pondar::test
