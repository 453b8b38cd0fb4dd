#include "transactions/msup.h"

#include "shell/messages.h"
#include "shell/session.h"
#include "transactions/supervisor.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

MSUP::MSUP(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , m_prompts(this) {
    setObjectName(u"MSUP"_s);
    setWindowTitle(u"Supervisor"_s);

    auto* form = new QFormLayout;
    const std::array<QString, 2> labels = {u"Member Code"_s, u"Remark"_s};
    for (int i = 0; i < int(TXT.size()); ++i) {
        TXT[i] = new QLineEdit(this);
        TXT[i]->setObjectName(u"TXT(%1)"_s.arg(i));
        form->addRow(labels[i], TXT[i]);
    }
    TXT[0]->setMaxLength(20);
    TXT[1]->setMaxLength(200);

    const std::array<QString, 4> captions = {u"&Close"_s, u"&Block Card"_s, u"&Replacement Card"_s,
                                             u"&Void Last Transaction"_s};
    auto* actions = new QHBoxLayout;
    for (int i = 0; i < int(CBUT.size()); ++i) {
        CBUT[i] = new QPushButton(captions[i], this);
        CBUT[i]->setObjectName(u"CBUT(%1)"_s.arg(i));
        CBUT[i]->setAutoDefault(false);
        connect(CBUT[i], &QPushButton::clicked, this, [this, i] { clicked(i); });
    }
    for (int i : {1, 2, 3})
        actions->addWidget(CBUT[i]);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(CBUT[0]);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(actions);
    layout->addLayout(bottom);
}

void MSUP::clicked(int index) {
    guarded(this, [&] {
        switch (index) {
        case 0:
            accept();
            break;
        case 1:
            report(blockCard(m_session, TXT[0]->text(), TXT[1]->text()));
            break;
        case 2:
            report(issueReplacementCard(m_session, m_prompts, TXT[0]->text()));
            break;
        case 3:
            report(voidLastTransaction(m_session, m_prompts));
            break;
        default:
            break;
        }
    });
}

void MSUP::report(const SupervisorResult& result) {
    if (result.done)
        showNotice(this, result.message);
    else
        showError(this, result.message);
}

} // namespace pondar
