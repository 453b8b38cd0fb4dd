#pragma once

#include <pondar/error.h>

#include <QMessageBox>
#include <QString>

#include <exception>

class QWidget;

namespace pondar {

// The component's message boxes: real QMessageBox instances, modal to the screen that asks.
void showError(QWidget* parent, const QString& text,
               const QString& title = QStringLiteral("Message"));
void showNotice(QWidget* parent, const QString& text,
                const QString& title = QStringLiteral("Message"));
// Which answer Enter gives to a question: a question whose Yes destroys something leaves Yes to
// a deliberate choice.
enum class Preferred { Yes, No };
// Yes/No question with the question icon, titled "Question"; true unless the answer was No.
// With `detail`, particulars as the box's detail text.
bool askYesNo(QWidget* parent, const QString& question, Preferred preferred = Preferred::Yes,
              const QString& detail = {});

// The input check with its message: false, after "Invalid Input Character !!!", for a code
// holding a quote, a blank or a double quote.
bool checkInput(QWidget* parent, const QString& text);

// Runs a handler's body; a failure is shown as a critical "Message" box with its text and the
// screen stays as it is. No exception leaves a slot.
template <typename F> void guarded(QWidget* parent, F&& body) noexcept {
    try {
        body();
    } catch (const Error& e) {
        showError(parent, e.message());
    } catch (const std::exception& e) {
        showError(parent, QString::fromUtf8(e.what()));
    } catch (...) {
        showError(parent, QStringLiteral("Unexpected error."));
    }
}

} // namespace pondar
