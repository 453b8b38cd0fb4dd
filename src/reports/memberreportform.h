#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTableView;

namespace pondar {

class TextGridModel;

struct SessionSettings;

namespace reports {

// MRPT: one member's card lines over a date range, and the slip of a chosen line reopened in
// preview.
class MemberReportForm final : public QDialog {
    Q_OBJECT
public:
    explicit MemberReportForm(SessionSettings& session, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void lookup();
    void search();
    void reopenSlip();

    SessionSettings& m_session;
    QLabel* Label1;
    QLineEdit* TXT;
    QLabel* Label3;
    QLineEdit* TD1;
    QLineEdit* TD2;
    QPushButton* CBUT0;
    QPushButton* CBUT2;
    QPushButton* CBUT5;
    QPushButton* m_export = nullptr;
    QString m_shownCode; // whose lines the grid holds
    QTabWidget* STab;
    QTableView* MData;
    TextGridModel* m_model;
};

} // namespace reports
} // namespace pondar
