#pragma once

#include <QDate>
#include <QString>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QWidget;

namespace pondar::reports {

// Widths of the old forms were in twips; 15 to a pixel at 96 dpi.
constexpr int twips(int value) {
    return value / 15;
}

// The read-only, fixed-pitch preview of a slip or report, named "RTF".
QPlainTextEdit* previewBox(QWidget* parent);
// Shows a CR LF text; the text printed is kept by the screen, not read back from the box.
void showPreview(QPlainTextEdit* box, const QString& text);
// A date box with the mask "99/99/9999", holding `day` ("dd/mm/yyyy") when it is a date.
QLineEdit* dateBox(const QString& name, const QString& day, QWidget* parent);
// The date in a date box; invalid unless every place of the mask is filled and the day exists,
// so "1/2/2024" typed into "__/__/____" is not taken for a date.
QDate typedDate(const QLineEdit* box);
QPushButton* button(const QString& name, const QString& caption, QWidget* parent);
// The button that saves what a screen shows to a file.
QPushButton* exportButton(QWidget* parent);
// Asks where to save an export, suggesting `fileName` in the user's documents; writes the bytes
// there. Nothing happens when the operator cancels. Throws pondar::Error when the file cannot
// be written.
void exportToFile(QWidget* parent, const QString& fileName, const QString& filter,
                  const QByteArray& bytes);

} // namespace pondar::reports
