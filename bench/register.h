#pragma once

#include <QString>

class QTextStream;

namespace pondar::bench {

// The member register on a member table of `members` rows in the SQLite file `file` (made once
// and reused): opening it, jumping to the last record and the memory that takes, a search, a
// save of a member near the end, and the memory left once it is gone, each beside its goal.
// The register's model is driven as the screen drives it, without a window.
void registerFigures(QTextStream& out, const QString& file, int members, int runs);

} // namespace pondar::bench
