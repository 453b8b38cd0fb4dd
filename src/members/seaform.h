#pragma once

#include <QDialog>

#include "shell/database.h"

class QPushButton;
class QSqlQueryModel;
class QTableView;

namespace pondar {

struct SessionSettings;

// The pick list: shows the rows of a two-column statement (code, name); exec() returns Accepted
// once a row is picked, and picked() is then its code. Each showing starts with nothing picked.
class SEAFORM final : public QDialog {
    Q_OBJECT

public:
    SEAFORM(SessionSettings& session, const db::Statement& lookup, QWidget* parent = nullptr);

    // Loads a two-column statement into the grid; the grid is usable only when rows came back.
    void fill(const db::Statement& lookup);

    const QString& picked() const { return m_picked; }

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void pick();

    SessionSettings& m_session;
    QString m_picked;
    QTableView* DataGrid1;
    QPushButton* Command1;
    QSqlQueryModel* m_model;
};

} // namespace pondar
