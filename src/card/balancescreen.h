#pragma once

#include <QDialog>
#include <QString>

#include <array>

class QFrame;
class QLabel;
class QLineEdit;
class QTimer;

namespace pondar {

struct SessionSettings;

namespace card {

// MFBAL: the customer's balance display. Reads the card on the reader every second and shows
// its number, name, balance and pending top-ups; only F12 and the supervisor password close it.
class MFBAL final : public QDialog {
    Q_OBJECT

public:
    explicit MFBAL(SessionSettings& session, QWidget* parent = nullptr);

    // One tick of Timer1.
    void refresh();

public Q_SLOTS:
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void centreFrame();
    void scaleFigures();

    SessionSettings& m_session;
    QFrame* m_frame = nullptr;
    std::array<QLineEdit*, 4> m_txt{};
    QTimer* m_timer = nullptr;
    QString m_lastError; // shown once while it lasts
    // After a Save on the card in view, what it did and the new balance, for a few seconds.
    QLabel* m_done = nullptr;
    QTimer* m_doneTimer = nullptr;
    QString m_seenCard;
    QString m_seenRef;
};

} // namespace card
} // namespace pondar
