#include "shell/text.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

// 0x80 to 0x9F of Windows-1252; the five undefined bytes map to the C1 controls, as Windows does.
constexpr std::array<char16_t, 32> HighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

QByteArray toAnsi(const QString& text) {
    QByteArray out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) {
            out.append(char(u));
            continue;
        }
        char byte = '?';
        for (std::size_t i = 0; i < HighControls.size(); ++i) {
            if (HighControls[i] == u) {
                byte = char(0x80 + i);
                break;
            }
        }
        out.append(byte);
    }
    return out;
}

QString fromAnsi(const QByteArray& bytes) {
    QString out;
    out.reserve(bytes.size());
    for (const char ch : bytes) {
        const auto b = static_cast<unsigned char>(ch);
        out.append(b >= 0x80 && b < 0xA0 ? QChar(HighControls[b - 0x80]) : QChar(char16_t(b)));
    }
    return out;
}

bool hasControlByte(const QByteArray& bytes) {
    for (const char ch : bytes) {
        if (static_cast<unsigned char>(ch) < 32 || ch == 127)
            return true;
    }
    return false;
}

QString withoutControls(const QString& text) {
    const auto isControl = [](QChar c) { return c.unicode() < 32 || c.unicode() == 127; };
    if (std::none_of(text.begin(), text.end(), isControl))
        return text;
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (!isControl(c))
            out.append(c);
    }
    return out;
}

QDate parseDate(const QString& text) {
    const QString t = text.trimmed();
    QDate d = QDate::fromString(t, u"dd/MM/yyyy"_s);
    if (!d.isValid())
        d = QDate::fromString(t, u"yyyy-MM-dd"_s);
    if (!d.isValid())
        d = QDate::fromString(t, u"d/M/yyyy"_s);
    return d;
}

QString isoDateTime(const QDateTime& moment) {
    return moment.toString(u"yyyy-MM-dd HH:mm:ss"_s);
}

QString isoDayStart(QDate day) {
    return day.toString(u"yyyy-MM-dd"_s) + u" 00:00:00"_s;
}

QString isoDayEnd(QDate day) {
    return day.toString(u"yyyy-MM-dd"_s) + u" 23:59:59"_s;
}

QVariant bizDateValue(const QString& bzDate) {
    const QDate d = parseDate(bzDate);
    return d.isValid() ? QVariant(d.startOfDay()) : QVariant(bzDate);
}

QString displayDateTime(const QDateTime& moment) {
    return moment.toString(u"dd/MM/yyyy HH:mm:ss"_s);
}

} // namespace pondar
