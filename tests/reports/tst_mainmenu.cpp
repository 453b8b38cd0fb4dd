#include <pondar/genclass.h>

#include "shell/screens.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

// Closes every screen that becomes the active modal one, except those it is told to keep, and
// records their names in order. Message boxes are left to test::MessageBoxes.
class ScreenCloser final : public QObject {
public:
    explicit ScreenCloser(QStringList keep)
        : m_keep(std::move(keep)) {
        connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
        m_timer.start(10);
    }
    QStringList closed;

private:
    void poll() {
        QWidget* w = QApplication::activeModalWidget();
        if (!w || qobject_cast<QMessageBox*>(w) || m_keep.contains(w->objectName()))
            return;
        closed << w->objectName();
        if (auto* dialog = qobject_cast<QDialog*>(w))
            dialog->reject();
        else
            w->close();
    }

    QStringList m_keep;
    QTimer m_timer;
};

} // namespace

class TestMainMenu final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every button opens its screen and comes back to the menu.
    void everyButtonOpensItsScreenAndReturns() {
        test::Fixture f;
        SessionSettings s;
        s.Conn = f.db();
        s.BzDate = u"01/02/2024"_s;
        s.Printer = f.printerPath();
        s.IniPath = f.iniPath();
        test::MessageBoxes boxes;
        ScreenCloser closer({u"MAINMENU"_s});

        struct Step {
            int button;
            QString mode;     // TransactionMode after the click; empty: left as it was
            QString required; // the screen that must have opened
        };
        const QList<Step> steps = {{6, {}, u"MEOD"_s},
                                   {7, {}, u"MFLOG"_s},
                                   {8, {}, u"MRPT"_s},
                                   {1, u"WITHDRAW"_s, u"MFMAIN"_s},
                                   {2, u"ADJUSTMENT"_s, u"MFMAIN"_s},
                                   {3, u"ENQUIRY"_s, u"MFMAIN"_s},
                                   {4, {}, u"MFCUST"_s},
                                   {0, u"TOPUP"_s, u"MFCOMM"_s}};
        QStringList problems;
        test::OnModal menu(u"MAINMENU"_s, [&](QWidget* w) {
            QCOMPARE(w->windowTitle(), u"Mifare Main Menu"_s);
            for (const Step& step : steps) {
                s.TransactionMode = u"before"_s;
                closer.closed.clear();
                test::child<QPushButton>(w, u"CBUT(%1)"_s.arg(step.button))->click();
                const QString mode = step.mode.isEmpty() ? u"before"_s : step.mode;
                if (s.TransactionMode != mode)
                    problems << u"CBUT(%1) left mode %2"_s.arg(step.button).arg(s.TransactionMode);
                if (closer.closed != QStringList{step.required})
                    problems
                        << u"CBUT(%1) opened [%2]"_s.arg(step.button).arg(closer.closed.join(u','));
                // A top-up whose staff entry was left without saving goes no further.
                if (step.button == 0 && closer.closed.contains(u"MFMAIN"_s))
                    problems << u"top-up opened MFMAIN after its staff entry was cancelled"_s;
                if (!w->isVisible())
                    problems << u"menu closed after CBUT(%1)"_s.arg(step.button);
            }
            test::child<QPushButton>(w, u"CBUT(5)"_s)->click();
        });
        QVERIFY(showScreen(Screen::MainMenu, s));
        QVERIFY(menu.ran());
        QCOMPARE(problems, QStringList());
        QCOMPARE(s.AppValue, Currency());
    }

    void startModesOpenTheReportScreens_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("screen");
        QTest::newRow("EOD") << u"EOD"_s << u"MEOD"_s;
        QTest::newRow("LOG") << u"LOG"_s << u"MFLOG"_s;
    }
    void startModesOpenTheReportScreens() {
        QFETCH(QString, mode);
        QFETCH(QString, screen);
        test::Fixture f;
        GenClass app;
        ScreenCloser closer({});
        QVERIFY(!app.StartApp(u"S1"_s, {}, u"01/02/2024"_s, f.printerPath(), u"OUT1"_s, f.iniPath(),
                              f.db(), mode, {}, {}, Currency::parse(u"10"_s)));
        QCOMPARE(closer.closed, QStringList{screen});
    }
};

QTEST_MAIN(TestMainMenu)
#include "tst_mainmenu.moc"
