#include "reports/eodform.h"

#include "reports/eod.h"
#include "reports/export.h"
#include "reports/slip.h"
#include "reports/widgets.h"
#include "shell/activitylog.h"
#include "shell/entryboxes.h"
#include "shell/messages.h"
#include "shell/session.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

EodForm::EodForm(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , Label3(new QLabel(u"Date :"_s, this))
    , TD(dateBox(u"TD"_s, session.BzDate, this))
    , TD2(dateBox(u"TD2"_s, TD->text(), this))
    , CBUT0(button(u"CBUT(0)"_s, u"&Search"_s, this))
    , CBUT2(button(u"CBUT(2)"_s, u"&Close"_s, this))
    , CBUT5(button(u"CBUT(5)"_s, u"&Print"_s, this))
    , RTF(previewBox(this)) {
    setObjectName(u"MEOD"_s);
    setWindowTitle(u"Report"_s);
    Label3->setObjectName(u"Label3"_s);
    RTF->setMinimumHeight(420);

    const std::array<QString, 4> captions = {u"Daily Transaction summary"_s, u"Member Balance"_s,
                                             u"Pending summary"_s, u"Staff Commission"_s};
    auto* options = new QVBoxLayout;
    for (int i = 0; i < 4; ++i) {
        RBUT[i] = new QRadioButton(captions[i], this);
        RBUT[i]->setObjectName(u"RBUT(%1)"_s.arg(i));
        options->addWidget(RBUT[i]);
        // clicked, not toggled: choosing the same report again runs it again.
        connect(RBUT[i], &QRadioButton::clicked, this, [this, i] { runReport(i); });
    }

    auto* dates = new QHBoxLayout;
    dates->addWidget(Label3);
    dates->addWidget(TD);
    dates->addWidget(TD2);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(CBUT0);
    buttons->addWidget(CBUT5);
    showButtonFocus(this);
    m_export = exportButton(this);
    buttons->addWidget(m_export);
    buttons->addWidget(CBUT2);
    auto* left = new QVBoxLayout;
    left->addLayout(options);
    left->addLayout(dates);
    left->addStretch();
    left->addLayout(buttons);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(left);
    layout->addWidget(RTF, 1);

    connect(CBUT0, &QPushButton::clicked, this, [this] { search(); });
    connect(CBUT2, &QPushButton::clicked, this, &QDialog::reject);
    connect(CBUT5, &QPushButton::clicked, this, [this] { print(); });
    connect(m_export, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            if (!m_text.isEmpty())
                exportToFile(this, m_reportName + u".txt"_s, u"Text (*.txt)"_s,
                             reportFileBytes(m_text));
        });
    });
}

void EodForm::runReport(int index) {
    guarded(this, [&] {
        // Whatever was on show belongs to other dates; it must not pass for this report.
        m_text.clear();
        RTF->clear();
        for (QLineEdit* box : {TD, TD2}) {
            if (!typedDate(box).isValid()) {
                showError(this, u"Invalid Date Input !!!"_s);
                box->setFocus();
                return;
            }
        }
        const QString logText = u"View Report "_s + RBUT[index]->text() + u" From "_s + TD->text() +
                                u" to "_s + TD2->text();
        m_reportName = RBUT[index]->text() + u' ' + typedDate(TD).toString(u"yyyyMMdd"_s);
        m_text = eodReport(static_cast<EodReport>(index), m_session.Conn,
                           {m_session.OutletCode, TD->text(), TD2->text(), m_session.now()});
        showPreview(RTF, m_text);
        writeLog(m_session, logText);
    });
}

void EodForm::search() {
    guarded(this, [&] {
        if (!typedDate(TD).isValid()) {
            showError(this, u"Invalid Date !!!"_s);
            TD->setFocus();
        }
    });
}

void EodForm::print() {
    guarded(this, [&] { printText(m_session.Printer, m_text); });
}

} // namespace pondar::reports
