#pragma once

#include <QDialog>
#include <QString>

class QPlainTextEdit;
class QPushButton;

namespace pondar {

struct SessionSettings;

namespace reports {

// PFORM: the slip of session.SlipRefNo ("ENQUIRY" for a balance enquiry) in preview. With
// session.SlipAction "PRINT" it prints at once and closes without being seen. Closing always
// clears SlipAction, so the next slip previews unless its caller asks again.
class SlipForm final : public QDialog {
    Q_OBJECT
public:
    SlipForm(SessionSettings& session, QWidget* parent = nullptr);
    // Builds the slip, then prints at once or shows the preview until closed.
    void run();
    const QString& slipText() const { return m_text; }

    void done(int result) override;

private:
    void build();
    bool print();

    SessionSettings& m_session;
    QString m_text;
    QPlainTextEdit* RTF;
    QPushButton* Command1;
    QPushButton* Command2;
};

} // namespace reports
} // namespace pondar
