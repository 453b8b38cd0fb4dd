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
    // The leading number of the text counts, rounded half to even to four places; a value past
    // the range is refused (units empty).
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
        QVERIFY_THROWS_EXCEPTION(CurrencyError, Currency::fromDouble(1e300));
        QCOMPARE(Currency::fromDouble(1.23456).units(), qint64(12346));
    }
};

QTEST_APPLESS_MAIN(TestCurrency)
#include "tst_currency.moc"
