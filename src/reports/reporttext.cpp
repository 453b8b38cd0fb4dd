#include "reports/reporttext.h"

#include "shell/database.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QDate>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

void ReportText::line(const QString& text) {
    m_text += text;
    m_text += u"\r\n"_s;
}

void ReportText::rule() {
    line(QString(40, u'-'));
}

void ReportText::totalLine(Currency total) {
    line(u"Total :   "_s + QString(20, u' ') + rightAmount(total));
}

QString fill(int width, qsizetype used, const QString& what) {
    if (used > width)
        throw Error(u"The report cannot be finished: \""_s + what + u"\" does not fit in "_s +
                    QString::number(width) + u" columns."_s);
    return QString(width - used, u' ');
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

QDateTime dbDateTime(const QVariant& value) {
    if (value.isNull())
        return {};
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime();
    if (value.typeId() == QMetaType::QDate)
        return value.toDate().startOfDay();
    const QString text = value.toString().trimmed();
    for (const QString& format :
         {u"yyyy-MM-dd HH:mm:ss"_s, u"yyyy-MM-dd HH:mm:ss.zzz"_s, u"yyyy-MM-ddTHH:mm:ss"_s,
          u"yyyy-MM-ddTHH:mm:ss.zzz"_s, u"yyyy-MM-dd HH:mm"_s}) {
        const QDateTime moment = QDateTime::fromString(text, format);
        if (moment.isValid())
            return moment;
    }
    const QDate day = QDate::fromString(text, u"yyyy-MM-dd"_s);
    return day.isValid() ? day.startOfDay() : QDateTime();
}

QString dateText(const QVariant& value) {
    const QDateTime moment = dbDateTime(value);
    return moment.isValid() ? moment.toString(u"dd/MM/yyyy"_s) : value.toString();
}

QString dateTimeText(const QVariant& value) {
    const QDateTime moment = dbDateTime(value);
    return moment.isValid() ? displayDateTime(moment) : value.toString();
}

QString moneyText(const QVariant& value) {
    return value.isNull() ? QString() : db::readMoney(value).format();
}

} // namespace pondar::reports
