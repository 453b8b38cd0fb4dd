#include "shell/screens.h"
#include "transactions/mfmain.h"
#include "transactions/msup.h"

namespace pondar {

bool runTransaction(SessionSettings& session, TransactionMode mode, const QString& staffCode,
                    QWidget* parent) {
    MFMAIN form(session, mode, staffCode, parent);
    form.exec();
    return form.transactionOk();
}

void showSupervisor(SessionSettings& session, QWidget* parent) {
    MSUP screen(session, parent);
    screen.exec();
}

} // namespace pondar
