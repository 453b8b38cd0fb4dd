#pragma once

#include "members/entryboxes.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace pondar {

struct SessionSettings;

// Staff entry: names the staff member who earns the commission. "&Ok" hands the code back in
// session.CommStaffCode (trimmed, upper case) with session.DialogAccepted set; any other way out
// clears the code and the flag.
class MFCOMM final : public QDialog {
    Q_OBJECT

public:
    explicit MFCOMM(SessionSettings& session, QWidget* parent = nullptr);

    void done(int result) override;

private:
    void lookup();
    EntryBoxes::Outcome check();
    void ok();

    SessionSettings& m_session;
    QLabel* Label1;
    QLineEdit* TXT;
    QLabel* SNAME;
    QPushButton* CSAVE;
    QPushButton* CEXIT;
    EntryBoxes* m_boxes;
};

} // namespace pondar
