#include "shell/inifile.h"

#include "shell/text.h"

#include <QFile>
#include <QFileInfo>
#include <QList>

#include <optional>
#include <utility>

#ifdef Q_OS_WIN
#include <QSaveFile>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

const QByteArray Utf8Bom("\xEF\xBB\xBF");

struct Line {
    QByteArray text; // without its line end
    QByteArray eol;  // "\r\n", "\n", "\r", or empty for a last line without one
};

struct Lines {
    QList<Line> lines;
    QByteArray eol = "\r\n"; // for lines the component adds: the file's first line end
    bool utf8 = false;       // the file starts with a UTF-8 byte-order mark
};

// CR LF, LF and a lone CR each end a line, as for the Windows functions.
Lines parse(const QByteArray& all) {
    Lines out;
    qsizetype pos = 0;
    if (all.startsWith(Utf8Bom)) {
        out.utf8 = true;
        pos = Utf8Bom.size();
    }
    bool eolSeen = false;
    const qsizetype n = all.size();
    while (pos < n) {
        qsizetype end = pos;
        while (end < n && all[end] != '\r' && all[end] != '\n')
            ++end;
        Line line{all.mid(pos, end - pos), {}};
        if (end < n) {
            const qsizetype eolLength =
                all[end] == '\r' && end + 1 < n && all[end + 1] == '\n' ? 2 : 1;
            line.eol = all.mid(end, eolLength);
            end += eolLength;
            if (!eolSeen)
                out.eol = line.eol;
            eolSeen = true;
        }
        out.lines.append(line);
        pos = end;
    }
    return out;
}

QByteArray serialize(const Lines& file) {
    QByteArray out;
    if (file.utf8)
        out += Utf8Bom;
    for (const Line& line : file.lines)
        out += line.text + line.eol;
    return out;
}

Lines load(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return parse(f.readAll());
}

QString decode(const Lines& file, const QByteArray& bytes) {
    return file.utf8 ? QString::fromUtf8(bytes) : fromAnsi(bytes);
}

QByteArray encode(const Lines& file, const QString& text) {
    return file.utf8 ? text.toUtf8() : toAnsi(text);
}

// Only blanks and tabs surround names and values; any other character belongs to them.
QByteArray strip(const QByteArray& bytes) {
    qsizetype from = 0;
    qsizetype to = bytes.size();
    while (from < to && (bytes[from] == ' ' || bytes[from] == '\t'))
        ++from;
    while (to > from && (bytes[to - 1] == ' ' || bytes[to - 1] == '\t'))
        --to;
    return bytes.mid(from, to - from);
}

QString strip(const QString& text) {
    qsizetype from = 0;
    qsizetype to = text.size();
    while (from < to && (text[from] == u' ' || text[from] == u'\t'))
        ++from;
    while (to > from && (text[to - 1] == u' ' || text[to - 1] == u'\t'))
        --to;
    return text.mid(from, to - from);
}

std::optional<QByteArray> sectionName(const QByteArray& line) {
    const QByteArray t = strip(line);
    if (!t.startsWith('['))
        return std::nullopt;
    const qsizetype close = t.indexOf(']');
    return strip(close < 0 ? t.mid(1) : t.mid(1, close - 1));
}

bool isComment(const QByteArray& line) {
    return strip(line).startsWith(';');
}

// Key and value of a "key=value" line; nullopt for a comment and anything else.
std::optional<std::pair<QByteArray, QByteArray>> keyValue(const QByteArray& line) {
    if (isComment(line))
        return std::nullopt;
    const qsizetype eq = line.indexOf('=');
    if (eq < 0)
        return std::nullopt;
    return std::make_pair(strip(line.left(eq)), strip(line.mid(eq + 1)));
}

bool same(const Lines& file, const QByteArray& name, const QString& wanted) {
    return decode(file, name).compare(wanted, Qt::CaseInsensitive) == 0;
}

// Where the first section of that name starts (its header line) and ends (one past its last line).
std::optional<std::pair<qsizetype, qsizetype>> findSection(const Lines& file,
                                                           const QString& section) {
    const QList<Line>& lines = file.lines;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const auto name = sectionName(lines[i].text);
        if (!name || !same(file, *name, section))
            continue;
        qsizetype end = i + 1;
        while (end < lines.size() && !sectionName(lines[end].text))
            ++end;
        return std::make_pair(i, end);
    }
    return std::nullopt;
}

void put(Lines& file, const QString& sec, const QString& k, const QString& value) {
    // A CR or LF would add lines of its own; no control character reaches the host's file.
    const QByteArray encoded = encode(file, withoutControls(value));
    if (const auto range = findSection(file, sec)) {
        qsizetype insertAt = range->first + 1;
        for (qsizetype i = range->first + 1; i < range->second; ++i) {
            const auto kv = keyValue(file.lines[i].text);
            if (!kv)
                continue;
            if (same(file, kv->first, k)) {
                // Keep the key as the file spells it; only the value changes.
                file.lines[i].text = kv->first + '=' + encoded;
                return;
            }
            // New keys follow the section's last key, ahead of its trailing comments.
            insertAt = i + 1;
        }
        // The line before the new one may be the file's last, without a line end.
        if (file.lines[insertAt - 1].eol.isEmpty())
            file.lines[insertAt - 1].eol = file.eol;
        file.lines.insert(insertAt,
                          Line{encode(file, withoutControls(k)) + '=' + encoded, file.eol});
    } else {
        if (!file.lines.isEmpty() && file.lines.constLast().eol.isEmpty())
            file.lines.last().eol = file.eol;
        file.lines.append(Line{'[' + encode(file, withoutControls(sec)) + ']', file.eol});
        file.lines.append(Line{encode(file, withoutControls(k)) + '=' + encoded, file.eol});
    }
}

void apply(Lines& file, const QString& section, const QList<std::pair<QString, QString>>& entries) {
    for (const auto& [key, value] : entries)
        put(file, strip(section), strip(key), value);
}

QString lookUp(const Lines& file, const QString& section, const QString& key) {
    const auto range = findSection(file, strip(section));
    if (!range)
        return {};
    const QString wanted = strip(key);
    for (qsizetype i = range->first + 1; i < range->second; ++i) {
        const auto kv = keyValue(file.lines[i].text);
        if (!kv || !same(file, kv->first, wanted))
            continue;
        QString value = decode(file, kv->second);
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') &&
            value.back() == value.front())
            value = value.mid(1, value.size() - 2);
        return value.left(IniFile::MaxValueLength);
    }
    return {};
}

#ifdef Q_OS_WIN

bool replace(const QString& path, const QString& section,
             const QList<std::pair<QString, QString>>& entries) {
    QFile in(path);
    const QByteArray after = IniFile::writeTo(
        in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray(), section, entries);
    in.close();
    QSaveFile out(path);
    out.setDirectWriteFallback(true);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    out.write(after);
    return out.commit();
}

#else

struct Fd {
    int fd = -1;
    explicit Fd(int f)
        : fd(f) {}
    ~Fd() {
        if (fd >= 0)
            ::close(fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
};

bool readAll(int fd, QByteArray& out) {
    out.clear();
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        out.append(buffer, got);
    }
}

bool writeAll(int fd, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        done += put;
    }
    return true;
}

// Opens and locks the settings file itself for the whole read-modify-replace, so that a second
// writer (another till process, the host) waits and then reads what the first one wrote. The lock
// holds on the file that the path names: one replaced while this call waited is opened again.
int openLocked(const QByteArray& path) {
    for (;;) {
        const int fd = ::open(path.constData(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
        if (fd < 0)
            return -1;
        int locked = -1;
        do
            locked = ::flock(fd, LOCK_EX);
        while (locked < 0 && errno == EINTR);
        struct stat held {};
        struct stat named {};
        if (locked < 0 || ::fstat(fd, &held) < 0) {
            ::close(fd);
            return -1;
        }
        if (::stat(path.constData(), &named) == 0 && named.st_dev == held.st_dev &&
            named.st_ino == held.st_ino)
            return fd;
        ::close(fd);
    }
}

bool replace(const QString& path, const QString& section,
             const QList<std::pair<QString, QString>>& entries) {
    // A link to the settings file stays a link: the file it names is the one replaced.
    const QFileInfo info(path);
    const QString target =
        info.isSymLink() && !info.canonicalFilePath().isEmpty() ? info.canonicalFilePath() : path;
    const QByteArray native = QFile::encodeName(target);
    const Fd lock(openLocked(native));
    if (lock.fd < 0)
        return false;
    struct stat st {};
    if (::fstat(lock.fd, &st) < 0)
        return false;
    // A file without its owner's write permission is read-only, as the Windows attribute is,
    // even for root.
    if ((st.st_mode & S_IWUSR) == 0)
        return false;
    QByteArray before;
    if (!readAll(lock.fd, before))
        return false;
    const QByteArray after = IniFile::writeTo(before, section, entries);

    // The new contents go to a file beside it that then replaces it in one step, so a reader
    // never sees half a file. It takes the file's owner, group and mode, so that a host reading
    // it as another user still can; where it cannot, the file is rewritten in place instead.
    QByteArray temp = native + ".XXXXXX";
    const Fd out(::mkstemp(temp.data()));
    if (out.fd >= 0) {
        const bool ok = ::fchmod(out.fd, st.st_mode & 07777) == 0 &&
                        (::fchown(out.fd, st.st_uid, st.st_gid) == 0) && writeAll(out.fd, after) &&
                        ::fsync(out.fd) == 0 && ::rename(temp.constData(), native.constData()) == 0;
        if (ok)
            return true;
        ::unlink(temp.constData());
    }
    const Fd inPlace(::open(native.constData(), O_WRONLY | O_CLOEXEC));
    return inPlace.fd >= 0 && ::ftruncate(inPlace.fd, 0) == 0 && writeAll(inPlace.fd, after) &&
           ::fsync(inPlace.fd) == 0;
}

#endif

} // namespace

IniFile::IniFile(QString path)
    : m_path(std::move(path)) {}

QString IniFile::read(const QString& section, const QString& key) const {
    return lookUp(load(m_path), section, key);
}

QString IniFile::readFrom(const QByteArray& contents, const QString& section, const QString& key) {
    return lookUp(parse(contents), section, key);
}

QByteArray IniFile::writeTo(const QByteArray& contents, const QString& section,
                            const QList<std::pair<QString, QString>>& entries) {
    Lines file = parse(contents);
    apply(file, section, entries);
    return serialize(file);
}

bool IniFile::write(const QString& section, const QString& key, const QString& value) const {
    return write(section, {{key, value}});
}

bool IniFile::write(const QString& section,
                    const QList<std::pair<QString, QString>>& entries) const {
    return replace(m_path, section, entries);
}

} // namespace pondar
