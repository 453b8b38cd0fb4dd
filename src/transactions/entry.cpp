#include "shell/screens.h"
#include "transactions/mfmain.h"

namespace pondar {

bool showTransactionScreen(Screen screen, SessionSettings& session, QWidget* parent) {
    if (screen != Screen::Transaction)
        return false;
    MFMAIN form(session, parent);
    form.exec();
    return true;
}

} // namespace pondar
