#include "shell/session.h"

#include "shell/inifile.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

// A rate that is negative or not a finite number would turn bonuses, credits and commissions
// into withdrawals or silent zeros; the till must not open on one.
[[noreturn]] void badRate(const IniFile& ini, const QString& key, const QString& text,
                          const QString& why) {
    throw Error(u"Settings file \""_s + ini.path() + u"\": [GeneralSetup] "_s + key + u" \""_s +
                text + u"\" "_s + why);
}

double rate(const IniFile& ini, const QString& key) {
    const QString text = ini.read(u"GeneralSetup"_s, key);
    const double value = leadingNumber(text);
    if (!std::isfinite(value) || value < 0.0)
        badRate(ini, key, text, u"is not a rate of 0 or more."_s);
    return value;
}

} // namespace

void loadSettings(SessionSettings& session) {
    const IniFile ini(session.IniPath);
    session.ReaderPort = 1;
    // Without a working hand-off the host would read the previous transaction's amounts.
    if (!ini.write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s))
        throw Error(u"Settings file \""_s + session.IniPath +
                    u"\" cannot be written, so no result could be handed back."_s);
    session.MemberComm = rate(ini, u"MemberComm"_s);
    session.DownComm = rate(ini, u"DownComm"_s);
    rate(ini, u"ServerComm"_s);
    try {
        session.ServerComm = Currency::parse(ini.read(u"GeneralSetup"_s, u"ServerComm"_s));
    } catch (const CurrencyError&) {
        badRate(ini, u"ServerComm"_s, ini.read(u"GeneralSetup"_s, u"ServerComm"_s),
                u"is out of range."_s);
    }
    // Posted as TrsDate and compared by every report, the business date must be a real day.
    if (!parseDate(session.BzDate).isValid())
        throw Error(u"Business date \""_s + session.BzDate +
                    u"\" is not a date (dd/mm/yyyy or yyyy-mm-dd)."_s);
    // Only a site moving onto the component, whose old cards have no ledger lines, turns it off.
    session.LedgerCheck = ini.read(u"GeneralSetup"_s, u"LedgerCheck"_s).trimmed() != u"0"_s;
    const QString max = ini.read(u"GeneralSetup"_s, u"MaxBalance"_s);
    try {
        session.MaxBalance = Currency::parse(max);
    } catch (const CurrencyError&) {
        badRate(ini, u"MaxBalance"_s, max, u"is out of range."_s);
    }
    if (session.MaxBalance < Currency())
        badRate(ini, u"MaxBalance"_s, max, u"is not an amount of 0 or more."_s);
}

} // namespace pondar
