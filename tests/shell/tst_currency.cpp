#include <pondar/currency.h>
#include <pondar/error.h>

#include <QTest>

#include <limits>

using namespace Qt::Literals::StringLiterals;
using pondar::Currency;
using pondar::CurrencyError;

class TestCurrency final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parse_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("units");
        QTest::newRow("empty") << u""_s << qint64(0);
        QTest::newRow("letters") << u"abc"_s << qint64(0);
        QTest::newRow("lone sign") << u"-"_s << qint64(0);
        QTest::newRow("percent sign") << u"2.5%"_s << qint64(25000);
        QTest::newRow("blanks inside") << u" 1 000.5"_s << qint64(10005000);
        QTest::newRow("negative") << u"-12.34"_s << qint64(-123400);
        QTest::newRow("leading point") << u".5"_s << qint64(5000);
        QTest::newRow("second point stops") << u"1.2.3"_s << qint64(12000);
        QTest::newRow("exponent") << u"1.5e2"_s << qint64(1500000);
        QTest::newRow("negative exponent") << u"25e-1"_s << qint64(25000);
        QTest::newRow("bare e stops") << u"3e"_s << qint64(30000);
        QTest::newRow("tie to even down") << u"0.00005"_s << qint64(0);
        QTest::newRow("tie to even up") << u"0.00015"_s << qint64(2);
        QTest::newRow("over tie") << u"0.000050001"_s << qint64(1);
        QTest::newRow("negative tie") << u"-0.00015"_s << qint64(-2);
        QTest::newRow("largest") << u"922337203685477.5807"_s << std::numeric_limits<qint64>::max();
        QTest::newRow("smallest") << u"-922337203685477.5808"_s
                                  << std::numeric_limits<qint64>::min();
        QTest::newRow("tiny exponent") << u"1e-99999"_s << qint64(0);
    }
    void parse() {
        QFETCH(QString, text);
        QFETCH(qint64, units);
        QCOMPARE(Currency::parse(text).units(), units);
    }

    void parseOverflowThrows_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("one past largest") << u"922337203685477.5808"_s;
        QTest::newRow("rounds past largest") << u"922337203685477.58075"_s;
        QTest::newRow("one past smallest") << u"-922337203685477.5809"_s;
        QTest::newRow("huge exponent") << u"1e30"_s;
        QTest::newRow("many digits") << u"99999999999999999999999"_s;
    }
    void parseOverflowThrows() {
        QFETCH(QString, text);
        QVERIFY_THROWS_EXCEPTION(CurrencyError, Currency::parse(text));
    }

    void fromDouble_data() {
        QTest::addColumn<double>("value");
        QTest::addColumn<qint64>("units");
        QTest::newRow("ServerComm") << 1.23456 << qint64(12346);
        QTest::newRow("exact tie down to even") << 0.00125 << qint64(12);
        QTest::newRow("negative") << -2.5 << qint64(-25000);
        QTest::newRow("cents") << 110.1 << qint64(1101000);
    }
    void fromDouble() {
        QFETCH(double, value);
        QFETCH(qint64, units);
        QCOMPARE(Currency::fromDouble(value).units(), units);
    }

    void fromDoubleRejectsOutOfRange() {
        QVERIFY_THROWS_EXCEPTION(CurrencyError, Currency::fromDouble(1e300));
        QVERIFY_THROWS_EXCEPTION(CurrencyError, Currency::fromDouble(-1e19));
        QVERIFY_THROWS_EXCEPTION(CurrencyError,
                                 Currency::fromDouble(std::numeric_limits<double>::quiet_NaN()));
        QVERIFY_THROWS_EXCEPTION(CurrencyError,
                                 Currency::fromDouble(std::numeric_limits<double>::infinity()));
    }

    void format_data() {
        QTest::addColumn<qint64>("units");
        QTest::addColumn<QString>("formatted");
        QTest::addColumn<QString>("shortest");
        QTest::newRow("half") << qint64(5000) << u"0.50"_s << u"0.5"_s;
        QTest::newRow("rounds up") << qint64(12345670) << u"1234.57"_s << u"1234.567"_s;
        QTest::newRow("half cent away from zero") << qint64(1250) << u"0.13"_s << u"0.125"_s;
        QTest::newRow("negative") << qint64(-300000) << u"-30.00"_s << u"-30"_s;
        QTest::newRow("negative half cent") << qint64(-1250) << u"-0.13"_s << u"-0.125"_s;
        QTest::newRow("tiny negative") << qint64(-1) << u"0.00"_s << u"-0.0001"_s;
        QTest::newRow("zero") << qint64(0) << u"0.00"_s << u"0"_s;
        QTest::newRow("smallest") << std::numeric_limits<qint64>::min() << u"-922337203685477.58"_s
                                  << u"-922337203685477.5808"_s;
    }
    void format() {
        QFETCH(qint64, units);
        QFETCH(QString, formatted);
        QFETCH(QString, shortest);
        const Currency c = Currency::fromUnits(units);
        QCOMPARE(c.format(), formatted);
        QCOMPARE(c.toShortString(), shortest);
        QCOMPARE(Currency::parse(shortest), c);
    }

    void arithmeticKeepsOperandOrderAndNeverWraps() {
        const Currency a = Currency::parse(u"20"_s);
        const Currency b = Currency::parse(u"5.25"_s);
        QCOMPARE((a - b).toShortString(), u"14.75"_s);
        QCOMPARE((b - a).toShortString(), u"-14.75"_s);
        QCOMPARE((-a + b).toShortString(), u"-14.75"_s);
        QVERIFY(b < a && a > b && a >= a && b <= a && a != b);
        Currency c = a;
        c -= b;
        c += a;
        QCOMPARE(c.toShortString(), u"34.75"_s);

        const Currency max = Currency::fromUnits(std::numeric_limits<qint64>::max());
        const Currency min = Currency::fromUnits(std::numeric_limits<qint64>::min());
        const Currency tick = Currency::fromUnits(1);
        QVERIFY_THROWS_EXCEPTION(CurrencyError, max + tick);
        QVERIFY_THROWS_EXCEPTION(CurrencyError, min - tick);
        QVERIFY_THROWS_EXCEPTION(CurrencyError, -min);
        QCOMPARE((max - max).units(), qint64(0));
    }

    void percent_data() {
        QTest::addColumn<QString>("amount");
        QTest::addColumn<double>("rate");
        QTest::addColumn<QString>("result");
        QTest::newRow("commission") << u"100"_s << 2.0 << u"2"_s;
        QTest::newRow("fraction rate") << u"33.33"_s << 1.2346 << u"0.4115"_s;
        QTest::newRow("zero rate") << u"50"_s << 0.0 << u"0"_s;
        QTest::newRow("negative amount") << u"-10"_s << 5.0 << u"-0.5"_s;
        QTest::newRow("tie to even") << u"0.0001"_s << 50.0 << u"0"_s;
    }
    void percent() {
        QFETCH(QString, amount);
        QFETCH(double, rate);
        QFETCH(QString, result);
        QCOMPARE(Currency::parse(amount).percent(rate).toShortString(), result);
    }
};

QTEST_APPLESS_MAIN(TestCurrency)
#include "tst_currency.moc"
