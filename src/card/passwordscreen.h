#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace pondar {

struct SessionSettings;

namespace card {

// MESC: asks for the supervisor password; the outcome is session.DialogAccepted. No count of
// tries and no lock-out.
class MESC final : public QDialog {
    Q_OBJECT

public:
    explicit MESC(SessionSettings& session, QWidget* parent = nullptr);

public Q_SLOTS:
    void reject() override;

private:
    void command1();

    SessionSettings& m_session;
    QLineEdit* m_text1 = nullptr;
};

} // namespace card
} // namespace pondar
