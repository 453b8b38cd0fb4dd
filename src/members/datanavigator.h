#pragma once

#include <QFrame>
#include <QString>

class QLabel;
class QToolButton;

namespace pondar {

// The register's record navigator: first, previous, next and last buttons around a caption that
// carries the record count. Disabling it disables the moves.
class DataNavigator final : public QFrame {
    Q_OBJECT

public:
    explicit DataNavigator(QWidget* parent = nullptr);

    void setCaption(const QString& caption);
    QString caption() const;

Q_SIGNALS:
    void firstRequested();
    void previousRequested();
    void nextRequested();
    void lastRequested();

private:
    QLabel* m_caption;
};

} // namespace pondar
