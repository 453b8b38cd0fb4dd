#pragma once

#include <QList>
#include <QString>

#include <utility>

namespace pondar {

// The settings file shared with the host, read and written with the semantics of the Windows
// private-profile functions: section and key names match without regard to case, blanks around
// names and values are ignored, a value in matching quotes loses them, the first of duplicate
// sections or keys wins, a value longer than 254 characters is cut, and a missing file, section
// or key reads as empty. A write creates the file, the section or the key as needed and leaves
// every other line of the file byte for byte as it was. The file is Windows-1252 text.
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

private:
    QString m_path;
};

} // namespace pondar
