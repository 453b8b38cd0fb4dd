#include "reports/widgets.h"

#include "reports/export.h"
#include "shell/text.h"

#include <QDir>
#include <QFileDialog>
#include <QStandardPaths>

#include <QFontDatabase>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

QPlainTextEdit* previewBox(QWidget* parent) {
    auto* box = new QPlainTextEdit(parent);
    box->setObjectName(u"RTF"_s);
    box->setReadOnly(true);
    box->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setFamilies({u"Courier New"_s, font.family()});
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    box->setFont(font);
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QString(44, u'0')));
    return box;
}

void showPreview(QPlainTextEdit* box, const QString& text) {
    QString shown = text;
    shown.replace(u"\r\n"_s, u"\n"_s);
    box->setPlainText(shown);
}

QLineEdit* dateBox(const QString& name, const QString& day, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setInputMask(u"99/99/9999"_s);
    const QDate date = parseDate(day);
    if (date.isValid())
        box->setText(date.toString(u"dd/MM/yyyy"_s));
    return box;
}

QDate typedDate(const QLineEdit* box) {
    return box->hasAcceptableInput() ? parseDate(box->text()) : QDate();
}

QPushButton* button(const QString& name, const QString& caption, QWidget* parent) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    // Enter in a box must not press a button the user did not choose.
    b->setAutoDefault(false);
    return b;
}

QPushButton* exportButton(QWidget* parent) {
    QPushButton* b = button(u"Export"_s, u"E&xport"_s, parent);
    b->setToolTip(u"Save to a file"_s);
    return b;
}

void exportToFile(QWidget* parent, const QString& fileName, const QString& filter,
                  const QByteArray& bytes) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString path =
        QFileDialog::getSaveFileName(parent, u"Export"_s, QDir(folder).filePath(fileName), filter);
    if (!path.isEmpty())
        writeExport(path, bytes);
}

} // namespace pondar::reports
