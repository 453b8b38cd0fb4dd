#include "transactions/saveplan.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

// Card balance 20.00 and pending 5.00; `amounts` fills the button's boxes in screen order.
SaveDecision decide(const QString& button, const QStringList& amounts) {
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

} // namespace

class TestSavePlan final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void decisions_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("amounts");
        QTest::addColumn<QString>("outcome"); // "IN 110.00 135.00" or "title: text @focus"

        auto row = [](const char* name, const QString& button, const QStringList& amounts,
                      const QString& outcome) {
            QTest::newRow(name) << button << amounts << outcome;
        };
        const QString t = u"topup"_s, w = u"withdraw"_s, a = u"adjust"_s;
        row("extra not sign-checked", t, {u"10"_s, u"-3"_s}, u"IN 7.00 32.00"_s);
        row("top-up nothing", t, {u""_s, u"0.00"_s}, u"message: Nothing to save !!! @-1"_s);
        row("top-up negative", t, {u"-1"_s, u"50"_s},
            u"message: Negative Value Not Accepted !!! @4"_s);
        row("top-up too large", t, {u"1e20"_s}, u"Message: Value out of range !!! @4"_s);
        row("extra too large", t, {u"1"_s, u"99e18"_s}, u"Message: Value out of range !!! @11"_s);
        row("new balance too large", t, {u"922337203685477"_s},
            u"Message: Value out of range !!! @4"_s);
        row("withdraw a cent more", w, {u"25.01"_s},
            u"Message: Insufficient Value to withdraw !!! @8"_s);
        row("withdraw nothing", w, {u"abc"_s}, u"message: Nothing to save !!! @8"_s);
        row("withdraw negative", w, {u"-5"_s}, u"message: Negative Value Not Accepted !!! @8"_s);
        row("out too much", a, {u"0"_s, u"25.0001"_s},
            u"Message: Insufficient Value to withdraw !!! @-1"_s);
        row("adjust negative out", a, {u"5"_s, u"-3"_s},
            u"message: Negative Value Not Accepted !!! @-1"_s);
        row("adjust nothing", a, {}, u"message: Nothing to save !!! @-1"_s);
    }
    void decisions() {
        QFETCH(QString, button);
        QFETCH(QStringList, amounts);
        const SaveDecision d = decide(button, amounts);
        const QString outcome =
            d.plan ? QString(d.plan->billType + u' ' + d.plan->writeValue.format() + u' ' +
                             d.plan->newValue.format())
                   : QString(d.refusal.title + u": "_s + d.refusal.text + u" @"_s +
                             QString::number(d.refusal.focus));
        QTEST(outcome, "outcome");
    }
};

QTEST_GUILESS_MAIN(TestSavePlan)
#include "tst_saveplan.moc"
