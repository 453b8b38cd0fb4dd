#include "members/mfcomm.h"

#include "members/memberdata.h"
#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

MFCOMM::MFCOMM(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , Label1(new QLabel(u"Staff Code :"_s, this))
    , TXT(new QLineEdit(this))
    , SNAME(new QLabel(this))
    , CSAVE(new QPushButton(u"&Ok"_s, this))
    , CEXIT(new QPushButton(u"&Close"_s, this))
    , m_boxes(new EntryBoxes(this)) {
    setObjectName(u"MFCOMM"_s);
    setWindowTitle(u"Staff Details"_s);
    QFont tahoma = font();
    tahoma.setFamily(u"Tahoma"_s);
    setFont(tahoma);

    Label1->setObjectName(u"Label1"_s);
    TXT->setObjectName(u"TXT"_s);
    Label1->setBuddy(TXT);
    SNAME->setObjectName(u"SNAME"_s);
    QFont bold = SNAME->font();
    bold.setBold(true);
    SNAME->setFont(bold);
    SNAME->setMinimumWidth(220);
    CSAVE->setObjectName(u"CSAVE"_s);
    CEXIT->setObjectName(u"CEXIT"_s);
    // Enter in the box moves on to Ok (EntryBoxes); a second Enter presses it.
    CSAVE->setDefault(true);
    showButtonFocus(this);

    auto* grid = new QGridLayout(this);
    grid->addWidget(Label1, 0, 0);
    grid->addWidget(TXT, 0, 1);
    grid->addWidget(SNAME, 1, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(CSAVE);
    buttons->addWidget(CEXIT);
    grid->addLayout(buttons, 2, 0, 1, 2);
    setTabOrder(TXT, CSAVE);
    setTabOrder(CSAVE, CEXIT);

    m_boxes->add(TXT);
    m_boxes->exempt(CEXIT);
    m_boxes->setCheck(TXT, [this] { return check(); });
    m_boxes->setOnDown(TXT, [this] { guarded(this, [&] { lookup(); }); });

    connect(CSAVE, &QPushButton::clicked, this, [this] { guarded(this, [&] { ok(); }); });
    connect(CEXIT, &QPushButton::clicked, this, [this] { guarded(this, [&] { reject(); }); });
    TXT->setFocus();
}

void MFCOMM::lookup() {
    const std::optional<QString> picked = pickFromLookup(m_session, members::staffLookup(), this);
    if (!picked) {
        focusAgain(TXT);
        return;
    }
    TXT->setText(*picked);
    m_boxes->tabOn(TXT);
}

EntryBoxes::Outcome MFCOMM::check() {
    using Outcome = EntryBoxes::Outcome;
    m_staff = {};
    const QString code = TXT->text();
    if (code.isEmpty())
        return Outcome::Pass;
    // A bad character sends the operator back to the box, but the leave itself stands.
    if (!checkInput(this, code))
        return Outcome::Refocus;
    const members::StaffMatch staff = members::findActiveStaff(m_session.Conn, code);
    if (!staff.found) {
        showError(this, u"Invalid Staff Code !!!"_s);
        return Outcome::Refuse;
    }
    if (!staff.name.isNull())
        SNAME->setText(staff.name.toString());
    return Outcome::Pass;
}

void MFCOMM::ok() {
    m_staff = {TXT->text().trimmed().toUpper(), SNAME->text()};
    accept();
}

} // namespace pondar
