#include "support/dialogs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <utility>

namespace pondar::test {

OnModal::OnModal(QString objectName, std::function<void(QWidget*)> step, int timeoutMs)
    : m_name(std::move(objectName))
    , m_step(std::move(step))
    , m_left(timeoutMs / 10) {
    m_timer.setInterval(10);
    QObject::connect(&m_timer, &QTimer::timeout, this, [this] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal && modal->objectName() == m_name && modal->isVisible()) {
            m_timer.stop();
            m_ran = true;
            m_step(modal);
            return;
        }
        if (--m_left <= 0) {
            m_timer.stop();
            qWarning("modal %s never appeared", qPrintable(m_name));
        }
    });
    m_timer.start();
}

MessageBoxes::MessageBoxes() {
    m_timer.setInterval(5);
    QObject::connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
    m_timer.start();
}

void MessageBoxes::poll() {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible() || box->property("pondarAnswered").toBool())
        return;
    box->setProperty("pondarAnswered", true);
    QMessageBox::StandardButton answer = QMessageBox::Ok;
    if (box->standardButtons().testFlag(QMessageBox::Yes))
        answer = m_answers.isEmpty() ? QMessageBox::No : m_answers.takeFirst();
    const QMessageBox::StandardButton preferred =
        box->defaultButton() ? box->standardButton(box->defaultButton()) : QMessageBox::NoButton;
    m_seen.append({box->windowTitle(), box->text(), box->icon(), answer, preferred});
    if (QAbstractButton* button = box->button(answer))
        button->click();
    else
        box->done(answer);
}

QStringList MessageBoxes::texts() const {
    QStringList out;
    for (const Seen& s : m_seen)
        out.append(s.text);
    return out;
}

void focusOn(QWidget* w) {
    w->setFocus(Qt::OtherFocusReason);
    QApplication::processEvents();
}

} // namespace pondar::test
