#pragma once

#include "reports/slip.h"

#include <QDialog>
#include <QString>

class QPlainTextEdit;
class QPushButton;

namespace pondar {

struct SessionSettings;

namespace reports {

// PFORM: a slip in preview, or, when the request says so, printed at once and closed without
// being seen.
class SlipForm final : public QDialog {
    Q_OBJECT
public:
    SlipForm(SessionSettings& session, SlipRequest request, QWidget* parent = nullptr);
    // Builds the slip, then prints at once or shows the preview until closed.
    void run();
    const QString& slipText() const { return m_text; }

private:
    void build();
    bool print();

    SessionSettings& m_session;
    SlipRequest m_request;
    QString m_text;
    QPlainTextEdit* RTF;
    QPushButton* Command1;
    QPushButton* Command2;
};

} // namespace reports
} // namespace pondar
