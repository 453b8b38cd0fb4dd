#include "reports/reporttext.h"

#include "shell/database.h"
#include "shell/rows.h"

#include <pondar/error.h>

#include <algorithm>

#include <QDate>
#include <QStringView>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

void ReportText::line(const QString& text) {
    add(text);
    m_text += u"\r\n"_s;
}

void ReportText::rule() {
    line(QString(40, u'-'));
}

void ReportText::totalLine(Currency total) {
    line(u"Total :   "_s + QString(20, u' ') + rightAmount(total));
}

namespace {

void checkFits(int width, qsizetype used, QStringView what) {
    if (used > width)
        throw Error(u"The report cannot be finished: \""_s + what.toString() +
                    u"\" does not fit in "_s + QString::number(width) + u" columns."_s);
}

} // namespace

QString fill(int width, qsizetype used, const QString& what) {
    checkFits(width, used, what);
    return QString(width - used, u' ');
}

ReportText& ReportText::add(QStringView text) {
    // A name or remark must not reach the printer as a command (ESC, GS) or an extra line.
    const auto isControl = [](QChar c) { return c.unicode() < 32 || c.unicode() == 127; };
    if (std::none_of(text.begin(), text.end(), isControl)) {
        m_text.append(text);
        return *this;
    }
    for (const QChar c : text) {
        if (!isControl(c))
            m_text.append(c);
    }
    return *this;
}

ReportText& ReportText::blanks(qsizetype count) {
    m_text.resize(m_text.size() + count, u' ');
    return *this;
}

ReportText& ReportText::amount(Currency amount, int width) {
    // Formatted on the stack: one amount per printed row.
    char16_t buffer[Currency::FormatSize];
    char16_t* const end = buffer + Currency::FormatSize;
    const char16_t* const start = amount.formatBackwards(end);
    const QStringView text(start, end - start);
    checkFits(width, text.size(), text);
    return blanks(width - text.size()).add(text);
}

ReportText& ReportText::code(QStringView code, int width) {
    const QStringView trimmed = code.trimmed();
    checkFits(width, trimmed.size(), trimmed);
    return add(trimmed).blanks(width - trimmed.size());
}

ReportText& ReportText::name(QStringView name, int width) {
    const QStringView trimmed = name.trimmed();
    checkFits(width, trimmed.size(), trimmed);
    return add(name.left(width)).blanks(width - trimmed.size());
}

ReportText& ReportText::padded(QStringView text, int width) {
    const QStringView cut = text.left(width);
    return add(cut).blanks(width - cut.size());
}

void ReportText::end() {
    m_text.append(u"\r\n");
}

QString rightAmount(Currency amount, int width) {
    const QString text = amount.format();
    return fill(width, text.size(), text) + text;
}

QString codeColumn(const QString& code, int width) {
    const QString trimmed = code.trimmed();
    return trimmed.left(width) + fill(width, trimmed.size(), trimmed);
}

QString nameColumn(const QString& name, int width) {
    const QString trimmed = name.trimmed();
    return name.left(width) + fill(width, trimmed.size(), trimmed);
}

QString padColumn(const QString& text, int width) {
    return text.left(width).leftJustified(width, u' ');
}

namespace {

// A stored date-time split into day and time of day. Reports convert thousands of these, so the
// ISO text that the tables hold is read by hand: going through a local QDateTime costs a time
// zone look-up per value.
struct Stamp {
    QDate day;
    QTime time;
    bool valid() const { return day.isValid() && time.isValid(); }
};

int digits(QStringView text, qsizetype from, qsizetype count) {
    int n = 0;
    for (qsizetype i = from; i < from + count; ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return -1;
        n = n * 10 + (c - u'0');
    }
    return n;
}

// "yyyy-mm-dd", optionally followed by " hh:mm:ss" or "Thh:mm:ss" and a fraction.
Stamp isoStamp(QStringView t) {
    if (t.size() < 10 || t[4] != u'-' || t[7] != u'-')
        return {};
    const QDate day(digits(t, 0, 4), digits(t, 5, 2), digits(t, 8, 2));
    if (t.size() == 10)
        return {day, QTime(0, 0)};
    if (t.size() < 19 || (t[10] != u' ' && t[10] != u'T') || t[13] != u':' || t[16] != u':' ||
        (t.size() > 19 && t[19] != u'.'))
        return {};
    return {day, QTime(digits(t, 11, 2), digits(t, 14, 2), digits(t, 17, 2))};
}

// Whether isoStamp() reads the text as a valid stamp with a four-digit year, checked without
// building a QDate and a QTime: the proleptic Gregorian calendar that QDate uses.
bool plainIsoStamp(QStringView t) {
    if (t.size() < 10 || t[4] != u'-' || t[7] != u'-')
        return false;
    const int year = digits(t, 0, 4);
    const int month = digits(t, 5, 2);
    const int day = digits(t, 8, 2);
    if (year < 1 || month < 1 || month > 12 || day < 1)
        return false;
    static constexpr int Days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (day > Days[month - 1] + (month == 2 && leap ? 1 : 0))
        return false;
    if (t.size() == 10)
        return true;
    if (t.size() < 19 || (t[10] != u' ' && t[10] != u'T') || t[13] != u':' || t[16] != u':' ||
        (t.size() > 19 && t[19] != u'.'))
        return false;
    const int hour = digits(t, 11, 2);
    const int minute = digits(t, 14, 2);
    const int second = digits(t, 17, 2);
    return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
}

Stamp stampOf(const QVariant& value) {
    if (value.isNull())
        return {};
    if (value.typeId() == QMetaType::QDateTime) {
        const QDateTime moment = value.toDateTime();
        return {moment.date(), moment.time()};
    }
    if (value.typeId() == QMetaType::QDate)
        return {value.toDate(), QTime(0, 0)};
    const QString text = value.toString().trimmed();
    if (const Stamp stamp = isoStamp(text); stamp.valid())
        return stamp;
    const QDateTime moment = QDateTime::fromString(text, u"yyyy-MM-dd HH:mm"_s);
    return {moment.date(), moment.time()};
}

QString twoDigits(int n) {
    return QString::number(n).rightJustified(2, u'0');
}

QString dayText(QDate day) {
    return twoDigits(day.day()) + u'/' + twoDigits(day.month()) + u'/' +
           QString::number(day.year()).rightJustified(4, u'0');
}

} // namespace

QDateTime dbDateTime(const QVariant& value) {
    const Stamp stamp = stampOf(value);
    return stamp.valid() ? QDateTime(stamp.day, stamp.time) : QDateTime();
}

QString dateText(const QVariant& value) {
    const Stamp stamp = stampOf(value);
    return stamp.valid() ? dayText(stamp.day) : value.toString();
}

ReportText& ReportText::date(const db::Rows& rows, int column) {
    if (rows.native() && !rows.isNull(column)) {
        // A stored ISO date gives the printed digits as they are. A year that is not four
        // digits goes the long way, which prints it as the date it reads as.
        const QStringView t = rows.text(column).trimmed();
        if (plainIsoStamp(t))
            return add(t.mid(8, 2)).add(u"/").add(t.mid(5, 2)).add(u"/").add(t.left(4));
    }
    return add(dateText(rows.value(column)));
}

QString dateTimeText(const QVariant& value) {
    const Stamp stamp = stampOf(value);
    if (!stamp.valid())
        return value.toString();
    return dayText(stamp.day) + u' ' + twoDigits(stamp.time.hour()) + u':' +
           twoDigits(stamp.time.minute()) + u':' + twoDigits(stamp.time.second());
}

QString moneyText(const QVariant& value) {
    return value.isNull() ? QString() : db::readMoney(value).format();
}

} // namespace pondar::reports
