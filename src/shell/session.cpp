#include "shell/session.h"

#include "shell/inifile.h"
#include "shell/text.h"

using namespace Qt::Literals::StringLiterals;

namespace pondar {

void loadSettings(SessionSettings& session) {
    const IniFile ini(session.IniPath);
    session.ReaderPort = 1;
    ini.write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s);
    session.MemberComm = leadingNumber(ini.read(u"GeneralSetup"_s, u"MemberComm"_s));
    session.DownComm = leadingNumber(ini.read(u"GeneralSetup"_s, u"DownComm"_s));
    session.ServerComm = Currency::parse(ini.read(u"GeneralSetup"_s, u"ServerComm"_s));
    // Only a site moving onto the component, whose old cards have no ledger lines, turns it off.
    session.LedgerCheck = ini.read(u"GeneralSetup"_s, u"LedgerCheck"_s).trimmed() != u"0"_s;
}

} // namespace pondar
