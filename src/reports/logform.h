#pragma once

#include <QDate>
#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

namespace pondar {

class TextGridModel;

struct SessionSettings;

namespace reports {

// MFLOG: the activity log of one business date, read-only.
class LogForm final : public QDialog {
    Q_OBJECT
public:
    explicit LogForm(SessionSettings& session, QWidget* parent = nullptr);

private:
    void search();
    void load(QDate day);

    SessionSettings& m_session;
    QLabel* Label1;
    QLineEdit* TD;
    QPushButton* Command2;
    QPushButton* Command1;
    QPushButton* m_export = nullptr;
    QDate m_shownDay;
    QTableView* DataGrid1;
    TextGridModel* m_model;
};

} // namespace reports
} // namespace pondar
