#include "shell/screens.h"

#include "members/mfcomm.h"
#include "members/mfcust.h"
#include "members/seaform.h"

namespace pondar {

namespace {

// Each showing gets a fresh screen, so nothing from the last one carries over.
template <typename Screen> bool run(SessionSettings& session, QWidget* parent) {
    Screen screen(session, parent);
    screen.exec();
    return true;
}

} // namespace

bool showMemberScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    switch (screen) {
    case Screen::Member:
        return run<MFCUST>(session, parent);
    case Screen::StaffEntry:
        return run<MFCOMM>(session, parent);
    case Screen::Lookup:
        return run<SEAFORM>(session, parent);
    default:
        return false;
    }
}

} // namespace pondar
