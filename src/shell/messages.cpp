#include "shell/messages.h"

#include "shell/activitylog.h"

#include <QWidget>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

QMessageBox::StandardButton show(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                                 const QString& text, QMessageBox::StandardButtons buttons,
                                 QMessageBox::StandardButton preferred = QMessageBox::NoButton,
                                 const QString& detail = {}) {
    QMessageBox box(icon, title, text, buttons, parent);
    box.setObjectName(u"PondarMessage"_s);
    if (preferred != QMessageBox::NoButton)
        box.setDefaultButton(preferred);
    if (!detail.isEmpty())
        box.setDetailedText(detail);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace

void showError(QWidget* parent, const QString& text, const QString& title) {
    show(parent, QMessageBox::Critical, title, text, QMessageBox::Ok);
}

void showNotice(QWidget* parent, const QString& text, const QString& title) {
    show(parent, QMessageBox::Warning, title, text, QMessageBox::Ok);
}

bool askYesNo(QWidget* parent, const QString& question, Preferred preferred,
              const QString& detail) {
    return show(parent, QMessageBox::Question, u"Question"_s, question,
                QMessageBox::Yes | QMessageBox::No,
                preferred == Preferred::No ? QMessageBox::No : QMessageBox::Yes,
                detail) != QMessageBox::No;
}

bool checkInput(QWidget* parent, const QString& text) {
    if (isValidInput(text))
        return true;
    showError(parent, u"Invalid Input Character !!!"_s);
    return false;
}

} // namespace pondar
