#pragma once

#include <QColor>
#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>

class QAbstractButton;
class QFocusEvent;
class QLineEdit;
class QWidget;

namespace pondar {

// The keyboard and look of an entry screen's text boxes: Enter moves to the next control and Up
// to the previous one, as Tab and Shift+Tab do; a focused box turns light yellow with its whole
// text selected. A box may carry a check that runs when focus leaves it for another control of
// the same screen, and an action for the Down arrow (the screens' lookups).
class EntryBoxes final : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        Pass,    // focus moves on
        Refocus, // focus comes back to the box; the control it went to still acts on the click
        Refuse,  // focus stays in the box; the click that tried to move it is dropped
    };
    using Check = std::function<Outcome()>;

    explicit EntryBoxes(QWidget* screen);

    void add(QLineEdit* box);
    void setCheck(QLineEdit* box, Check check);
    void setOnDown(QLineEdit* box, std::function<void()> action);
    // The Tab keystroke a screen sends itself after filling a box (a lookup's pick): the box's
    // check runs as if the operator had left it, also while the screen is not yet the active
    // window again and so gets no focus events.
    void tabOn(QLineEdit* box);
    // Controls that focus may move to without checking the box it leaves (the cancel buttons).
    void exempt(QWidget* control);
    // Enter in the last box of a group presses its button, once the box's check has let focus
    // go: the cashier types the amount and Enters through to the Save.
    void pressOnEnter(QLineEdit* box, QAbstractButton* button);

    static QColor focusColour();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void leaving(QLineEdit* box, const QFocusEvent& event);
    Outcome runCheck(QLineEdit* box, const Check& check);

    QWidget* m_screen;
    QSet<QLineEdit*> m_boxes;
    QHash<QLineEdit*, Check> m_checks;
    QHash<QLineEdit*, std::function<void()>> m_down;
    QSet<QWidget*> m_exempt;
    QHash<QLineEdit*, QAbstractButton*> m_enterPresses;
    bool m_checking = false;
};

// Puts focus in a control of a screen that a message box or a lookup has just covered. The
// screen asks to be the active window again rather than wait for the window system to hand
// activation back, which some platforms never do.
void focusAgain(QWidget* control);

// Presses a button from the keyboard as a mnemonic does: focus moves to it first, so the box
// being left is checked, and a refused leave drops the press.
void pressFromKeyboard(QAbstractButton* button);

// Gives the screen's push buttons a focus ring that reads at a glance, whatever the style.
void showButtonFocus(QWidget* screen);

// Sends the Tab keystroke of an entry screen: focus to the next control (or the previous one).
void sendTab(QWidget* from, bool forward = true);

} // namespace pondar
