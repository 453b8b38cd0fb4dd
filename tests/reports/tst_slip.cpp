#include "reports/ledger.h"
#include "reports/reporttext.h"
#include "reports/slip.h"
#include "support/fixtures.h"

#include <pondar/error.h>

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

const QString Rule(40, u'-');

QVariantMap line(const QString& ref, const QString& type, const QVariantMap& extra = {}) {
    QVariantMap row{{u"CardNo"_s, u"000123"_s},
                    {u"Name"_s, u"TAN AH KOW"_s},
                    {u"TrsDate"_s, u"2024-02-01 14:05:09"_s},
                    {u"RefTrsNo"_s, ref},
                    {u"Billtype"_s, type},
                    {u"PValue"_s, u"50"_s},
                    {u"PreviousValue"_s, u"10"_s},
                    {u"NewValue"_s, u"65"_s},
                    {u"PendingValue"_s, u"0"_s},
                    {u"TopupValue"_s, u"50"_s},
                    {u"ExtraValue"_s, u"0"_s},
                    {u"Remark"_s, u"counter 2"_s}};
    for (auto it = extra.begin(); it != extra.end(); ++it)
        row.insert(it.key(), it.value());
    return row;
}

QStringList head(const QString& type, const QString& ref) {
    return {Rule,
            u"       ** TRANSACTION SUMMARY **"_s,
            Rule,
            u""_s,
            u"Type     : "_s + type,
            u"RefNo#   : "_s + ref,
            u"Date     : 01/02/2024 14:05:09"_s,
            u"Card No# : 000123"_s};
}

} // namespace

class TestSlip final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valueBlockFollowsTheScreenMode_data() {
        QTest::addColumn<QString>("billType");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QVariantMap>("values");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("top-up, nothing pending, no extra: two value lines")
            << u"IN"_s << u"TOPUP"_s << QVariantMap{}
            << QStringList{u"Topup Value    : 50.00"_s, u"New Balance    : 65.00"_s};
        QTest::newRow("top-up with pending and extra")
            << u"IN"_s << u"TOPUP"_s
            << QVariantMap{{u"PendingValue"_s, u"2.5"_s}, {u"ExtraValue"_s, u"5"_s}}
            << QStringList{u"Pending Topup  : 2.50"_s, u"Topup Value    : 50.00"_s,
                           u"Extra Value    : 5.00"_s, u"New Balance    : 65.00"_s};
        QTest::newRow("withdrawal, 16-column labels")
            << u"OUT"_s << u"WITHDRAW"_s
            << QVariantMap{{u"PValue"_s, u"-20"_s}, {u"PendingValue"_s, u"3"_s}}
            << QStringList{u"Pending Topup : 3.00"_s, u"Withdraw Value: -20.00"_s,
                           u"New Balance   : 65.00"_s};
        QTest::newRow("adjustment out")
            << u"AOT"_s << u"ADJUSTMENT"_s << QVariantMap{{u"PValue"_s, u"-1.5"_s}}
            << QStringList{u"Adjusted Value: -1.50"_s, u"New Balance   : 65.00"_s};
        QTest::newRow("enquiry mode has no value block")
            << u"IN"_s << u"ENQUIRY"_s << QVariantMap{} << QStringList{};
        QTest::newRow("modes are case-sensitive")
            << u"IN"_s << u"topup"_s << QVariantMap{} << QStringList{};
        QTest::newRow("block by mode, not by bill type")
            << u"AIN"_s << u"TOPUP"_s << QVariantMap{}
            << QStringList{u"Topup Value    : 50.00"_s, u"New Balance    : 65.00"_s};
    }
    void valueBlockFollowsTheScreenMode() {
        QFETCH(QString, billType);
        QFETCH(QString, mode);
        QFETCH(QVariantMap, values);
        QFETCH(QStringList, expected);
        test::Fixture f;
        test::insertRow(f.db(), u"Customize_Transaction"_s, line(u"R1"_s, billType, values));

        const QString word = billType == u"IN"_s    ? u"Top Up"_s
                             : billType == u"OUT"_s ? u"Withdraw"_s
                                                    : u"Adjustment"_s;
        QStringList lines = head(word, u"R1"_s);
        lines << u"Name     : TAN AH KOW"_s << u"Desc.    : counter 2"_s
              << u"Previous Value : 10.00"_s << expected << Rule << u""_s;
        const QString slip = reports::transactionSlip(f.db(), u"R1"_s, mode);
        QCOMPARE(test::linesOf(slip), lines);
        QCOMPARE(slip, test::crlf(lines));
    }

    void nullNameAndRemarkAndUnknownTypeWord() {
        test::Fixture f;
        test::insertRow(
            f.db(), u"Customize_Transaction"_s,
            line(u"R2"_s, u"XX"_s, {{u"Name"_s, QVariant()}, {u"Remark"_s, QVariant()}}));
        QStringList lines = head(u""_s, u"R2"_s);
        lines << u"Previous Value : 10.00"_s << Rule << u""_s;
        QCOMPARE(test::linesOf(reports::transactionSlip(f.db(), u"R2"_s, u"ENQUIRY"_s)), lines);
    }

    // A reference holds the settlement line and the transaction line; only the latter is
    // slipped, and the reference reaches the statement as a value.
    void theSlipIsTheTransactionLineOfItsReference() {
        test::Fixture f;
        test::insertRow(f.db(), u"Customize_Transaction"_s, line(u"R'3"_s, u"PED"_s));
        QCOMPARE(reports::transactionSlip(f.db(), u"R'3"_s, u"TOPUP"_s), QString());
        test::insertRow(f.db(), u"Customize_Transaction"_s,
                        line(u"R'3"_s, u"IN"_s, {{u"PendingValue"_s, u"7"_s}}));
        const QStringList lines =
            test::linesOf(reports::transactionSlip(f.db(), u"R'3"_s, u"TOPUP"_s));
        QCOMPARE(lines.mid(4, 2), (QStringList{u"Type     : Top Up"_s, u"RefNo#   : R'3"_s}));
        QVERIFY(lines.contains(u"Pending Topup  : 7.00"_s));
        QCOMPARE(reports::transactionSlip(f.db(), u"x' OR '1'='1"_s, u"TOPUP"_s), QString());
    }

    void storedDatesPrintAsDayMonthYear_data() {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("dateTime");
        QTest::addColumn<QString>("date");
        QTest::newRow("with T and fraction") << QVariant(u"2024-12-31T23:59:59.500"_s)
                                             << u"31/12/2024 23:59:59"_s << u"31/12/2024"_s;
        QTest::newRow("driver date-time") << QVariant(QDateTime(QDate(2024, 2, 29), QTime(7, 8, 9)))
                                          << u"29/02/2024 07:08:09"_s << u"29/02/2024"_s;
        QTest::newRow("no such day is shown as stored")
            << QVariant(u"2024-02-30 10:00:00"_s) << u"2024-02-30 10:00:00"_s
            << u"2024-02-30 10:00:00"_s;
        QTest::newRow("null") << QVariant() << QString() << QString();
    }
    void storedDatesPrintAsDayMonthYear() {
        QFETCH(QVariant, stored);
        QFETCH(QString, dateTime);
        QFETCH(QString, date);
        QCOMPARE(reports::dateTimeText(stored), dateTime);
        QCOMPARE(reports::dateText(stored), date);
    }

    void enquirySlip() {
        const QString slip =
            reports::enquirySlip(u"000123"_s, u"TAN AH KOW"_s, Currency::parse(u"1234.567"_s),
                                 QDateTime(QDate(2024, 2, 5), QTime(9, 3, 7)));
        QCOMPARE(slip, test::crlf({Rule, u"       ** ENQUIRY SUMMARY **"_s, Rule, u""_s,
                                   u"Type     : Enquiry"_s, u"Date     : 05/02/2024 09:03:07"_s,
                                   u"Card No# : 000123"_s, u"Name     : TAN AH KOW"_s,
                                   u"Balance  : 1234.57"_s, Rule, u""_s}));
    }

    void printerBytesFrameTheTextInWindows1252() {
        const QByteArray expected =
            QByteArray("\x1b\x40\r\nCaf\xe9 \x80 1\r\n\r\n") + QByteArray("\x1d\x56\x42\x00", 4);
        QCOMPARE(reports::printerBytes(u"Caf\u00e9 \u20ac 1\r\n"_s), expected);
        QCOMPARE(reports::printerBytes(QString()),
                 QByteArray("\x1b\x40\r\n\r\n\x1d\x56\x42\x00", 10));
    }

    // A longer file already there is replaced, not overwritten in place.
    void printReplacesTheTarget() {
        test::Fixture f;
        test::writeFile(f.printerPath(), QByteArray(100, 'x'));
        reports::printText(f.printerPath(), u"slip"_s);
        QCOMPARE(test::readFile(f.printerPath()), reports::printerBytes(u"slip"_s));
        QVERIFY_THROWS_EXCEPTION(Error, reports::printText(QString(), u"slip"_s));
    }
};

QTEST_GUILESS_MAIN(TestSlip)
#include "tst_slip.moc"
