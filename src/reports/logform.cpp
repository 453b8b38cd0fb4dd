#include "reports/logform.h"

#include "reports/export.h"
#include "reports/grids.h"
#include "reports/widgets.h"
#include "shell/entryboxes.h"
#include "shell/gridview.h"
#include "shell/messages.h"
#include "shell/session.h"
#include "shell/textgrid.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

LogForm::LogForm(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , Label1(new QLabel(u"Transaction Date"_s, this))
    , TD(dateBox(u"TD"_s, session.BzDate, this))
    , Command2(button(u"Command2"_s, u"&Search"_s, this))
    , Command1(button(u"Command1"_s, u"&Close"_s, this))
    , DataGrid1(new QTableView(this))
    , m_model(new TextGridModel(this)) {
    setObjectName(u"MFLOG"_s);
    setWindowTitle(u"Log"_s);
    Label1->setObjectName(u"Label1"_s);
    DataGrid1->setObjectName(u"DataGrid1"_s);
    DataGrid1->setModel(m_model);
    setUpGrid(DataGrid1);
    DataGrid1->setMinimumSize(twips(12000), 300);

    auto* top = new QHBoxLayout;
    top->addWidget(Label1);
    top->addWidget(TD);
    top->addWidget(Command2);
    Command2->setDefault(true); // Enter in the date searches
    showButtonFocus(this);
    m_export = exportButton(this);
    top->addWidget(m_export);
    top->addStretch();
    top->addWidget(Command1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(DataGrid1, 1);

    connect(Command2, &QPushButton::clicked, this, [this] { search(); });
    connect(Command1, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_export, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            exportToFile(this, u"log-%1.csv"_s.arg(m_shownDay.toString(u"yyyyMMdd"_s)),
                         u"CSV (*.csv)"_s, csvBytes(*m_model));
        });
    });
    // The business date's log is what the supervisor opens the viewer for.
    if (const QDate day = typedDate(TD); day.isValid())
        guarded(this, [&] { load(day); });
}

void LogForm::search() {
    guarded(this, [&] {
        const QDate day = typedDate(TD);
        if (!day.isValid()) {
            showError(this, u"Invalid Date !!!"_s);
            TD->setFocus();
            return;
        }
        load(day);
    });
}

void LogForm::load(QDate day) {
    m_shownDay = day;
    logLines(*m_model, m_session.Conn, day);
    const int widths[] = {2400, 1500, 2500, 5500};
    for (int c = 0; c < 4; ++c)
        DataGrid1->setColumnWidth(c, twips(widths[c]));
    widenToContents(DataGrid1);
}

} // namespace pondar::reports
