#pragma once

#include <QList>
#include <QString>

#include <utility>

namespace pondar {

// The settings file shared with the host, read and written with the semantics of the Windows
// private-profile functions: section and key names match without regard to case, blanks and
// tabs around names and values are ignored (nothing else), a line starting with ";" is a
// comment, CR LF, LF and a lone CR each end a line, a value in matching quotes loses them, the
// first of duplicate sections or keys wins, a value longer than 254 characters is cut, and a
// missing file, section or key reads as empty. The file is Windows-1252 text, or UTF-8 when it
// starts with a UTF-8 byte-order mark.
//
// A write creates the file, the section or the key as needed (a new key right after the
// section's last key, ahead of trailing comments and blank lines) and leaves every other line
// of the file byte for byte as it was. Control characters in what is written are dropped. The
// whole read-modify-replace holds an exclusive lock on the file, so that writers in other
// processes lose nothing, and the file keeps its owner, group and mode. A file without its
// owner's write permission is read-only, as with the Windows attribute, and a write to it fails.
class IniFile final {
public:
    static constexpr int MaxValueLength = 254;

    explicit IniFile(QString path);

    QString read(const QString& section, const QString& key) const;
    bool write(const QString& section, const QString& key, const QString& value) const;
    // Several keys of one section in this order, in one replacement of the file: a reader of
    // the file sees all of them or none.
    bool write(const QString& section, const QList<std::pair<QString, QString>>& entries) const;

    const QString& path() const { return m_path; }

    // The same rules on a file's contents in memory: what read() gives, and the contents a
    // write() leaves.
    static QString readFrom(const QByteArray& contents, const QString& section, const QString& key);
    static QByteArray writeTo(const QByteArray& contents, const QString& section,
                              const QList<std::pair<QString, QString>>& entries);

private:
    QString m_path;
};

} // namespace pondar
