// The settings file's rules on arbitrary contents: reading never fails, and a write always
// reads back as written while leaving the rest of the file as it read before.
#include "shell/inifile.h"
#include "shell/text.h"

#include <cstdint>
#include <cstdlib>

using namespace Qt::Literals::StringLiterals;
using pondar::IniFile;

namespace {

// What a value written reads back as: control characters dropped, blanks and tabs around it
// and a pair of matching quotes taken off, cut to the longest value a read returns.
QString readBack(const QString& written) {
    QString v = pondar::withoutControls(written);
    while (!v.isEmpty() && (v.front() == u' ' || v.front() == u'\t'))
        v.remove(0, 1);
    while (!v.isEmpty() && (v.back() == u' ' || v.back() == u'\t'))
        v.chop(1);
    if (v.size() >= 2 && (v.front() == u'"' || v.front() == u'\'') && v.back() == v.front())
        v = v.mid(1, v.size() - 2);
    return v.left(IniFile::MaxValueLength);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray contents(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString rate = IniFile::readFrom(contents, u"GeneralSetup"_s, u"MemberComm"_s);
    if (rate.size() > IniFile::MaxValueLength)
        std::abort();

    // The value comes from the input too, so that hostile names and control bytes get in.
    const QString value = pondar::fromAnsi(contents.right(24));
    const QByteArray after = IniFile::writeTo(contents, u"TRANSACTION"_s,
                                              {{u"CardName"_s, value}, {u"ReturnFlag"_s, u"1"_s}});
    if (IniFile::readFrom(after, u"transaction"_s, u"CARDNAME"_s) != readBack(value) ||
        IniFile::readFrom(after, u"TRANSACTION"_s, u"ReturnFlag"_s) != u"1"_s ||
        IniFile::readFrom(after, u"GeneralSetup"_s, u"MemberComm"_s) != rate)
        std::abort();
    return 0;
}
