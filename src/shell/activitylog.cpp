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
    writeLog(session.Conn, session.StaffCode, session.BzDate, session.now(), description);
}

void writeLog(const QSqlDatabase& db, const QString& staffCode, const QString& bzDate,
              const QDateTime& moment, const QString& description) {
    db::exec(db,
             u"INSERT INTO Customize_Log (StaffCode,BizDate,ActualDate,Description) "
             "VALUES (?,?,?,?)"_s,
             {staffCode, bizDateValue(bzDate), moment, logDescription(description)});
}

bool isValidInput(const QString& text) {
    for (const QChar c : text) {
        if (c == u'\'' || c == u' ' || c == u'"')
            return false;
    }
    return true;
}

} // namespace pondar
