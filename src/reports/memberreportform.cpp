#include "reports/memberreportform.h"

#include "reports/export.h"
#include "reports/grids.h"
#include "reports/slip.h"
#include "reports/widgets.h"
#include "shell/entryboxes.h"
#include "shell/gridview.h"
#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "shell/text.h"
#include "shell/textgrid.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

namespace {

enum Column { Id, Type, Date, Ref, Value, TrsNo };

// The member report opens on the last month up to the business date: a customer asking at the
// till wants the recent postings, and a range of one day finds nothing before the date's
// postings are in.
QString monthBefore(const QString& day) {
    const QDate date = parseDate(day);
    return date.isValid() ? date.addDays(-30).toString(u"dd/MM/yyyy"_s) : day;
}

} // namespace

MemberReportForm::MemberReportForm(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , Label1(new QLabel(u"Member Code :"_s, this))
    , TXT(new QLineEdit(this))
    , Label3(new QLabel(u"Date :"_s, this))
    , TD1(dateBox(u"TD(1)"_s, monthBefore(session.BzDate), this))
    , TD2(dateBox(u"TD(2)"_s, session.BzDate, this))
    , CBUT0(button(u"CBUT(0)"_s, u"&Search"_s, this))
    , CBUT2(button(u"CBUT(2)"_s, u"&Close"_s, this))
    , CBUT5(button(u"CBUT(5)"_s, u"&Print"_s, this))
    , STab(new QTabWidget(this))
    , MData(new QTableView(this))
    , m_model(new TextGridModel(this)) {
    setObjectName(u"MRPT"_s);
    setWindowTitle(u"Report"_s);
    Label1->setObjectName(u"Label1"_s);
    Label3->setObjectName(u"Label3"_s);
    TXT->setObjectName(u"TXT"_s);
    STab->setObjectName(u"STab"_s);
    MData->setObjectName(u"MData"_s);
    MData->setModel(m_model);
    setUpGrid(MData);
    MData->setSelectionMode(QAbstractItemView::SingleSelection);
    MData->setMinimumSize(twips(10500), 260);
    STab->addTab(MData, u"History"_s);
    // The second tab has no content on this form; it stays in view, switched off.
    STab->addTab(new QWidget(STab), u"Pending"_s);
    STab->setTabEnabled(1, false);
    CBUT5->setEnabled(false);
    // Enter in the code or a date searches.
    CBUT0->setDefault(true);
    showButtonFocus(this);
    m_export = exportButton(this);
    m_export->setEnabled(false);

    auto* top = new QHBoxLayout;
    top->addWidget(Label1);
    top->addWidget(TXT);
    top->addWidget(Label3);
    top->addWidget(TD1);
    top->addWidget(TD2);
    top->addWidget(CBUT0);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_export);
    buttons->addStretch();
    buttons->addWidget(CBUT5);
    buttons->addWidget(CBUT2);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(STab, 1);
    layout->addLayout(buttons);

    TXT->installEventFilter(this);
    TD1->installEventFilter(this);
    TD2->installEventFilter(this);
    connect(CBUT0, &QPushButton::clicked, this, [this] { search(); });
    connect(CBUT2, &QPushButton::clicked, this, &QDialog::reject);
    connect(CBUT5, &QPushButton::clicked, this, [this] { reopenSlip(); });
    connect(m_export, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            exportToFile(this, u"member-%1.csv"_s.arg(m_shownCode), u"CSV (*.csv)"_s,
                         csvBytes(*m_model, {Id}));
        });
    });
}

bool MemberReportForm::eventFilter(QObject* watched, QEvent* event) {
    if (watched == TXT && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down) {
        lookup();
        return true;
    }
    if ((watched == TD1 || watched == TD2) && event->type() == QEvent::FocusIn) {
        // After the box has placed its cursor, so the selection survives a mouse click.
        auto* box = static_cast<QLineEdit*>(watched);
        QTimer::singleShot(0, box, [box] { box->selectAll(); });
    }
    return QDialog::eventFilter(watched, event);
}

void MemberReportForm::lookup() {
    guarded(this, [&] {
        if (const auto picked = pickFromLookup(m_session, memberLookup(TXT->text()), this))
            TXT->setText(*picked);
        TXT->setFocus();
    });
}

void MemberReportForm::search() {
    guarded(this, [&] {
        if (TXT->text().isEmpty()) {
            TXT->setFocus();
            return;
        }
        const QDate from = typedDate(TD1);
        const QDate to = typedDate(TD2);
        for (const auto& [date, box] : {std::pair{from, TD1}, std::pair{to, TD2}}) {
            if (!date.isValid()) {
                showError(this, u"Invalid Date !!!"_s);
                box->setFocus();
                return;
            }
        }

        CBUT5->setEnabled(false);
        m_export->setEnabled(false);
        m_shownCode = TXT->text();
        memberTransactions(*m_model, m_session.Conn, TXT->text(), from, to);
        MData->setColumnHidden(Id, true);
        const int widths[] = {0, 1000, 2500, 1500, 1500, 3500};
        for (int c = Type; c <= TrsNo; ++c)
            MData->setColumnWidth(c, twips(widths[c]));
        widenToContents(MData);
        if (m_model->rowCount() > 0) {
            MData->selectRow(0);
            CBUT5->setEnabled(true);
            m_export->setEnabled(true);
        }
    });
}

void MemberReportForm::reopenSlip() {
    guarded(this, [&] {
        const QModelIndex current = MData->currentIndex();
        const int row = current.isValid() ? current.row() : 0;
        // A reprint is previewed; it has its own print button.
        const QString refNo = m_model->data(m_model->index(row, TrsNo)).toString();
        showSlip(m_session, SlipRequest{TransactionSlip{refNo, std::nullopt}, false}, this);
    });
}

} // namespace pondar::reports
