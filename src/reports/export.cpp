#include "reports/export.h"

#include "shell/text.h"

#include <pondar/error.h>

#include <QAbstractItemModel>
#include <QSaveFile>

using namespace Qt::Literals::StringLiterals;

namespace pondar::reports {

namespace {

QString csvField(QString value) {
    const bool formula = !value.isEmpty() &&
                         (value.front() == u'=' || value.front() == u'+' || value.front() == u'@' ||
                          (value.front() == u'-' && (value.size() == 1 || !value.at(1).isDigit())));
    if (formula)
        value.prepend(u'\'');
    if (value.contains(u',') || value.contains(u'"') || value.contains(u'\n') ||
        value.contains(u'\r')) {
        value.replace(u"\""_s, u"\"\""_s);
        return u'"' + value + u'"';
    }
    return value;
}

} // namespace

QByteArray csvBytes(QAbstractItemModel& model, const QList<int>& hiddenColumns) {
    while (model.canFetchMore({}))
        model.fetchMore({});
    QList<int> columns;
    for (int c = 0; c < model.columnCount(); ++c)
        if (!hiddenColumns.contains(c))
            columns.append(c);

    QString out;
    const auto line = [&](auto cell) {
        QStringList fields;
        for (int c : columns)
            fields.append(csvField(cell(c)));
        out += fields.join(u',') + u"\r\n"_s;
    };
    line([&](int c) { return model.headerData(c, Qt::Horizontal).toString(); });
    for (int r = 0; r < model.rowCount(); ++r)
        line([&](int c) { return model.index(r, c).data().toString(); });
    return "\xEF\xBB\xBF" + out.toUtf8();
}

QByteArray reportFileBytes(const QString& reportText) {
    QByteArray bytes = toAnsi(reportText);
    if (!bytes.endsWith("\r\n"))
        bytes += "\r\n";
    return bytes;
}

void writeExport(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw Error(u"Cannot write \""_s + path + u"\": "_s + file.errorString());
}

} // namespace pondar::reports
