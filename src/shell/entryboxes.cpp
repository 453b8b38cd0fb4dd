#include "shell/entryboxes.h"

#include "shell/messages.h"

#include <QAbstractButton>
#include <QApplication>
#include <QColor>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPalette>
#include <QPointer>
#include <QTimer>

namespace pondar {

namespace {

void paint(QLineEdit* box, const QColor& colour) {
    QPalette palette = box->palette();
    palette.setColor(QPalette::Base, colour);
    box->setPalette(palette);
}

// A click whose focus change was refused must not act: the button is disabled until the event
// in flight (the press, or the shortcut's click) has been delivered.
void dropPendingClick(QWidget* target, Qt::FocusReason reason) {
    auto* button = qobject_cast<QAbstractButton*>(target);
    if (!button || !button->isEnabled() ||
        (reason != Qt::MouseFocusReason && reason != Qt::ShortcutFocusReason))
        return;
    button->setEnabled(false);
    QTimer::singleShot(0, button, [button] { button->setEnabled(true); });
}

} // namespace

EntryBoxes::EntryBoxes(QWidget* screen)
    : QObject(screen)
    , m_screen(screen) {}

QColor EntryBoxes::focusColour() {
    return QColor(0xFF, 0xFF, 0xC0);
}

void EntryBoxes::add(QLineEdit* box) {
    m_boxes.insert(box);
    box->installEventFilter(this);
    paint(box, Qt::white);
}

void EntryBoxes::setCheck(QLineEdit* box, Check check) {
    m_checks.insert(box, std::move(check));
}

void EntryBoxes::setOnDown(QLineEdit* box, std::function<void()> action) {
    m_down.insert(box, std::move(action));
}

void EntryBoxes::exempt(QWidget* control) {
    m_exempt.insert(control);
}

void EntryBoxes::pressOnEnter(QLineEdit* box, QAbstractButton* button) {
    m_enterPresses.insert(box, button);
}

bool EntryBoxes::eventFilter(QObject* watched, QEvent* event) {
    auto* box = qobject_cast<QLineEdit*>(watched);
    if (!box || !m_boxes.contains(box))
        return false;
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier))
            return false;
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (QAbstractButton* button = m_enterPresses.value(box);
                button && button->isEnabled() && button->isVisible()) {
                pressFromKeyboard(button);
                return true;
            }
            sendTab(box, true);
            return true;
        case Qt::Key_Up:
            sendTab(box, false);
            return true;
        case Qt::Key_Down:
            if (auto it = m_down.find(box); it != m_down.end()) {
                const auto action = it.value();
                action();
                return true;
            }
            return false;
        default:
            return false;
        }
    }
    case QEvent::FocusIn: {
        paint(box, focusColour());
        box->selectAll();
        // A click places the cursor after focus arrives; select once it has.
        if (static_cast<QFocusEvent*>(event)->reason() == Qt::MouseFocusReason)
            QTimer::singleShot(0, box, [box] { box->selectAll(); });
        return false;
    }
    case QEvent::FocusOut:
        paint(box, Qt::white);
        leaving(box, *static_cast<QFocusEvent*>(event));
        return false;
    default:
        return false;
    }
}

void EntryBoxes::leaving(QLineEdit* box, const QFocusEvent& event) {
    const Qt::FocusReason reason = event.reason();
    // Another window (a message box, a lookup) taking focus is not leaving the box.
    if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
        reason == Qt::MenuBarFocusReason)
        return;
    const auto it = m_checks.find(box);
    if (it == m_checks.end() || m_checking || !box->isEnabled() || !box->isVisible())
        return;
    QWidget* next = QApplication::focusWidget();
    if (!next || next->window() != box->window() || m_exempt.contains(next))
        return;

    const QPointer<QWidget> target = next;
    if (runCheck(box, it.value()) == Outcome::Refuse && target)
        dropPendingClick(target, reason);
}

EntryBoxes::Outcome EntryBoxes::runCheck(QLineEdit* box, const Check& check) {
    // While a check runs and puts focus back, the control that focus passed through must not
    // run a check of its own.
    m_checking = true;
    Outcome outcome = Outcome::Refocus; // a failing statement keeps the operator in the box
    guarded(m_screen, [&] { outcome = check(); });
    if (outcome != Outcome::Pass)
        focusAgain(box);
    m_checking = false;
    return outcome;
}

void EntryBoxes::tabOn(QLineEdit* box) {
    const auto it = m_checks.find(box);
    if (box->window()->isActiveWindow() || it == m_checks.end()) {
        focusAgain(box);
        sendTab(box);
        return;
    }
    box->setFocus(Qt::OtherFocusReason);
    if (runCheck(box, it.value()) != Outcome::Pass)
        return;
    m_checking = true; // the check has run; the move itself must not run it again
    sendTab(box);
    m_checking = false;
    if (QWidget* next = box->window()->focusWidget())
        focusAgain(next);
}

void focusAgain(QWidget* control) {
    QWidget* screen = control->window();
    if (screen->isVisible() && !screen->isActiveWindow())
        screen->activateWindow();
    control->setFocus(Qt::OtherFocusReason);
}

void pressFromKeyboard(QAbstractButton* button) {
    if (!button->isEnabled() || !button->isVisible())
        return;
    button->setFocus(Qt::ShortcutFocusReason);
    // A refused leave has disabled the button for the keystroke in flight, or kept focus away.
    if (button->isEnabled() && QApplication::focusWidget() == button)
        button->click();
}

void showButtonFocus(QWidget* screen) {
    screen->setStyleSheet(screen->styleSheet() +
                          QStringLiteral("QPushButton:focus { border: 2px solid palette(highlight);"
                                         " border-radius: 3px; padding: 3px 10px; }"));
}

void sendTab(QWidget* from, bool forward) {
    QKeyEvent tab(QEvent::KeyPress, forward ? Qt::Key_Tab : Qt::Key_Backtab,
                  forward ? Qt::NoModifier : Qt::ShiftModifier);
    QCoreApplication::sendEvent(from, &tab);
}

} // namespace pondar
