#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace pondar::test {

// Runs step once the modal widget named objectName is the active modal widget. Use it before
// the call that opens the screen (which blocks in exec()); the step drives the screen and
// usually closes it. A step that never runs within timeoutMs is reported with qWarning and
// dropped, and `ran()` stays false.
class OnModal final : public QObject {
public:
    OnModal(QString objectName, std::function<void(QWidget*)> step, int timeoutMs = 10000);
    bool ran() const { return m_ran; }

private:
    QString m_name;
    std::function<void(QWidget*)> m_step;
    QTimer m_timer;
    int m_left;
    bool m_ran = false;
};

// Answers every message box that opens while it lives and records what each one said.
// Questions take the queued answers in order; with none queued, a question is answered No and
// any other box OK.
class MessageBoxes final : public QObject {
public:
    struct Seen {
        QString title;
        QString text;
        QMessageBox::Icon icon;
        QMessageBox::StandardButton answer;
        QMessageBox::StandardButton preferred; // what Enter would have answered
    };

    MessageBoxes();
    void queue(QMessageBox::StandardButton answer) { m_answers.append(answer); }
    const QList<Seen>& seen() const { return m_seen; }
    QStringList texts() const;
    void clear() { m_seen.clear(); }

private:
    void poll();

    QTimer m_timer;
    QList<QMessageBox::StandardButton> m_answers;
    QList<Seen> m_seen;
};

// Finds a named child or fails the calling test function.
template <typename T> T* child(QWidget* root, const QString& name) {
    T* w = root ? root->findChild<T*>(name) : nullptr;
    if (!w)
        qWarning("no child %s", qPrintable(name));
    return w;
}

// Gives focus to a widget and lets the event loop deliver the focus events.
void focusOn(QWidget* w);

} // namespace pondar::test
