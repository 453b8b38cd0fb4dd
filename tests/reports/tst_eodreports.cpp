#include "reports/eod.h"
#include "reports/export.h"
#include "reports/grids.h"
#include "reports/ledger.h"
#include "reports/slip.h"
#include "shell/textgrid.h"
#include "support/fixtures.h"

#include <pondar/error.h>

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

const QString Rule(40, u'-');
const QString End = u"-------------End of Report--------------"_s;
const QString Blank20(20, u' ');

reports::EodRequest request(const QString& from = u"01/02/2024"_s,
                            const QString& to = u"03/02/2024"_s) {
    return {u"OUT1"_s, from, to, QDateTime(QDate(2024, 2, 5), QTime(9, 30, 0))};
}

QStringList header(const QString& title, const QString& dateLine) {
    return {u"Outlet    : OUT1"_s,
            u"Report    : "_s + title,
            dateLine,
            u"Printed   : 05/02/2024 09:30:00"_s,
            Rule,
            u""_s};
}

void trs(const test::Fixture& f, const QString& date, const QString& type, const QString& value,
         const QString& card = u"C1"_s, const QVariant& name = u"ANN"_s, const QString& ref = {},
         const QVariant& bill = {}) {
    test::insertRow(f.db(), u"Customize_Transaction"_s,
                    u"TrsDate,Billtype,PValue,CardNo,Name,RefTrsNo,BillNo"_s,
                    {date, type, value, card, name, ref, bill});
}

void topup(const test::Fixture& f, const QString& card, const QString& date, const QString& value,
           int status = 0, const QVariant& bill = {}, const QString& ref = u"REF"_s) {
    test::insertRow(f.db(), u"Customize_Topup"_s,
                    u"cardNo,DateInput,UpdateStatus,FValue,RefTrsNo,BillNo"_s,
                    {card, date, status, value, ref, bill});
}

void comm(const test::Fixture& f, const QString& staff, const QString& date, const QString& value,
          const QString& ref = u"REF"_s, const QString& card = u"C1"_s,
          const QString& name = u"ANN"_s) {
    test::insertRow(f.db(), u"Customize_StaffComm"_s,
                    u"StaffCode,TrsDate,PValue,RefTrsNo,CardNo,Name"_s,
                    {staff, date, value, ref, card, name});
}

QString row(const QString& label, const QString& amount) {
    return label.leftJustified(30, u' ') + amount.rightJustified(10, u' ');
}

QString total(const QString& amount) {
    return u"Total :   "_s + Blank20 + amount.rightJustified(10, u' ');
}

// Posts a line as the slip reads it, under the reference R'3; `extra` overrides columns.
void slipLine(const test::Fixture& f, const QString& type, const QVariantMap& extra = {}) {
    const QStringList names = u"CardNo,Name,TrsDate,RefTrsNo,Billtype,PValue,PreviousValue,"
                              "NewValue,PendingValue,TopupValue,ExtraValue,Remark"_s.split(u',');
    const QStringList values = QString(u"000123|TAN AH KOW|2024-02-01 14:05:09|R'3|"_s + type +
                                       u"|50|10|65|0|50|0|counter 2"_s)
                                   .split(u'|');
    QVariantMap row;
    for (qsizetype i = 0; i < names.size(); ++i)
        row.insert(names.at(i), values.at(i));
    row.insert(extra);
    test::insertRow(f.db(), u"Customize_Transaction"_s, row.keys().join(u','), row.values());
}

void compareReport(const QString& actual, const QStringList& expected) {
    QCOMPARE(test::linesOf(actual), expected);
    QCOMPARE(actual, test::crlf(expected));
}

} // namespace

// What the reports and slips print, to the character.
class TestEodReports final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void emptyRanges() {
        test::Fixture f;
        // Outside the range, and settled: none of these may show.
        trs(f, u"2024-01-31 23:59:59"_s, u"IN"_s, u"5"_s);
        trs(f, u"2024-02-04 00:00:00"_s, u"OUT"_s, u"-5"_s);
        comm(f, u"S1"_s, u"2024-01-31 10:00:00"_s, u"1"_s);
        topup(f, u"C1"_s, u"2024-02-02 10:00:00"_s, u"9"_s, 1);

        const QString dates = u"01/02/2024 to 03/02/2024"_s;
        const QString asAt = u"as at     : 03/02/2024"_s;
        compareReport(reports::dailySummary(f.db(), request()),
                      header(u"Daily Transaction summary"_s, u"BizDate   : "_s + dates)
                          << u""_s << End);
        compareReport(reports::memberBalances(f.db(), request()), header(u"Member Balances"_s, asAt)
                                                                      << End);
        compareReport(reports::pendingDetails(f.db(), request()),
                      header(u"Pending Topup Details"_s, asAt) << End);
        compareReport(reports::staffCommission(f.db(), request()),
                      header(u"Staff Commission Details"_s, u"Date      : "_s + dates) << End);
    }

    void dailySummaryCarriesTheByTypeTotalIntoTheFirstBlock() {
        test::Fixture f;
        f.addStaff(u"S1"_s, u"ALI"_s);
        trs(f, u"2024-02-01 00:00:00"_s, u"IN"_s, u"60"_s, u"C1"_s, u"ANN"_s, u"R1"_s, u"B1"_s);
        trs(f, u"2024-02-02 11:00:00"_s, u"IN"_s, u"40"_s, u" C2 "_s, QVariant(), u"R2"_s);
        trs(f, u"2024-02-03 23:59:59"_s, u"OUT"_s, u"-30"_s, u"C1"_s, u"ANN"_s, u"R3"_s, u"B3"_s);
        // Commission counts for the from-date only.
        comm(f, u"S1"_s, u"2024-02-01 00:00:00"_s, u"1.5"_s);
        comm(f, u"S1"_s, u"2024-02-01 00:00:00"_s, u"2.25"_s);
        comm(f, u"S1"_s, u"2024-02-02 00:00:00"_s, u"100"_s);

        compareReport(
            reports::dailySummary(f.db(), request()),
            header(u"Daily Transaction summary"_s, u"BizDate   : 01/02/2024 to 03/02/2024"_s)
                << row(u"TOPUP"_s, u"100.00"_s) << row(u"WITHDRAW"_s, u"-30.00"_s) << u""_s
                << u"[TOPUP / IN VALUE]"_s << u"01/02/2024 #B1"_s << u"RefNo# :R1"_s
                << u"C1        ANN                      60.00"_s << u""_s << u"02/02/2024 #"_s
                << u"RefNo# :R2"_s << u"C2                                 40.00"_s << u""_s << Rule
                << total(u"170.00"_s) << u""_s << u"[WITHDRAW / OUT VALUE]"_s << u"03/02/2024 #B3"_s
                << u"RefNo# :R3"_s << u"C1        ANN                     -30.00"_s << u""_s << Rule
                << total(u"-30.00"_s) << u""_s << u"[STAFF COMMISSION]"_s
                << u"S1        ALI                       3.75"_s << Rule << total(u"3.75"_s)
                << u""_s << End);
    }

    void unknownBillTypeKeepsThePreviousLabel() {
        test::Fixture f;
        // Grouped in code order: OUT, then OZZ.
        trs(f, u"2024-02-01 10:00:00"_s, u"OZZ"_s, u"7"_s);
        trs(f, u"2024-02-01 10:00:00"_s, u"OUT"_s, u"-5"_s);
        trs(f, u"2024-03-01 10:00:00"_s, u"QQ"_s, u"2"_s);
        comm(f, u"S1"_s, u"2024-03-01 00:00:00"_s, u"1"_s);

        QStringList lines = test::linesOf(reports::dailySummary(f.db(), request()));
        QCOMPARE(lines.mid(6, 4),
                 (QStringList{row(u"WITHDRAW"_s, u"-5.00"_s), row(u"WITHDRAW"_s, u"7.00"_s), u""_s,
                              u"[WITHDRAW / OUT VALUE]"_s}));
        QVERIFY(lines.contains(total(u"-3.00"_s))); // 2.00 by type, then -5.00
        // With no top-up or withdraw block the by-type total carries into the staff block.
        lines =
            test::linesOf(reports::dailySummary(f.db(), request(u"01/03/2024"_s, u"01/03/2024"_s)));
        QCOMPARE(
            lines.mid(6, 6),
            (QStringList{row(QString(), u"2.00"_s), u""_s, u"[STAFF COMMISSION]"_s,
                         u"S1                                  1.00"_s, Rule, total(u"3.00"_s)}));
    }

    // The balances' pending block keeps to the range; the details list every pending top-up.
    void balancesAndPendingTopUps() {
        test::Fixture f;
        f.addMember(u"C1"_s, u"ANN LEE"_s);
        trs(f, u"2024-02-01 10:00:00"_s, u"IN"_s, u"50"_s);
        trs(f, u"2024-02-02 10:00:00"_s, u"OUT"_s, u"-20"_s);
        trs(f, u"2024-02-09 10:00:00"_s, u"IN"_s, u"99"_s);
        trs(f, u"2024-02-02 10:00:00"_s, u"IN"_s, u"10"_s, u"C0"_s, u"BOB"_s);
        topup(f, u"C1"_s, u"2024-02-03 12:00:00"_s, u"2.5"_s, 0, u"B-123456789012345678901"_s,
              u"R12"_s);
        topup(f, u"C1"_s, u"2019-06-30 08:00:00"_s, u"10"_s, 0, {}, u"R11"_s);

        const QString asAt = u"as at     : 03/02/2024"_s;
        compareReport(reports::memberBalances(f.db(), request()),
                      header(u"Member Balances"_s, asAt)
                          << u"[MEMBER BALANCES]"_s << u"C0        BOB                      10.00"_s
                          << u"C1        ANN                      30.00"_s << Rule
                          << total(u"40.00"_s) << u""_s << u"[PENDING TOPUP VALUE]"_s
                          << u"C1        ANN LEE                   2.50"_s << Rule
                          << total(u"2.50"_s) << u""_s << End);
        compareReport(reports::pendingDetails(f.db(), request()),
                      header(u"Pending Topup Details"_s, asAt)
                          << u"[C1-ANN LEE]"_s << u"Ref:R11"_s
                          << u"30/06/2019"_s + Blank20 + u"     10.00"_s << u""_s << u"Ref:R12"_s
                          << u"03/02/2024B-123456789012345678      2.50"_s << u""_s << Rule
                          << total(u"12.50"_s) << u""_s << End);
    }

    void staffCommissionLinesAndTotals() {
        test::Fixture f;
        f.addStaff(u"S1"_s, u"ALI"_s);
        comm(f, u"S1"_s, u"2024-02-03 23:59:59"_s, u"2.25"_s, u"R2"_s, u"C2"_s,
             u"A NAME LONGER THAN TWENTY"_s);
        comm(f, u"S1"_s, u"2024-02-01 00:00:00"_s, u"1.5"_s, u"R1"_s, u"C1234567890123"_s);

        const QString earning = u"Earning : "_s + Blank20;
        compareReport(
            reports::staffCommission(f.db(), request()),
            header(u"Staff Commission Details"_s, u"Date      : 01/02/2024 to 03/02/2024"_s)
                << u"[S1-ALI]"_s << u"Ref:R1"_s << u"01/02/2024 C123456789ANN"_s
                << earning + u"      1.50"_s << u""_s << u"Ref:R2"_s
                << u"03/02/2024 C2        A NAME LONGER THAN T"_s << earning + u"      2.25"_s
                << u""_s << Rule << total(u"3.75"_s) << u""_s << End);
    }

    // A grid leaves as shown, quoted for a spreadsheet and with no formula run from a typed
    // value; a report leaves as printed, without the printer's control codes.
    void exportsAreTheBytesShown() {
        test::Fixture f;
        trs(f, u"2024-02-01 10:00:00"_s, u"IN"_s, u"5"_s, u"C1"_s, u"ANN"_s, u"=SUM(A1)"_s,
            u"B,\"7\""_s);
        trs(f, u"2024-02-02 10:00:00"_s, u"OUT"_s, u"-2.5"_s, u"C1"_s, u"ANN"_s, u"R2"_s, u"B2"_s);
        TextGridModel grid;
        reports::memberTransactions(grid, f.db(), u"C1"_s, QDate(2024, 2, 1), QDate(2024, 2, 3));
        QCOMPARE(reports::csvBytes(grid, {0}),
                 "\xEF\xBB\xBFType,Date,Ref,Value,TrsNo\r\n"
                 "IN,01/02/2024 10:00:00,\"B,\"\"7\"\"\",5.00,'=SUM(A1)\r\n"
                 "OUT,02/02/2024 10:00:00,B2,-2.50,R2\r\n"_ba);

        const QString report = reports::staffCommission(f.db(), request());
        const QByteArray printed = reports::printerBytes(report);
        QCOMPARE(reports::reportFileBytes(report), printed.mid(4).chopped(6));

        QTemporaryDir dir;
        const QString path = dir.filePath(u"report.txt"_s);
        reports::writeExport(path, "old");
        reports::writeExport(path, reports::reportFileBytes(report));
        QCOMPARE(test::readFile(path), reports::reportFileBytes(report));
        QVERIFY_THROWS_EXCEPTION(Error, reports::writeExport(dir.filePath(u"no/such.txt"_s), "x"));
    }

    // The value block follows the screen's mode, not the bill type; null lines are left out.
    // The settlement line sharing the reference is never the slip.
    void slipValueBlockFollowsTheScreenMode_data() {
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
        QTest::newRow("top-up") << u"IN"_s << u"TOPUP"_s << QVariantMap{{u"PendingValue"_s, u"7"_s}}
                                << QStringList{u"Type     : Top Up"_s} + named +
                                       QStringList{u"Pending Topup  : 7.00"_s,
                                                   u"Topup Value    : 50.00"_s,
                                                   u"New Balance    : 65.00"_s};
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
    void slipValueBlockFollowsTheScreenMode() {
        QFETCH(QString, billType);
        QFETCH(QString, mode);
        QFETCH(QVariantMap, values);
        QFETCH(QStringList, expected);
        test::Fixture f;
        const auto slip = [&](const QString& ref) {
            return reports::transactionSlip(f.db(), ref, modeFromText(mode));
        };
        slipLine(f, u"PED"_s);
        QCOMPARE(slip(u"R'3"_s), QString());
        slipLine(f, billType, values);
        compareReport(slip(u"R'3"_s),
                      QStringList{Rule, u"       ** TRANSACTION SUMMARY **"_s, Rule, u""_s,
                                  expected.first(), u"RefNo#   : R'3"_s,
                                  u"Date     : 01/02/2024 14:05:09"_s, u"Card No# : 000123"_s} +
                          expected.mid(1) + QStringList{Rule, u""_s});
        QCOMPARE(slip(u"x' OR '1'='1"_s), QString());
    }

    // A name's control characters (drawer kick, cut, line break) never reach the printer.
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

QTEST_GUILESS_MAIN(TestEodReports)
#include "tst_eodreports.moc"
