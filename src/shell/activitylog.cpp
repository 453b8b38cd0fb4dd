#include "shell/activitylog.h"

#include "shell/database.h"
#include "shell/session.h"
#include "shell/text.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar {

QString logDescription(const QString& description) {
    constexpr int Limit = 300;
    QString out;
    int used = 0;
    for (const QChar c : description) {
        if (used >= Limit)
            break;
        // A quote takes two places once doubled; the cut may split the pair, which keeps the quote.
        used += c == u'\'' ? 2 : 1;
        out.append(c);
    }
    return out;
}

void writeLog(const SessionSettings& session, const QString& description) {
    db::exec(session.Conn,
             u"INSERT INTO Customize_Log (StaffCode,BizDate,ActualDate,Description) "
             "VALUES (?,?,?,?)"_s,
             {session.StaffCode, bizDateValue(session.BzDate), session.now(),
              logDescription(description)});
}

bool isValidInput(const QString& text) {
    for (const QChar c : text) {
        if (c == u'\'' || c == u' ' || c == u'"')
            return false;
    }
    return true;
}

} // namespace pondar
