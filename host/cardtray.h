#pragma once

#include "card/simfolder.h"

#include <QGroupBox>
#include <QStringList>

#include <functional>

class QLabel;
class QListWidget;
class QPushButton;
class QTimer;

// The cards lying beside the simulated reader: put one on the reader, take it off, or make a new
// blank card. It looks at the folder every second, since the component writes to the card on
// the reader and a second tray window may move cards too.
class CardTray final : public QGroupBox {
    Q_OBJECT

public:
    explicit CardTray(const QString& simDir, QWidget* parent = nullptr);

    void refresh();

private:
    void run(const std::function<void()>& action);

    pondar::card::SimFolder m_folder;
    QLabel* m_reader = nullptr;
    QListWidget* m_cards = nullptr;
    QPushButton* m_put = nullptr;
    QPushButton* m_takeOff = nullptr;
    QTimer* m_timer = nullptr;
    QStringList m_shown;
};
