#include "transactions/handoff.h"

#include "shell/inifile.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar {

QString MakeRefNo(const QDateTime& moment, const QString& cardNo, const QString& introducer) {
    return moment.toString(u"ddMMyyyyHHmmss"_s) + u'-' + cardNo.trimmed() + u'-' +
           introducer.trimmed();
}

bool WriteHandOff(const QString& iniPath, const HandOff& h) {
    // One replacement of the file: the host never reads a ReturnFlag beside the last
    // transaction's amounts, and a Save pays for one file write instead of eight.
    return IniFile(iniPath).write(u"TRANSACTION"_s,
                                  {{u"CardNo"_s, h.cardNo},
                                   {u"CardName"_s, h.cardName},
                                   {u"OldValue"_s, h.oldValue.toShortString()},
                                   {u"PenValue"_s, h.pendingValue.toShortString()},
                                   {u"WriteValue"_s, h.writeValue.toShortString()},
                                   {u"NewValue"_s, h.newValue.toShortString()},
                                   {u"ReturnFlag"_s, QString::number(h.returnFlag)},
                                   {u"ReturnRefTrsNo"_s, h.refNo},
                                   {u"Posted"_s, h.posted ? u"1"_s : u"0"_s}});
}

} // namespace pondar
