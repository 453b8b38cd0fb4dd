#include "transactions/saveplan.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

class TestSavePlan final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Card balance 20.00 and pending 5.00 throughout; `amounts` fills the button's boxes.
    void plans_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("amounts"); // top-up/extra, withdraw, or in/out
        QTest::addColumn<QString>("billType");
        QTest::addColumn<QString>("writeValue");
        QTest::addColumn<QString>("newValue");

        QTest::newRow("top-up with extra") << u"topup"_s << QStringList{u"100.00"_s, u"10.00"_s}
                                           << u"IN"_s << u"110.00"_s << u"135.00"_s;
        QTest::newRow("extra alone")
            << u"topup"_s << QStringList{u"0"_s, u"5"_s} << u"IN"_s << u"5.00"_s << u"30.00"_s;
        QTest::newRow("extra not sign-checked")
            << u"topup"_s << QStringList{u"10"_s, u"-3"_s} << u"IN"_s << u"7.00"_s << u"32.00"_s;
        QTest::newRow("leading number") << u"topup"_s << QStringList{u" 12.5abc"_s, u""_s}
                                        << u"IN"_s << u"12.50"_s << u"37.50"_s;
        QTest::newRow("withdraw all incl. pending")
            << u"withdraw"_s << QStringList{u"25"_s} << u"OUT"_s << u"25.00"_s << u"0.00"_s;
        QTest::newRow("withdraw part")
            << u"withdraw"_s << QStringList{u"7.5"_s} << u"OUT"_s << u"7.50"_s << u"17.50"_s;
        QTest::newRow("in wins over out")
            << u"adjust"_s << QStringList{u"5"_s, u"3"_s} << u"AIN"_s << u"5.00"_s << u"30.00"_s;
        QTest::newRow("out alone")
            << u"adjust"_s << QStringList{u""_s, u"3"_s} << u"AOT"_s << u"3.00"_s << u"22.00"_s;
        QTest::newRow("out of everything") << u"adjust"_s << QStringList{u"0.00"_s, u"25"_s}
                                           << u"AOT"_s << u"25.00"_s << u"0.00"_s;
    }
    void plans() {
        QFETCH(QString, button);
        QFETCH(QStringList, amounts);
        const SaveDecision d = decide(button, amounts);
        QVERIFY2(d.plan.has_value(), qPrintable(d.refusal.text));
        QTEST(d.plan->billType, "billType");
        QTEST(d.plan->writeValue.format(), "writeValue");
        QTEST(d.plan->newValue.format(), "newValue");
    }

    void refusals_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("amounts");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("focus");

        const QString negative = u"Negative Value Not Accepted !!!"_s;
        const QString nothing = u"Nothing to save !!!"_s;
        const QString insufficient = u"Insufficient Value to withdraw !!!"_s;
        const QString range = u"Value out of range !!!"_s;

        QTest::newRow("top-up nothing")
            << u"topup"_s << QStringList{u""_s, u"0.00"_s} << nothing << u"message"_s << txt::None;
        QTest::newRow("top-up negative") << u"topup"_s << QStringList{u"-1"_s, u"50"_s} << negative
                                         << u"message"_s << txt::TopUp;
        QTest::newRow("extra cancels top-up")
            << u"topup"_s << QStringList{u"5"_s, u"-5"_s} << nothing << u"message"_s << txt::None;
        QTest::newRow("top-up too large")
            << u"topup"_s << QStringList{u"1e20"_s, u"0"_s} << range << u"Message"_s << txt::TopUp;
        QTest::newRow("extra too large")
            << u"topup"_s << QStringList{u"1"_s, u"99e18"_s} << range << u"Message"_s << txt::Extra;
        QTest::newRow("sum too large") << u"topup"_s << QStringList{u"922337203685477"_s, u"0"_s}
                                       << range << u"Message"_s << txt::TopUp;
        QTest::newRow("withdraw nothing")
            << u"withdraw"_s << QStringList{u"abc"_s} << nothing << u"message"_s << txt::Withdraw;
        QTest::newRow("withdraw negative")
            << u"withdraw"_s << QStringList{u"-5"_s} << negative << u"message"_s << txt::Withdraw;
        QTest::newRow("withdraw a cent too much") << u"withdraw"_s << QStringList{u"25.01"_s}
                                                  << insufficient << u"Message"_s << txt::Withdraw;
        QTest::newRow("adjust nothing")
            << u"adjust"_s << QStringList{u""_s, u""_s} << nothing << u"message"_s << txt::None;
        QTest::newRow("adjust negative out")
            << u"adjust"_s << QStringList{u"5"_s, u"-3"_s} << negative << u"message"_s << txt::None;
        QTest::newRow("adjust out too much") << u"adjust"_s << QStringList{u"0"_s, u"25.0001"_s}
                                             << insufficient << u"Message"_s << txt::None;
    }
    void refusals() {
        QFETCH(QString, button);
        QFETCH(QStringList, amounts);
        const SaveDecision d = decide(button, amounts);
        QVERIFY(!d.plan.has_value());
        QTEST(d.refusal.text, "text");
        QTEST(d.refusal.title, "title");
        QTEST(d.refusal.focus, "focus");
    }

    void extraValue_data() {
        QTest::addColumn<QString>("topUp");
        QTest::addColumn<double>("memberComm");
        QTest::addColumn<QString>("extra");
        QTest::newRow("rate 0") << u"100"_s << 0.0 << u"0.00"_s;
        QTest::newRow("rate 10") << u"100"_s << 10.0 << u"10.00"_s;
        QTest::newRow("fraction") << u"33.33"_s << 2.5 << u"0.83"_s;
        QTest::newRow("typing") << u"1"_s << 10.0 << u"0.10"_s;
        QTest::newRow("not a number") << u"x"_s << 10.0 << u"0.00"_s;
        QTest::newRow("out of range") << u"1e20"_s << 10.0 << u"0.00"_s;
    }
    void extraValue() {
        QFETCH(QString, topUp);
        QFETCH(double, memberComm);
        QTEST(extraValueText(topUp, memberComm), "extra");
    }

    void reformatKeepsWhatItCannotRead() {
        QCOMPARE(reformatAmount(u"12.5"_s), u"12.50"_s);
        QCOMPARE(reformatAmount(u""_s), u"0.00"_s);
        QCOMPARE(reformatAmount(u"1e20"_s), u"1e20"_s);
    }

private:
    static SaveDecision decide(const QString& button, const QStringList& amounts) {
        TransactionBoxes b;
        b.balance = u"20.00"_s;
        b.pending = u"5.00"_s;
        if (button == u"topup"_s) {
            b.topUp = amounts.value(0);
            b.extra = amounts.value(1);
            return planTopUp(b);
        }
        if (button == u"withdraw"_s) {
            b.withdraw = amounts.value(0);
            return planWithdraw(b);
        }
        b.adjustIn = amounts.value(0);
        b.adjustOut = amounts.value(1);
        return planAdjustment(b);
    }
};

QTEST_GUILESS_MAIN(TestSavePlan)
#include "tst_saveplan.moc"
