#include "transactions/handoff.h"

#include "shell/inifile.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar {

QString MakeRefNo(const QDateTime& moment, const QString& cardNo, const QString& introducer) {
    return moment.toString(u"ddMMyyyyHHmmss"_s) + u'-' + cardNo.trimmed() + u'-' +
           introducer.trimmed();
}

bool WriteHandOff(const QString& iniPath, const HandOff& h) {
    const IniFile ini(iniPath);
    const QString section = u"TRANSACTION"_s;
    bool ok = true;
    auto put = [&](const QString& key, const QString& value) {
        ok = ini.write(section, key, value) && ok;
    };
    put(u"CardNo"_s, h.cardNo);
    put(u"CardName"_s, h.cardName);
    put(u"OldValue"_s, h.oldValue.toShortString());
    put(u"PenValue"_s, h.pendingValue.toShortString());
    put(u"WriteValue"_s, h.writeValue.toShortString());
    put(u"NewValue"_s, h.newValue.toShortString());
    put(u"ReturnFlag"_s, QString::number(h.returnFlag));
    put(u"ReturnRefTrsNo"_s, h.refNo);
    return ok;
}

} // namespace pondar
