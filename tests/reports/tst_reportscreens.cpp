#include "reports/eod.h"
#include "reports/ledger.h"
#include "reports/slip.h"
#include "shell/activitylog.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

const QDateTime Now(QDate(2024, 2, 5), QTime(9, 30, 0));

SessionSettings sessionFor(const test::Fixture& f) {
    SessionSettings s;
    s.Conn = f.db();
    s.Printer = f.printerPath();
    s.BzDate = u"01/02/2024"_s;
    s.OutletCode = u"OUT1"_s;
    s.StaffCode = u"S1"_s;
    s.clock = [] { return Now; };
    return s;
}

void trs(const test::Fixture& f, const QString& card, const QString& date, const QString& type,
         const QString& value, const QString& ref) {
    test::insertRow(
        f.db(), u"Customize_Transaction"_s,
        u"CardNo,Name,TrsDate,Billtype,PValue,PreviousValue,NewValue,TopupValue,"
        "RefTrsNo,BillNo"_s,
        {card, u"ANN"_s, date, type, value, u"1"_s, u"6"_s, value, ref, QString(u"B-"_s + ref)});
}

QByteArray printed(const test::Fixture& f) {
    return test::readFile(f.printerPath());
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

QString asShown(const QString& text) {
    QString s = text;
    return s.replace(u"\r\n"_s, u"\n"_s);
}

void click(QWidget* form, const QString& name) {
    QAbstractButton* b = test::child<QAbstractButton>(form, name);
    QVERIFY(b);
    b->click();
}

} // namespace

class TestReportScreens final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void slipPreviewPrintAtOnceAndUnwritablePrinter() {
        test::Fixture f;
        trs(f, u"C1"_s, u"2024-02-01 10:00:00"_s, u"IN"_s, u"5"_s, u"R1"_s);
        SessionSettings s = sessionFor(f);
        s.SlipRefNo = u"R1"_s;
        s.TransactionMode = u"TOPUP"_s;
        s.SlipAction = u"PREVIEW"_s;
        const QString slip = reports::transactionSlip(f.db(), u"R1"_s, u"TOPUP"_s);
        test::OnModal preview(u"PFORM"_s, [&](QWidget* form) {
            QCOMPARE(form->windowTitle(), QString());
            QCOMPARE(shown(form), asShown(slip));
            QVERIFY(test::child<QPlainTextEdit>(form, u"RTF"_s)->isReadOnly());
            click(form, u"Command1"_s);
        });
        QVERIFY(showScreen(Screen::Slip, s));
        QVERIFY(preview.ran());
        QCOMPARE(printed(f), reports::printerBytes(slip));
        QCOMPARE(s.SlipAction, QString());

        {
            // An enquiry printed at once never shows the form.
            s.SlipRefNo = u"ENQUIRY"_s;
            s.SlipAction = u"PRINT"_s;
            s.EnquiryCardNo = u"C1"_s;
            s.EnquiryName = u"ANN"_s;
            s.EnquiryBalance = Currency::parse(u"12.5"_s);
            test::OnModal never(
                u"PFORM"_s, [](QWidget* form) { form->close(); }, 300);
            QVERIFY(showScreen(Screen::Slip, s));
            QVERIFY(!never.ran());
            QCOMPARE(printed(f), reports::printerBytes(reports::enquirySlip(
                                     u"C1"_s, u"ANN"_s, Currency::parse(u"12.5"_s), Now)));
            QCOMPARE(s.SlipAction, QString());
        }

        // A printer that cannot be written: the preview says why and stays open; printing at
        // once says why and goes on to close.
        QDir().mkpath(f.path(u"lp0"_s));
        s.Printer = f.path(u"lp0"_s);
        s.SlipRefNo = u"R1"_s;
        test::MessageBoxes boxes;
        bool stayedOpen = false;
        test::OnModal failing(u"PFORM"_s, [&](QWidget* form) {
            click(form, u"Command1"_s);
            stayedOpen = form->isVisible();
            click(form, u"Command2"_s);
        });
        QVERIFY(showScreen(Screen::Slip, s));
        QVERIFY(stayedOpen);
        s.SlipAction = u"PRINT"_s;
        QVERIFY(showScreen(Screen::Slip, s));
        QCOMPARE(s.SlipAction, QString());
        QCOMPARE(boxes.seen().size(), 2);
        for (const auto& box : boxes.seen())
            QVERIFY2(box.icon == QMessageBox::Critical && box.text.contains(s.Printer),
                     qPrintable(box.text));
    }

    void endOfDayRefusesBadDatesRunsLogsAndPrints() {
        test::Fixture f;
        f.addStaff(u"S1"_s, u"ALI"_s);
        test::insertRow(f.db(), u"Customize_StaffComm"_s, u"StaffCode,TrsDate,PValue,RefTrsNo"_s,
                        {u"S1"_s, u"2024-02-02 10:00:00"_s, u"1.5"_s, u"R1"_s});
        trs(f, u"C12345678901"_s, u"2024-02-02 10:00:00"_s, u"IN"_s, u"5"_s, u"R1"_s);
        SessionSettings s = sessionFor(f);
        const reports::EodRequest request{u"OUT1"_s, u"01/02/2024"_s, u"03/02/2024"_s, Now};
        const QString report = reports::staffCommission(f.db(), request);

        struct Refused {
            QString from, to, button, focus; // focus empty: nothing refused
        };
        const QList<Refused> refused{
            {u"31/02/2024"_s, u"01/03/2024"_s, u"RBUT(0)"_s, u"TD"_s},
            {u"01/02/2024"_s, QString(), u"RBUT(2)"_s, u"TD2"_s},
            {u"1/2/2024"_s, u"01/02/2024"_s, u"RBUT(3)"_s, u"TD"_s},
            {QString(), u"01/02/2024"_s, u"CBUT(0)"_s, u"TD"_s}, // search: the from-date only
            {u"01/02/2024"_s, QString(), u"CBUT(0)"_s, QString()}};
        test::MessageBoxes boxes;
        test::OnModal form(u"MEOD"_s, [&](QWidget* eod) {
            QCOMPARE(eod->windowTitle(), u"Report"_s);
            auto* td = test::child<QLineEdit>(eod, u"TD"_s);
            auto* td2 = test::child<QLineEdit>(eod, u"TD2"_s);
            QCOMPARE(td->text() + u' ' + td2->text(), u"01/02/2024 01/02/2024"_s);
            QCOMPARE(td->inputMask(), u"99/99/9999;_"_s.left(10));
            for (const Refused& r : refused) {
                test::focusOn(test::child<QWidget>(eod, u"CBUT(2)"_s));
                td->setText(r.from);
                td2->setText(r.to);
                click(eod, r.button);
                if (!r.focus.isEmpty())
                    QCOMPARE(eod->focusWidget(), test::child<QWidget>(eod, r.focus));
                QCOMPARE(shown(eod), QString());
            }
            QCOMPARE(f.count(u"Customize_Log"_s), 0);

            td->setText(u"01/02/2024"_s);
            td2->setText(u"03/02/2024"_s);
            click(eod, u"RBUT(3)"_s);
            QCOMPARE(shown(eod), asShown(report));
            click(eod, u"CBUT(5)"_s);
            QVERIFY(eod->isVisible());
            // A card number too wide for its column stops that report, with no log line.
            click(eod, u"RBUT(1)"_s);
            QCOMPARE(shown(eod), QString());
            click(eod, u"CBUT(2)"_s);
        });
        QVERIFY(showScreen(Screen::EndOfDay, s));
        QVERIFY(form.ran());
        QCOMPARE(printed(f), reports::printerBytes(report));
        const QStringList told = boxes.texts();
        QCOMPARE(told.mid(0, 4),
                 (QStringList{u"Invalid Date Input !!!"_s, u"Invalid Date Input !!!"_s,
                              u"Invalid Date Input !!!"_s, u"Invalid Date !!!"_s}));
        QCOMPARE(told.size(), 5);
        QVERIFY2(told.last().contains(u"C12345678901"_s), qPrintable(told.last()));
        QCOMPARE(f.rows(u"SELECT StaffCode,Description FROM Customize_Log"_s),
                 u"S1|View Report Staff Commission From 01/02/2024 to 03/02/2024"_s);
    }

    void logViewerShowsOneBusinessDate() {
        test::Fixture f;
        f.addStaff(u"S1"_s, u"ALI"_s);
        SessionSettings s = sessionFor(f);
        const auto logAt = [&](const QString& staff, const QString& bzDate, QTime time, int day,
                               const QString& text) {
            s.StaffCode = staff;
            s.BzDate = bzDate;
            s.clock = [=] { return QDateTime(QDate(2024, 2, day), time); };
            writeLog(s, text);
        };
        logAt(u"S1"_s, u"01/02/2024"_s, QTime(23, 0), 1, u"late"_s);
        logAt(u"S9"_s, u"01/02/2024"_s, QTime(0, 30), 2, u"after midnight"_s);
        logAt(u"S1"_s, u"01/02/2024"_s, QTime(8, 0), 1, u"early"_s);
        logAt(u"S1"_s, u"02/02/2024"_s, QTime(9, 0), 2, u"next day"_s);
        s.BzDate = u"01/02/2024"_s;

        test::MessageBoxes boxes;
        test::OnModal form(u"MFLOG"_s, [&](QWidget* log) {
            QCOMPARE(log->windowTitle(), u"Log"_s);
            auto* td = test::child<QLineEdit>(log, u"TD"_s);
            QCOMPARE(td->text(), u"01/02/2024"_s);
            auto* grid = test::child<QTableView>(log, u"DataGrid1"_s);
            click(log, u"Command2"_s);
            const QAbstractItemModel* m = grid->model();
            const QString captions = u"Date|Staff|Name|Description"_s;
            QCOMPARE(gridText(m), (QStringList{captions, u"01/02/2024 08:00:00|S1|ALI|early"_s,
                                               u"01/02/2024 23:00:00|S1|ALI|late"_s,
                                               u"02/02/2024 00:30:00|S9||after midnight"_s}));
            td->setText(u"03/02/2024"_s);
            click(log, u"Command2"_s);
            QCOMPARE(gridText(m), QStringList{captions});

            td->setText(u"32/01/2024"_s);
            click(log, u"Command2"_s);
            QCOMPARE(log->focusWidget(), td);
            click(log, u"Command1"_s);
        });
        QVERIFY(showScreen(Screen::Log, s));
        QVERIFY(form.ran());
        QCOMPARE(boxes.texts(), QStringList{u"Invalid Date !!!"_s});
    }

    void memberReportListsAndReopensSlips() {
        test::Fixture f;
        trs(f, u"C1"_s, u"2024-02-01 00:00:00"_s, u"IN"_s, u"9"_s, u"MIDNIGHT"_s);
        trs(f, u"C1"_s, u"2024-02-01 00:00:01"_s, u"IN"_s, u"5"_s, u"R1"_s);
        trs(f, u"C1"_s, u"2024-02-03 23:59:59"_s, u"PED"_s, u"2.5"_s, u"R2"_s);
        trs(f, u"C1 "_s, u"2024-02-02 10:00:00"_s, u"IN"_s, u"7"_s, u"BLANK"_s);
        trs(f, u"C2"_s, u"2024-02-02 10:00:00"_s, u"IN"_s, u"7"_s, u"OTHER"_s);
        SessionSettings s = sessionFor(f);
        s.TransactionMode = u"TOPUP"_s;

        test::MessageBoxes boxes;
        QString slipShown;
        test::OnModal slip(u"PFORM"_s, [&](QWidget* form) {
            slipShown = shown(form);
            click(form, u"Command2"_s);
        });
        test::OnModal form(u"MRPT"_s, [&](QWidget* rpt) {
            auto* txt = test::child<QLineEdit>(rpt, u"TXT"_s);
            auto* print = test::child<QPushButton>(rpt, u"CBUT(5)"_s);
            auto* grid = test::child<QTableView>(rpt, u"MData"_s);
            QVERIFY(!print->isEnabled());

            // Nothing typed: no search and no message.
            click(rpt, u"CBUT(0)"_s);
            QCOMPARE(rpt->focusWidget(), txt);

            test::child<QLineEdit>(rpt, u"TD(2)"_s)->setText(u"03/02/2024"_s);
            txt->setText(u"C9"_s);
            click(rpt, u"CBUT(0)"_s);
            QCOMPARE(grid->model()->rowCount(), 0);
            QVERIFY(!print->isEnabled());

            txt->setText(u"C1"_s);
            click(rpt, u"CBUT(0)"_s);
            const QAbstractItemModel* m = grid->model();
            QVERIFY(grid->isColumnHidden(0));
            QCOMPARE(gridText(m), (QStringList{u"ID|Type|Date|Ref|Value|TrsNo"_s,
                                               u"2|IN|01/02/2024 00:00:01|B-R1|5.00|R1"_s,
                                               u"3|PED|03/02/2024 23:59:59|B-R2|2.50|R2"_s}));
            QVERIFY(print->isEnabled());

            grid->setCurrentIndex(m->index(0, 1));
            click(rpt, u"CBUT(5)"_s);
            QVERIFY(slip.ran());
            QVERIFY(slipShown.contains(u"RefNo#   : R1\n"_s));

            // A date box left half typed.
            test::child<QLineEdit>(rpt, u"TD(1)"_s)->clear();
            click(rpt, u"CBUT(0)"_s);
            QCOMPARE(rpt->focusWidget(), test::child<QWidget>(rpt, u"TD(1)"_s));
            click(rpt, u"CBUT(2)"_s);
        });
        QVERIFY(showScreen(Screen::MemberReport, s));
        QVERIFY(form.ran());
        QCOMPARE(boxes.texts(), QStringList{u"Invalid Date !!!"_s});
    }

    void memberLookupOffersActiveMembersFromWhatWasTyped() {
        test::Fixture f;
        SessionSettings s = sessionFor(f);
        // Where the lookup grid is built it opens; leave it without a pick.
        test::OnModal lookup(u"SEAFORM"_s, [](QWidget* w) { static_cast<QDialog*>(w)->reject(); });
        test::OnModal form(u"MRPT"_s, [&](QWidget* rpt) {
            auto* txt = test::child<QLineEdit>(rpt, u"TXT"_s);
            txt->setText(u"C'1"_s);
            test::focusOn(txt);
            QTest::keyClick(txt, Qt::Key_Down);
            QCOMPARE(txt->text(), u"C'1"_s);
            click(rpt, u"CBUT(2)"_s);
        });
        QVERIFY(showScreen(Screen::MemberReport, s));
        QCOMPARE(s.LookupQuery,
                 u"Select MemberCode as [CardNo],MemberName as [Name] from tloy_mt_member where "
                 "NonActive=0 and   MemberCode like 'C''1%' order by MemberCode"_s);
        // The statement the grid will run must be one the database takes.
        f.addMember(u"C'10"_s, u"QUOTE"_s);
        f.addMember(u"C'2"_s, u"OTHER"_s);
        QCOMPARE(f.scalar(s.LookupQuery).toString(), u"C'10"_s);
    }
};

QTEST_MAIN(TestReportScreens)
#include "tst_reportscreens.moc"
