#include "card/balancescreen.h"

#include "card/balance.h"
#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

MFBAL::MFBAL(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session) {
    setObjectName(u"MFBAL"_s);
    setWindowTitle(u"Card Balance"_s);

    m_frame = new QFrame(this);
    m_frame->setObjectName(u"FrmMain"_s);
    m_frame->setFrameShape(QFrame::StyledPanel);
    auto* grid = new QGridLayout(m_frame);
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    const QStringList labels = {u"Card No"_s, u"Name"_s, u"Balance"_s, u"Pending:"_s};
    for (int i = 0; i < 4; ++i) {
        auto* label = new QLabel(labels[i]);
        label->setFont(big);
        auto* box = new QLineEdit;
        box->setObjectName(u"TXT(%1)"_s.arg(i));
        box->setReadOnly(true);
        box->setFocusPolicy(Qt::NoFocus); // keys go to the display, where F12 is heard
        box->setFont(big);
        box->setMinimumWidth(320);
        if (i >= 2)
            box->setAlignment(Qt::AlignRight);
        grid->addWidget(label, i, 0);
        grid->addWidget(box, i, 1);
        m_txt[std::size_t(i)] = box;
    }
    m_frame->setFixedSize(m_frame->sizeHint());
    setFocusPolicy(Qt::StrongFocus);
    resize(m_frame->width() + 160, m_frame->height() + 120);

    m_timer = new QTimer(this);
    m_timer->setObjectName(u"Timer1"_s);
    m_timer->setInterval(1000);
    connect(m_timer, &QTimer::timeout, this, &MFBAL::refresh);
    m_timer->start();
}

void MFBAL::refresh() {
    // While a box is up, the next tick must not pile a second one on it.
    m_timer->stop();
    for (QLineEdit* box : m_txt)
        box->clear();
    guarded(this, [&] {
        BalanceTexts texts;
        try {
            texts = pollBalance(m_session);
            m_lastError.clear();
        } catch (const Error& e) {
            // The same failure once a second would bury the display, and F12, under boxes.
            if (e.message() == m_lastError)
                return;
            m_lastError = e.message();
            throw;
        }
        m_txt[0]->setText(texts.cardNo);
        m_txt[1]->setText(texts.name);
        m_txt[2]->setText(texts.balance);
        m_txt[3]->setText(texts.pending);
    });
    m_timer->start();
}

void MFBAL::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_F12) {
        // Escape and every other key are swallowed: the customer cannot close the display.
        event->accept();
        return;
    }
    guarded(this, [&] {
        if (askSupervisorPassword(m_session, this))
            accept();
    });
}

void MFBAL::reject() {}

void MFBAL::closeEvent(QCloseEvent* event) {
    event->ignore();
}

void MFBAL::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    centreFrame();
}

void MFBAL::centreFrame() {
    m_frame->move((width() - m_frame->width()) / 2, (height() - m_frame->height()) / 2);
}

} // namespace pondar::card
