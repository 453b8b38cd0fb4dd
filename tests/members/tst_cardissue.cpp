#include "card/cardsim.h"
#include "card/codec.h"
#include "card/membercard.h"
#include "members/cardissue.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using members::CardIssue;

Q_DECLARE_METATYPE(pondar::members::CardIssue)

namespace {

const QString kStore = u"Store Data to Card "_s;
const QString kOverwrite = u"This Card contain Data !!! Continue overwrite ? "_s;
const QString kValue = u"Confirm to Add in value : 0.00 to Card ?"_s;

QByteArray text(const QByteArray& block) {
    const qsizetype nul = block.indexOf('\0');
    return nul < 0 ? block : block.left(nul);
}

// Issues a member onto the card in the field, answering every question with Yes.
CardIssue issue(SessionSettings& s, const QString& code, const QString& name) {
    s.CurrentCode = code;
    s.CurrentName = name;
    test::RecordingPrompts yes;
    return members::issueCard(s, yes);
}

} // namespace

class TestCardIssue final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void issueFollowsTheOperatorsAnswers_data() {
        QTest::addColumn<QString>("cardState"); // blank, used, none, locked value sector
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<CardIssue>("result");
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<bool>("fieldsWritten");
        QTest::addColumn<QByteArray>("value");

        QTest::newRow("blank card") << u"blank"_s << QList<bool>() << CardIssue::Written
                                    << QStringList{kStore, kValue} << true << QByteArray("0");
        QTest::newRow("not stored") << u"blank"_s << QList<bool>{false} << CardIssue::Declined
                                    << QStringList{kStore} << false << QByteArray();
        QTest::newRow("value declined")
            << u"blank"_s << QList<bool>{true, false} << CardIssue::Written
            << QStringList{kStore, kValue} << true << QByteArray();
        QTest::newRow("used card kept")
            << u"used"_s << QList<bool>{true, false} << CardIssue::Declined
            << QStringList{kStore, kOverwrite} << false << QByteArray("150.5");
        QTest::newRow("used card overwritten")
            << u"used"_s << QList<bool>() << CardIssue::Written
            << QStringList{kStore, kOverwrite, kValue} << true << QByteArray("0");
        QTest::newRow("no card") << u"none"_s << QList<bool>() << CardIssue::DeviceFailed
                                 << QStringList{kStore} << false << QByteArray();
        QTest::newRow("value sector locked") << u"locked"_s << QList<bool>() << CardIssue::Written
                                             << QStringList{kStore} << true << QByteArray();
    }
    void issueFollowsTheOperatorsAnswers() {
        QFETCH(QString, cardState);
        QFETCH(QList<bool>, answers);
        QFETCH(CardIssue, result);
        QFETCH(QStringList, asked);
        QFETCH(bool, fieldsWritten);
        QFETCH(QByteArray, value);

        test::CardSim sim;
        SessionSettings s;
        sim.attach(s);
        if (cardState != u"none"_s)
            sim.put({0x01, 0x02, 0x03, 0x04});
        if (cardState == u"used"_s) {
            QCOMPARE(issue(s, u"OLD01"_s, u"OLD OWNER"_s), CardIssue::Written);
            test::RecordingPrompts prompts;
            card::MemberCard old(s, prompts);
            QVERIFY(old.openSelectLogin(card::ValueSector));
            QVERIFY(old.writeField(card::ValueSector, u"VALUE"_s, u"150.5"_s));
            old.close();
        }
        if (cardState == u"locked"_s) {
            QByteArray image = sim.image();
            image.replace(39 * 16, 6, QByteArray(6, '\x22')); // sector 9 keyed differently
            sim.put(image);
        }
        const QByteArray before = sim.image();

        s.CurrentCode = u"M0001"_s;
        s.CurrentName = u"ABDUL RAHMAN BIN ALI"_s; // 20 characters, as the register hands over
        test::RecordingPrompts prompts;
        prompts.answers = answers;
        QCOMPARE(members::issueCard(s, prompts), result);
        QCOMPARE(prompts.asked, asked);
        QVERIFY(prompts.errors.isEmpty());

        if (!fieldsWritten) {
            QCOMPARE(sim.image(), before);
            return;
        }
        QCOMPARE(card::decrypt(text(sim.block(40))), QByteArray("V01020304S"));
        QCOMPARE(text(sim.block(41)), QByteArray("M0001"));
        QCOMPARE(text(sim.block(42)), QByteArray("ABDUL RAHMAN BIN")); // the block's 16
        QCOMPARE(text(sim.block(36)), value);
    }
};

QTEST_MAIN(TestCardIssue)
#include "tst_cardissue.moc"
