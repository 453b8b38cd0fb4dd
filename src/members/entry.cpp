#include "shell/screens.h"

#include "members/mfcomm.h"
#include "members/mfcust.h"
#include "members/seaform.h"

namespace pondar {

void showMemberRegister(SessionSettings& session, QWidget* parent) {
    MFCUST screen(session, parent);
    screen.exec();
}

std::optional<StaffMember> askStaffMember(SessionSettings& session, QWidget* parent) {
    MFCOMM screen(session, parent);
    if (screen.exec() != QDialog::Accepted)
        return std::nullopt;
    return screen.staff();
}

std::optional<QString> pickFromLookup(SessionSettings& session, const db::Statement& lookup,
                                      QWidget* parent) {
    SEAFORM screen(session, lookup, parent);
    if (screen.exec() != QDialog::Accepted)
        return std::nullopt;
    return screen.picked();
}

} // namespace pondar
