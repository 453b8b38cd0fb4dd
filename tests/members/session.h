#pragma once

#include "shell/screens.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QDate>
#include <QDateTime>
#include <QPointer>
#include <QTest>
#include <QTime>
#include <QWidget>

#include <functional>

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

// Wraps a step for OnModal: a check that fails inside the step closes the screen, so that the
// test reports the failure instead of waiting on a dialog nobody will close.
inline std::function<void(QWidget*)> closingOnFailure(std::function<void(QWidget*)> step) {
    return [step = std::move(step)](QWidget* w) {
        const QPointer<QWidget> screen(w);
        step(w);
        if (screen && screen->isVisible() && QTest::currentTestFailed())
            screen->close();
    };
}

// Opens the screen (objectName name) on the session and runs the step in it.
inline void onScreen(Screen screen, const QString& name, SessionSettings& s,
                     std::function<void(QWidget*)> step) {
    OnModal modal(name, closingOnFailure(std::move(step)));
    showScreen(screen, s);
    QVERIFY(modal.ran());
}

} // namespace pondar::test
