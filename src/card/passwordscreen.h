#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace pondar {

namespace card {

// MESC: asks for the supervisor password; exec() returns Accepted only when it was given. No
// count of tries and no lock-out.
class MESC final : public QDialog {
    Q_OBJECT

public:
    explicit MESC(QWidget* parent = nullptr);

private:
    void command1();

    QLineEdit* m_text1 = nullptr;
};

} // namespace card
} // namespace pondar
