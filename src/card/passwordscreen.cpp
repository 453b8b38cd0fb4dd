#include "card/passwordscreen.h"

#include "shell/entryboxes.h"
#include "shell/messages.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

namespace {
const QString SupervisorPassword = u"KRWD3917"_s;
}

MESC::MESC(QWidget* parent)
    : QDialog(parent) {
    setObjectName(u"MESC"_s);
    setWindowTitle(u"Security"_s);

    m_text1 = new QLineEdit;
    m_text1->setObjectName(u"Text1"_s);
    m_text1->setEchoMode(QLineEdit::Password);
    auto* confirm = new QPushButton(u"&OK"_s);
    confirm->setObjectName(u"Command1"_s);
    auto* leave = new QPushButton(u"&Exit"_s);
    leave->setObjectName(u"Command2"_s);
    // Enter anywhere confirms; the box leaves the key to the dialog, so it confirms once.
    confirm->setDefault(true);
    showButtonFocus(this);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(confirm);
    buttons->addWidget(leave);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(u"Password"_s));
    layout->addWidget(m_text1);
    layout->addLayout(buttons);

    connect(confirm, &QPushButton::clicked, this, [this] { guarded(this, [&] { command1(); }); });
    connect(leave, &QPushButton::clicked, this, &MESC::reject);
    m_text1->setFocus();
}

void MESC::command1() {
    if (m_text1->text() != SupervisorPassword) {
        showError(this, u"Invalid Password !!!"_s);
        m_text1->setFocus();
        m_text1->selectAll();
        return;
    }
    accept();
}

} // namespace pondar::card
