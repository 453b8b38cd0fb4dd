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

// Opens a screen (objectName name) with `open`, runs the step in it, and returns what `open`
// returned.
template <typename Open>
auto onScreen(const QString& name, std::function<void(QWidget*)> step, Open&& open) {
    OnModal modal(name, closingOnFailure(std::move(step)));
    auto result = open();
    if (!modal.ran())
        qWarning("screen %s never opened", qPrintable(name));
    return result;
}

} // namespace pondar::test
