#include <pondar/currency.h>
#include <pondar/error.h>

#include "transactions/saveplan.h"

#include <QTest>

#include <cmath>

#include <limits>

using namespace Qt::Literals::StringLiterals;
using pondar::Currency;
using pondar::CurrencyError;

class TestCurrency final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The leading number counts, rounded half to even; past the range is refused (no units).
    void parse_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariant>("units");
        const auto row = [](const char* text, QVariant units) {
            QTest::newRow(text) << QString::fromUtf8(text) << units;
        };
        row("abc", qint64(0));
        row("2.5%", qint64(25000));
        row(" 1 000.5", qint64(10005000));
        row("1.2.3", qint64(12000));
        row("25e-1", qint64(25000));
        row("3e", qint64(30000));
        row("0.00005", qint64(0));
        row("0.00015", qint64(2));
        row("-0.00015", qint64(-2));
        row("922337203685477.5807", std::numeric_limits<qint64>::max());
        row("-922337203685477.5808", std::numeric_limits<qint64>::min());
        row("922337203685477.5808", QVariant());
        row("922337203685477.58075", QVariant());
        row("1e30", QVariant());
    }
    void parse() {
        QFETCH(QString, text);
        QFETCH(QVariant, units);
        if (units.isValid())
            QCOMPARE(Currency::parse(text).units(), units.toLongLong());
        else
            QVERIFY_THROWS_EXCEPTION(CurrencyError, Currency::parse(text));
    }

    // Shown to two places with half a cent away from zero; the short form reads back the same.
    void format_data() {
        QTest::addColumn<qint64>("units");
        QTest::addColumn<QString>("formatted");
        QTest::newRow("half") << qint64(5000) << u"0.50 0.5"_s;
        QTest::newRow("half cent") << qint64(1250) << u"0.13 0.125"_s;
        QTest::newRow("negative half cent") << qint64(-1250) << u"-0.13 -0.125"_s;
        QTest::newRow("tiny negative") << qint64(-1) << u"0.00 -0.0001"_s;
        QTest::newRow("zero") << qint64(0) << u"0.00 0"_s;
    }
    void format() {
        QFETCH(qint64, units);
        QFETCH(QString, formatted);
        const Currency c = Currency::fromUnits(units);
        QCOMPARE(c.format() + u' ' + c.toShortString(), formatted);
        QCOMPARE(Currency::parse(c.toShortString()), c);
    }

    void arithmeticNeverWraps() {
        const Currency max = Currency::fromUnits(std::numeric_limits<qint64>::max());
        const Currency min = Currency::fromUnits(std::numeric_limits<qint64>::min());
        QCOMPARE((Currency::parse(u"5.25"_s) - Currency::parse(u"20"_s)).toShortString(),
                 u"-14.75"_s);
        QVERIFY_THROWS_EXCEPTION(CurrencyError, max + Currency::fromUnits(1));
        QVERIFY_THROWS_EXCEPTION(CurrencyError, -min);
    }

    // The double's exact binary value, rounded half to even: large amounts stay whole.
    void fromDouble_data() {
        QTest::addColumn<double>("value");
        QTest::addColumn<QVariant>("units");
        QTest::newRow("largest whole")
            << 922337203685477.0 << QVariant(qint64(9223372036854770000));
        QTest::newRow("large with decimals")
            << 922337203685476.9 << QVariant(qint64(9223372036854768750));
        QTest::newRow("tie to even down") << 0.03125 << QVariant(qint64(312));
        QTest::newRow("tie to even up") << 0.09375 << QVariant(qint64(938));
        QTest::newRow("just above half") << 0.00125 << QVariant(qint64(13));
        QTest::newRow("just below half") << 0.00015 << QVariant(qint64(1));
        QTest::newRow("negative") << -0.00015 << QVariant(qint64(-1));
        QTest::newRow("1.23456") << 1.23456 << QVariant(qint64(12346));
        QTest::newRow("subnormal") << 5e-324 << QVariant(qint64(0));
        QTest::newRow("lowest") << -922337203685477.5 << QVariant(qint64(-9223372036854775000));
        QTest::newRow("past the top") << 922337203685477.6 << QVariant();
        QTest::newRow("1e300") << 1e300 << QVariant();
        QTest::newRow("infinity") << HUGE_VAL << QVariant();
        QTest::newRow("NaN") << std::nan("") << QVariant();
    }
    void fromDouble() {
        QFETCH(double, value);
        QFETCH(QVariant, units);
        if (units.isValid())
            QCOMPARE(Currency::fromDouble(value).units(), units.toLongLong());
        else
            QVERIFY_THROWS_EXCEPTION(CurrencyError, Currency::fromDouble(value));
    }

    // The product rounded once to cents; anything that is no amount in range shows 0.00.
    void extraValueText_data() {
        QTest::addColumn<QString>("topUp");
        QTest::addColumn<double>("rate");
        QTest::addColumn<QString>("shown");
        QTest::newRow("rounded once") << u"2.33"_s << 1.5 << u"0.03"_s;
        QTest::newRow("ten percent") << u"100"_s << 10.0 << u"10.00"_s;
        QTest::newRow("half cent") << u"1"_s << 0.5 << u"0.01"_s;
        QTest::newRow("below half cent") << u"0.09"_s << 5.0 << u"0.00"_s;
        QTest::newRow("whole range")
            << u"922337203685477.5807"_s << 100.0 << u"922337203685477.58"_s;
        QTest::newRow("product past range") << u"922337203685477"_s << 200.0 << u"0.00"_s;
        QTest::newRow("top-up past range") << u"99999999999999999"_s << 10.0 << u"0.00"_s;
        QTest::newRow("no number") << u"abc"_s << 10.0 << u"0.00"_s;
        QTest::newRow("rate 0") << u"100"_s << 0.0 << u"0.00"_s;
    }
    void extraValueText() {
        QFETCH(QString, topUp);
        QFETCH(double, rate);
        QTEST(pondar::extraValueText(topUp, rate), "shown");
    }
};

QTEST_APPLESS_MAIN(TestCurrency)
#include "tst_currency.moc"
