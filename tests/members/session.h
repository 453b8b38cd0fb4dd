#pragma once

#include "shell/session.h"
#include "support/fixtures.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

namespace pondar::test {

// A session on the fixture's database with a fixed clock, as StartApp would leave it.
inline SessionSettings sessionOn(const Fixture& f) {
    SessionSettings s;
    s.Conn = f.db();
    s.StaffCode = QStringLiteral("S01");
    s.BzDate = QStringLiteral("15/11/2026");
    s.clock = [] { return QDateTime(QDate(2026, 11, 15), QTime(10, 30)); };
    return s;
}

} // namespace pondar::test
