#pragma once

#include <QDialog>
#include <QVariantList>

class QPushButton;
class QSqlQueryModel;
class QTableView;

namespace pondar {

struct SessionSettings;

// The pick list: shows the rows of session.LookupQuery (code, name) and hands the code of the
// row picked back in session.CurrentCode with session.DialogAccepted set.
class SEAFORM final : public QDialog {
    Q_OBJECT

public:
    explicit SEAFORM(SessionSettings& session, QWidget* parent = nullptr);

    // Loads a two-column statement into the grid; the grid is usable only when rows came back.
    void fill(const QString& sql, const QVariantList& values = {});

    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void pick();

    SessionSettings& m_session;
    QTableView* DataGrid1;
    QPushButton* Command1;
    QSqlQueryModel* m_model;
};

} // namespace pondar
