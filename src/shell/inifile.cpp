#include "shell/inifile.h"

#include "shell/text.h"

#include <QFile>
#include <QList>
#include <QSaveFile>

#include <optional>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

struct Lines {
    QList<QByteArray> lines; // without their line ends
    QByteArray eol = "\r\n";
};

Lines load(const QString& path) {
    Lines out;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return out;
    const QByteArray all = f.readAll();
    if (!all.contains("\r\n") && all.contains('\n'))
        out.eol = "\n";
    out.lines = all.split('\n');
    if (!out.lines.isEmpty() && out.lines.constLast().isEmpty())
        out.lines.removeLast(); // the file's last line end
    for (QByteArray& line : out.lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    return out;
}

std::optional<QString> sectionName(const QByteArray& line) {
    const QString t = fromAnsi(line).trimmed();
    if (!t.startsWith(u'['))
        return std::nullopt;
    const qsizetype close = t.indexOf(u']');
    return (close < 0 ? t.mid(1) : t.mid(1, close - 1)).trimmed();
}

// Key and value of a "key=value" line; nullopt for anything else.
std::optional<std::pair<QString, QString>> keyValue(const QByteArray& line) {
    const QString t = fromAnsi(line);
    const qsizetype eq = t.indexOf(u'=');
    if (eq < 0)
        return std::nullopt;
    return std::make_pair(t.left(eq).trimmed(), t.mid(eq + 1).trimmed());
}

bool same(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// Where the first section of that name starts (its header line) and ends (one past its last line).
std::optional<std::pair<qsizetype, qsizetype>> findSection(const QList<QByteArray>& lines,
                                                           const QString& section) {
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const auto name = sectionName(lines[i]);
        if (!name || !same(*name, section))
            continue;
        qsizetype end = i + 1;
        while (end < lines.size() && !sectionName(lines[end]))
            ++end;
        return std::make_pair(i, end);
    }
    return std::nullopt;
}

} // namespace

IniFile::IniFile(QString path)
    : m_path(std::move(path)) {}

QString IniFile::read(const QString& section, const QString& key) const {
    const Lines file = load(m_path);
    const auto range = findSection(file.lines, section.trimmed());
    if (!range)
        return {};
    for (qsizetype i = range->first + 1; i < range->second; ++i) {
        const auto kv = keyValue(file.lines[i]);
        if (!kv || !same(kv->first, key.trimmed()))
            continue;
        QString value = kv->second;
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') &&
            value.back() == value.front())
            value = value.mid(1, value.size() - 2);
        return value.left(MaxValueLength);
    }
    return {};
}

namespace {

void put(Lines& file, const QString& sec, const QString& k, const QString& value) {
    QByteArray newLine = toAnsi(k) + '=' + toAnsi(value);
    if (const auto range = findSection(file.lines, sec)) {
        qsizetype insertAt = range->first + 1;
        for (qsizetype i = range->first + 1; i < range->second; ++i) {
            const auto kv = keyValue(file.lines[i]);
            if (kv && same(kv->first, k)) {
                // Keep the key as the file spells it; only the value changes.
                const QByteArray& old = file.lines[i];
                file.lines[i] = old.left(old.indexOf('=')).trimmed() + '=' + toAnsi(value);
                return;
            }
            if (!file.lines[i].trimmed().isEmpty())
                insertAt = i + 1;
        }
        file.lines.insert(insertAt, newLine);
    } else {
        file.lines.append('[' + toAnsi(sec) + ']');
        file.lines.append(newLine);
    }
}

} // namespace

bool IniFile::write(const QString& section, const QString& key, const QString& value) const {
    return write(section, {{key, value}});
}

bool IniFile::write(const QString& section,
                    const QList<std::pair<QString, QString>>& entries) const {
    Lines file = load(m_path);
    for (const auto& [key, value] : entries)
        put(file, section.trimmed(), key.trimmed(), value);

    QSaveFile out(m_path);
    out.setDirectWriteFallback(true);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    for (const QByteArray& line : std::as_const(file.lines)) {
        out.write(line);
        out.write(file.eol);
    }
    return out.commit();
}

} // namespace pondar
