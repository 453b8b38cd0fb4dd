#include "reports/ledger.h"
#include "reports/slip.h"
#include "support/fixtures.h"

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
    row.insert(extra);
    return row;
}

} // namespace

class TestSlip final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The value block follows the screen's mode, not the bill type; null name or remark lines
    // are left out.
    void valueBlockFollowsTheScreenMode_data() {
        QTest::addColumn<QString>("billType");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QVariantMap>("values");
        QTest::addColumn<QStringList>("expected"); // from the type line on, before the rule

        const QStringList named{u"Name     : TAN AH KOW"_s, u"Desc.    : counter 2"_s,
                                u"Previous Value : 10.00"_s};
        QTest::newRow("top-up mode on an adjustment line, with pending and extra")
            << u"AIN"_s << u"TOPUP"_s
            << QVariantMap{{u"PendingValue"_s, u"2.5"_s}, {u"ExtraValue"_s, u"5"_s}}
            << QStringList{u"Type     : Adjustment"_s} + named +
                   QStringList{u"Pending Topup  : 2.50"_s, u"Topup Value    : 50.00"_s,
                               u"Extra Value    : 5.00"_s, u"New Balance    : 65.00"_s};
        QTest::newRow("withdrawal, 16-column labels")
            << u"OUT"_s << u"WITHDRAW"_s
            << QVariantMap{{u"PValue"_s, u"-20"_s}, {u"PendingValue"_s, u"3"_s}}
            << QStringList{u"Type     : Withdraw"_s} + named +
                   QStringList{u"Pending Topup : 3.00"_s, u"Withdraw Value: -20.00"_s,
                               u"New Balance   : 65.00"_s};
        QTest::newRow("enquiry mode, null name and remark, unknown type")
            << u"XX"_s << u"ENQUIRY"_s
            << QVariantMap{{u"Name"_s, QVariant()}, {u"Remark"_s, QVariant()}}
            << QStringList{u"Type     : "_s, u"Previous Value : 10.00"_s};
    }
    void valueBlockFollowsTheScreenMode() {
        QFETCH(QString, billType);
        QFETCH(QString, mode);
        QFETCH(QVariantMap, values);
        QFETCH(QStringList, expected);
        test::Fixture f;
        test::insertRow(f.db(), u"Customize_Transaction"_s, line(u"R1"_s, billType, values));
        const QStringList lines = QStringList{Rule,
                                              u"       ** TRANSACTION SUMMARY **"_s,
                                              Rule,
                                              u""_s,
                                              expected.first(),
                                              u"RefNo#   : R1"_s,
                                              u"Date     : 01/02/2024 14:05:09"_s,
                                              u"Card No# : 000123"_s} +
                                  expected.mid(1) + QStringList{Rule, u""_s};
        const QString slip = reports::transactionSlip(f.db(), u"R1"_s, modeFromText(mode));
        QCOMPARE(test::linesOf(slip), lines);
        QCOMPARE(slip, test::crlf(lines));
    }

    // A reference holds the settlement line and the transaction line; only the latter is
    // slipped, and the reference reaches the statement as a value.
    void theSlipIsTheTransactionLineOfItsReference() {
        test::Fixture f;
        test::insertRow(f.db(), u"Customize_Transaction"_s, line(u"R'3"_s, u"PED"_s));
        QCOMPARE(reports::transactionSlip(f.db(), u"R'3"_s, TransactionMode::TopUp), QString());
        test::insertRow(f.db(), u"Customize_Transaction"_s,
                        line(u"R'3"_s, u"IN"_s, {{u"PendingValue"_s, u"7"_s}}));
        const QStringList lines =
            test::linesOf(reports::transactionSlip(f.db(), u"R'3"_s, TransactionMode::TopUp));
        QCOMPARE(lines.mid(4, 2), (QStringList{u"Type     : Top Up"_s, u"RefNo#   : R'3"_s}));
        QVERIFY(lines.contains(u"Pending Topup  : 7.00"_s));
        QCOMPARE(reports::transactionSlip(f.db(), u"x' OR '1'='1"_s, TransactionMode::TopUp),
                 QString());
    }

    // A name's control characters (here a drawer kick, a cut and a line break) never reach
    // the printer.
    void enquirySlip() {
        const QString slip = reports::enquirySlip(u"000123"_s, u"TAN \x1b\x1d\r\nAH KOW"_s,
                                                  Currency::parse(u"1234.567"_s),
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
    }
};

QTEST_GUILESS_MAIN(TestSlip)
#include "tst_slip.moc"
