#pragma once

#include "demodata.h"

#include <pondar/genclass.h>

#include <QLineEdit>
#include <QWidget>

class QLabel;
class QProcess;
class QPlainTextEdit;

// Plays the point-of-sale program: holds the connection, the particulars of StartApp, a button
// for each start mode, and shows what each call returned and left in the settings file.
class HostWindow final : public QWidget {
    Q_OBJECT

public:
    // simDir is the simulated reader's folder, empty when a real reader is in use.
    HostWindow(DemoData data, QSqlDatabase db, const QString& simDir, QWidget* parent = nullptr);
    ~HostWindow() override;

private:
    QLineEdit* field(const QString& name, const QString& value);
    void start(const QString& mode);
    void enquiry();
    void showOutcome(const QString& call, bool result);
    void openTrayWindow();

    DemoData m_data;
    QSqlDatabase m_db;
    QString m_simDir;
    pondar::GenClass m_app;
    QLineEdit* m_staff = nullptr;
    QLineEdit* m_bzDate = nullptr;
    QLineEdit* m_printer = nullptr;
    QLineEdit* m_outlet = nullptr;
    QLineEdit* m_trsNo = nullptr;
    QLineEdit* m_billNo = nullptr;
    QLineEdit* m_amount = nullptr;
    QLabel* m_result = nullptr;
    QPlainTextEdit* m_transaction = nullptr;
    QProcess* m_trayWindow = nullptr; // ends with the host
};
