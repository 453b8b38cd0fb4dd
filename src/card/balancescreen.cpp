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

#include <algorithm>

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
    const QStringList labels = {u"Card No"_s, u"Name"_s, u"Balance"_s, u"Pending:"_s};
    for (int i = 0; i < 4; ++i) {
        auto* label = new QLabel(labels[i]);
        auto* box = new QLineEdit;
        box->setObjectName(u"TXT(%1)"_s.arg(i));
        box->setReadOnly(true);
        box->setFocusPolicy(Qt::NoFocus); // keys go to the display, where F12 is heard
        if (i >= 2)
            box->setAlignment(Qt::AlignRight);
        grid->addWidget(label, i, 0);
        grid->addWidget(box, i, 1);
        m_txt[std::size_t(i)] = box;
    }
    m_done = new QLabel(m_frame);
    m_done->setObjectName(u"LastTransaction"_s);
    m_done->setAlignment(Qt::AlignCenter);
    m_done->hide();
    grid->addWidget(m_done, 4, 0, 1, 2);
    m_doneTimer = new QTimer(this);
    m_doneTimer->setSingleShot(true);
    m_doneTimer->setInterval(5000);
    connect(m_doneTimer, &QTimer::timeout, m_done, &QWidget::hide);
    setFocusPolicy(Qt::StrongFocus);
    setToolTip(u"F11: full screen"_s);
    resize(720, 360);
    scaleFigures();

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
        // The same card with a new latest line: a Save just went through at the till.
        if (!texts.cardNo.isEmpty() && texts.cardNo == m_seenCard && texts.lastRef != m_seenRef &&
            !texts.lastRef.isEmpty()) {
            m_done->setText(texts.lastLine + u"   New Balance : "_s + texts.balance);
            m_done->show();
            m_doneTimer->start();
        }
        m_seenCard = texts.cardNo;
        m_seenRef = texts.lastRef;
    });
    m_timer->start();
}

void MFBAL::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F11) {
        setWindowState(windowState() ^ Qt::WindowFullScreen);
        return;
    }
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
    scaleFigures();
}

// The figures grow with the window: a display turned to the customer, or put full screen on a
// second monitor, must read from across the counter.
void MFBAL::scaleFigures() {
    const int pixels = std::clamp(std::min(height() / 9, width() / 24), 16, 240);
    if (m_frame->font().pixelSize() != pixels) {
        QFont figures = font();
        figures.setPixelSize(pixels);
        m_frame->setFont(figures);
        for (QLineEdit* box : m_txt)
            box->setMinimumWidth(pixels * 12);
        m_frame->layout()->invalidate();
        m_frame->setFixedSize(m_frame->sizeHint());
    }
    centreFrame();
}

void MFBAL::centreFrame() {
    m_frame->move((width() - m_frame->width()) / 2, (height() - m_frame->height()) / 2);
}

} // namespace pondar::card
