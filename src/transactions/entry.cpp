#include "shell/screens.h"
#include "transactions/mfmain.h"

namespace pondar {

bool runTransaction(SessionSettings& session, TransactionMode mode, const QString& staffCode,
                    QWidget* parent) {
    MFMAIN form(session, mode, staffCode, parent);
    form.exec();
    return form.transactionOk();
}

} // namespace pondar
