#pragma once

#include "shell/entryboxes.h"
#include "shell/screens.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace pondar {

struct SessionSettings;

// Staff entry: names the staff member who earns the commission. exec() returns Accepted only
// through "&Ok", and staff() is then the code (trimmed, upper case) and the name shown.
class MFCOMM final : public QDialog {
    Q_OBJECT

public:
    explicit MFCOMM(SessionSettings& session, QWidget* parent = nullptr);

    const StaffMember& staff() const { return m_staff; }

private:
    void lookup();
    EntryBoxes::Outcome check();
    void ok();

    SessionSettings& m_session;
    StaffMember m_staff;
    QLabel* Label1;
    QLineEdit* TXT;
    QLabel* SNAME;
    QPushButton* CSAVE;
    QPushButton* CEXIT;
    EntryBoxes* m_boxes;
};

} // namespace pondar
