#include "reports/slipform.h"

#include "reports/slip.h"
#include "reports/widgets.h"
#include "shell/messages.h"
#include "shell/session.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

SlipForm::SlipForm(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , RTF(previewBox(this))
    , Command1(button(u"Command1"_s, u"&Print"_s, this))
    , Command2(button(u"Command2"_s, u"&Close"_s, this)) {
    setObjectName(u"PFORM"_s);
    setWindowTitle(QString());
    setFont(QFont(u"Tahoma"_s));
    RTF->setMinimumHeight(360);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addWidget(Command2);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(RTF);
    layout->addLayout(buttons);

    connect(Command1, &QPushButton::clicked, this, [this] {
        if (print())
            accept();
    });
    connect(Command2, &QPushButton::clicked, this, &QDialog::reject);
}

void SlipForm::run() {
    guarded(this, [&] { build(); });
    if (m_session.SlipAction == u"PRINT"_s) {
        // Printed slips are never seen; a failed print has shown its message and the form
        // goes all the same.
        done(print() ? Accepted : Rejected);
        return;
    }
    exec();
}

void SlipForm::done(int result) {
    m_session.SlipAction.clear();
    QDialog::done(result);
}

void SlipForm::build() {
    m_text.clear();
    RTF->clear();
    if (m_session.SlipRefNo != u"ENQUIRY"_s)
        m_text = transactionSlip(m_session.Conn, m_session.SlipRefNo, m_session.TransactionMode);
    else
        m_text = enquirySlip(m_session.EnquiryCardNo, m_session.EnquiryName,
                             m_session.EnquiryBalance, m_session.now());
    showPreview(RTF, m_text);
}

bool SlipForm::print() {
    bool printed = false;
    guarded(this, [&] {
        printText(m_session.Printer, m_text);
        printed = true;
    });
    return printed;
}

} // namespace pondar::reports
