#include <pondar/genclass.h>

#include "reports/eod.h"
#include "reports/ledger.h"
#include "reports/slip.h"
#include "shell/activitylog.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

const QDateTime Now(QDate(2024, 2, 5), QTime(9, 30, 0));

void trs(const test::Fixture& f, const QString& card, const QString& date, const QString& type,
         const QString& value, const QString& ref) {
    test::insertRow(
        f.db(), u"Customize_Transaction"_s,
        u"CardNo,Name,TrsDate,Billtype,PValue,PreviousValue,NewValue,TopupValue,"
        "RefTrsNo,BillNo"_s,
        {card, u"ANN"_s, date, type, value, u"1"_s, u"6"_s, value, ref, QString(u"B-"_s + ref)});
}

// A grid's captions, then its rows, "|" between cells.
QStringList gridText(const QAbstractItemModel* m) {
    QStringList out;
    for (int r = -1; r < m->rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < m->columnCount(); ++c)
            cells << (r < 0 ? m->headerData(c, Qt::Horizontal) : m->index(r, c).data()).toString();
        out << cells.join(u'|');
    }
    return out;
}

QString shown(QWidget* form) {
    return test::child<QPlainTextEdit>(form, u"RTF"_s)->toPlainText();
}

void click(QWidget* form, const QString& name) {
    test::child<QAbstractButton>(form, name)->click();
}

// Closes and records (with a transaction screen's mode) every modal screen but `keep`.
void closeScreens(QTimer& timer, QStringList& closed, const QString& keep = {}) {
    QObject::connect(&timer, &QTimer::timeout, [&closed, keep] {
        QWidget* w = QApplication::activeModalWidget();
        if (!w || qobject_cast<QMessageBox*>(w) || w->objectName() == keep)
            return;
        const QVariant mode = w->property("TransactionMode");
        closed << w->objectName() + (mode.isValid() ? u'(' + mode.toString() + u')' : QString());
        w->close(); // a dialog's close is its reject
    });
    timer.start(10);
}

} // namespace

class TestReportScreens final : public QObject {
    Q_OBJECT

    test::Fixture* f = nullptr;
    SessionSettings s;

private Q_SLOTS:
    void init() {
        f = new test::Fixture;
        s.Conn = f->db();
        s.Printer = f->printerPath();
        s.IniPath = f->iniPath();
        s.BzDate = u"01/02/2024"_s;
        s.OutletCode = u"OUT1"_s;
        s.StaffCode = u"S1"_s;
        s.clock = [] { return Now; };
    }
    void cleanup() {
        s = SessionSettings(); // lets go of the connection before the fixture removes it
        delete f;
    }

    void endOfDayRefusesBadDatesRunsLogsAndPrints() {
        f->addStaff(u"S1"_s, u"ALI"_s);
        test::insertRow(f->db(), u"Customize_StaffComm"_s, u"StaffCode,TrsDate,PValue,RefTrsNo"_s,
                        {u"S1"_s, u"2024-02-02 10:00:00"_s, u"1.5"_s, u"R1"_s});
        trs(*f, u"C12345678901"_s, u"2024-02-02 10:00:00"_s, u"IN"_s, u"5"_s, u"R1"_s);
        const QString report =
            reports::staffCommission(f->db(), {u"OUT1"_s, u"01/02/2024"_s, u"03/02/2024"_s, Now});

        test::MessageBoxes boxes;
        test::OnModal form(u"MEOD"_s, [&](QWidget* eod) {
            auto* td = test::child<QLineEdit>(eod, u"TD"_s);
            auto* td2 = test::child<QLineEdit>(eod, u"TD2"_s);
            // A report and the search refuse a bad from-date with different messages.
            for (const auto& [from, button] :
                 {std::pair(u"31/02/2024"_s, u"RBUT(0)"_s), std::pair(QString(), u"CBUT(0)"_s)}) {
                td->setText(from);
                click(eod, button);
                QCOMPARE(shown(eod), QString());
            }
            QCOMPARE(f->count(u"Customize_Log"_s), 0);

            td->setText(u"01/02/2024"_s);
            td2->setText(u"03/02/2024"_s);
            click(eod, u"RBUT(3)"_s);
            QCOMPARE(shown(eod), QString(report).replace(u"\r\n"_s, u"\n"_s));
            click(eod, u"CBUT(5)"_s);
            // A refused date takes the previous report off the screen.
            td2->setText(u"30/02/2024"_s);
            click(eod, u"RBUT(3)"_s);
            QCOMPARE(shown(eod), QString());
            td2->setText(u"03/02/2024"_s);
            // A card number too wide for its column stops that report, with no log line.
            click(eod, u"RBUT(1)"_s);
            QCOMPARE(shown(eod), QString());
            click(eod, u"CBUT(2)"_s);
        });
        showEndOfDay(s);
        QVERIFY(form.ran());
        QCOMPARE(test::readFile(f->printerPath()), reports::printerBytes(report));
        QCOMPARE(boxes.texts(),
                 (QStringList{u"Invalid Date Input !!!"_s, u"Invalid Date !!!"_s,
                              u"Invalid Date Input !!!"_s,
                              u"The report cannot be finished: \"C12345678901\" does not fit in "
                              "10 columns."_s}));
        QCOMPARE(f->rows(u"SELECT StaffCode,Description FROM Customize_Log"_s),
                 u"S1|View Report Staff Commission From 01/02/2024 to 03/02/2024"_s);
    }

    void logViewerShowsOneBusinessDate() {
        f->addStaff(u"S1"_s, u"ALI"_s);
        s.clock = [] { return QDateTime(QDate(2024, 2, 2), QTime(0, 30)); };
        writeLog(s, u"after midnight"_s);
        s.BzDate = u"02/02/2024"_s;
        writeLog(s, u"next day"_s);
        s.BzDate = u"01/02/2024"_s;

        test::MessageBoxes boxes;
        test::OnModal form(u"MFLOG"_s, [&](QWidget* log) {
            // Filled for the business date as it opens.
            QCOMPARE(gridText(test::child<QTableView>(log, u"DataGrid1"_s)->model()),
                     (QStringList{u"Date|Staff|Name|Description"_s,
                                  u"02/02/2024 00:30:00|S1|ALI|after midnight"_s}));
            test::child<QLineEdit>(log, u"TD"_s)->setText(u"32/01/2024"_s);
            click(log, u"Command2"_s);
            click(log, u"Command1"_s);
        });
        showLogViewer(s);
        QVERIFY(form.ran());
        QCOMPARE(boxes.texts(), QStringList{u"Invalid Date !!!"_s});
    }

    // The preview of a slip reopened from the list prints what it shows.
    void memberReportListsAndReopensSlips() {
        trs(*f, u"C1"_s, u"2024-02-01 00:00:00"_s, u"IN"_s, u"9"_s, u"MIDNIGHT"_s);
        trs(*f, u"C1"_s, u"2024-02-01 00:00:01"_s, u"IN"_s, u"5"_s, u"R1"_s);
        trs(*f, u"C1"_s, u"2024-02-03 23:59:59"_s, u"PED"_s, u"2.5"_s, u"R2"_s);
        trs(*f, u"C2"_s, u"2024-02-02 10:00:00"_s, u"IN"_s, u"7"_s, u"OTHER"_s);

        test::MessageBoxes boxes;
        const QString slipR1 = reports::transactionSlip(f->db(), u"R1"_s, TransactionMode::TopUp);
        QString slipShown, opened;
        test::OnModal slip(u"PFORM"_s, [&](QWidget* form) {
            slipShown = shown(form);
            click(form, u"Command1"_s);
        });
        test::OnModal form(u"MRPT"_s, [&](QWidget* rpt) {
            opened = test::child<QLineEdit>(rpt, u"TD(1)"_s)->text() + u'-' +
                     test::child<QLineEdit>(rpt, u"TD(2)"_s)->text();
            test::child<QLineEdit>(rpt, u"TD(1)"_s)->setText(u"01/02/2024"_s);
            test::child<QLineEdit>(rpt, u"TD(2)"_s)->setText(u"03/02/2024"_s);
            auto* code = test::child<QLineEdit>(rpt, u"TXT"_s);
            code->setText(u"C1"_s);
            QTest::keyClick(code, Qt::Key_Return); // Search is the default button
            auto* grid = test::child<QTableView>(rpt, u"MData"_s);
            QCOMPARE(gridText(grid->model()),
                     (QStringList{u"ID|Type|Date|Ref|Value|TrsNo"_s,
                                  u"2|IN|01/02/2024 00:00:01|B-R1|5.00|R1"_s,
                                  u"3|PED|03/02/2024 23:59:59|B-R2|2.50|R2"_s}));
            // Amounts right-aligned, every column as wide as its values, one line to a row.
            QCOMPARE(grid->model()->index(0, 4).data(Qt::TextAlignmentRole).value<Qt::Alignment>(),
                     Qt::AlignRight | Qt::AlignVCenter);
            for (int c = 1; c < 5; ++c)
                QVERIFY(grid->columnWidth(c) >=
                        static_cast<QAbstractItemView*>(grid)->sizeHintForColumn(c));
            QVERIFY(!grid->wordWrap() && grid->horizontalHeader()->stretchLastSection());
            grid->setCurrentIndex(grid->model()->index(0, 1));
            click(rpt, u"CBUT(5)"_s);
            QCOMPARE(slipShown, QString(slipR1).replace(u"\r\n"_s, u"\n"_s));
            QCOMPARE(test::readFile(f->printerPath()), reports::printerBytes(slipR1));

            test::child<QLineEdit>(rpt, u"TD(1)"_s)->clear();
            click(rpt, u"CBUT(0)"_s);
            click(rpt, u"CBUT(2)"_s);
        });
        showMemberReport(s);
        QVERIFY(form.ran());
        QCOMPARE(boxes.texts(), QStringList{u"Invalid Date !!!"_s});
        QCOMPARE(opened, u"02/01/2024-01/02/2024"_s);
    }

    void everyButtonOpensItsScreenAndReturns() {
        test::MessageBoxes boxes;
        QStringList closed;
        QTimer timer;
        closeScreens(timer, closed, u"MAINMENU"_s);

        // A top-up left at staff entry goes no further, nor the supervisor without the password.
        QStringList seen;
        test::OnModal menu(u"MAINMENU"_s, [&](QWidget* w) {
            for (int button : {6, 7, 8, 9, 1, 2, 3, 4, 0}) {
                closed.clear();
                click(w, u"CBUT(%1)"_s.arg(button));
                seen << u"%1 %2 %3"_s.arg(button).arg(closed.join(u','),
                                                      w->isVisible() ? u"open"_s : u"closed"_s);
            }
            click(w, u"CBUT(5)"_s);
        });
        showMainMenu(s);
        QVERIFY(menu.ran());
        QCOMPARE(seen, (QStringList{u"6 MEOD open"_s, u"7 MFLOG open"_s, u"8 MRPT open"_s,
                                    u"9 MESC open"_s, u"1 MFMAIN(WITHDRAW) open"_s,
                                    u"2 MFMAIN(ADJUSTMENT) open"_s, u"3 MFMAIN(ENQUIRY) open"_s,
                                    u"4 MFCUST open"_s, u"0 MFCOMM open"_s}));
        QCOMPARE(s.AppValue, Currency());
    }

    // The menu has no amount to pass on; supervisor and top-up stop at MESC and staff entry.
    void startModesOpenTheirScreens() {
        for (const auto& [mode, screen] :
             {std::pair(u"EOD"_s, u"MEOD"_s), std::pair(u"LOG"_s, u"MFLOG"_s),
              std::pair(u"MAINMENU"_s, u"MAINMENU"_s), std::pair(u"SUPERVISOR"_s, u"MESC"_s),
              std::pair(u"TOPUP"_s, u"MFCOMM"_s)}) {
            GenClass app;
            QStringList closed;
            QTimer timer;
            closeScreens(timer, closed);
            QVERIFY(!app.StartApp(u"S1"_s, {}, u"01/02/2024"_s, f->printerPath(), u"OUT1"_s,
                                  f->iniPath(), f->db(), mode, {}, {}, Currency::parse(u"10"_s)));
            QCOMPARE(closed, QStringList{screen});
            QCOMPARE(app.session().AppValue,
                     Currency::parse(mode == u"MAINMENU"_s ? u"0"_s : u"10"_s));
        }
    }
};

QTEST_MAIN(TestReportScreens)
#include "tst_reportscreens.moc"
