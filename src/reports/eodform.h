#pragma once

#include <QDialog>
#include <QString>

#include <array>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace pondar {

struct SessionSettings;

namespace reports {

// MEOD: the four end-of-day reports over a date range, previewed and printed to the slip
// printer. Choosing a report runs it at once and writes an activity-log line.
class EodForm final : public QDialog {
    Q_OBJECT
public:
    explicit EodForm(SessionSettings& session, QWidget* parent = nullptr);
    const QString& reportText() const { return m_text; }

private:
    void runReport(int index);
    void search();
    void print();

    SessionSettings& m_session;
    QString m_text;
    std::array<QRadioButton*, 4> RBUT{};
    QLabel* Label3;
    QLineEdit* TD;
    QLineEdit* TD2;
    QPushButton* CBUT0;
    QPushButton* CBUT2;
    QPushButton* CBUT5;
    QPushButton* m_export = nullptr;
    QString m_reportName; // of the report on show, for its file
    QPlainTextEdit* RTF;
};

} // namespace reports
} // namespace pondar
