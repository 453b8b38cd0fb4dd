#include "reports/slipform.h"

#include "reports/widgets.h"
#include "shell/messages.h"
#include "shell/session.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

SlipForm::SlipForm(SessionSettings& session, SlipRequest request, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , m_request(std::move(request))
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
    if (m_request.printAtOnce) {
        // Printed slips are never seen; a failed print has shown its message and the form
        // goes all the same.
        done(print() ? Accepted : Rejected);
        return;
    }
    exec();
}

void SlipForm::build() {
    m_text.clear();
    RTF->clear();
    if (const auto* line = std::get_if<TransactionSlip>(&m_request.slip)) {
        m_text = transactionSlip(m_session.Conn, line->refNo, line->mode);
    } else {
        const auto& enquiry = std::get<EnquirySlip>(m_request.slip);
        m_text = enquirySlip(enquiry.cardNo, enquiry.name, enquiry.balance, m_session.now());
    }
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
