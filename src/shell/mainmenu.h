#pragma once

#include <QDialog>

#include <array>

class QPushButton;

namespace pondar {

struct SessionSettings;

// "Mifare Main Menu": a column of buttons reaching every function; each screen opens modal and
// the menu stays until "Close". Transactions started here never report to the host.
class MAINMENU final : public QDialog {
    Q_OBJECT

public:
    explicit MAINMENU(SessionSettings& session, QWidget* parent = nullptr);

    std::array<QPushButton*, 10> CBUT{};

private:
    void clicked(int index);

    SessionSettings& m_session;
};

} // namespace pondar
