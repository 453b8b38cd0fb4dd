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

// Closes every screen but `keep` that becomes the active modal one, recording its name (with the
// mode of a transaction screen); message boxes are left to test::MessageBoxes.
void closeScreens(QTimer& timer, QStringList& closed, const QString& keep = {}) {
    QObject::connect(&timer, &QTimer::timeout, [&closed, keep] {
        QWidget* w = QApplication::activeModalWidget();
        if (!w || qobject_cast<QMessageBox*>(w) || w->objectName() == keep)
            return;
        const QVariant mode = w->property("TransactionMode");
        closed << w->objectName() + (mode.isValid() ? u'(' + mode.toString() + u')' : QString());
        if (auto* dialog = qobject_cast<QDialog*>(w))
            dialog->reject();
        else
            w->close();
    });
    timer.start(10);
}

} // namespace

class TestMainMenu final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyButtonOpensItsScreenAndReturns() {
        test::Fixture f;
        SessionSettings s;
        s.Conn = f.db();
        s.BzDate = u"01/02/2024"_s;
        s.Printer = f.printerPath();
        s.IniPath = f.iniPath();
        test::MessageBoxes boxes;
        QStringList closed;
        QTimer timer;
        closeScreens(timer, closed, u"MAINMENU"_s);

        // Per button: the screens that opened, and whether the menu is still there. A top-up
        // whose staff entry is left goes no further, nor does the supervisor without the password.
        QStringList seen;
        test::OnModal menu(u"MAINMENU"_s, [&](QWidget* w) {
            for (int button : {6, 7, 8, 9, 1, 2, 3, 4, 0}) {
                closed.clear();
                test::child<QPushButton>(w, u"CBUT(%1)"_s.arg(button))->click();
                seen << u"%1 %2 %3"_s.arg(button).arg(closed.join(u','),
                                                      w->isVisible() ? u"open"_s : u"closed"_s);
            }
            test::child<QPushButton>(w, u"CBUT(5)"_s)->click();
        });
        showMainMenu(s);
        QVERIFY(menu.ran());
        QCOMPARE(seen, (QStringList{u"6 MEOD open"_s, u"7 MFLOG open"_s, u"8 MRPT open"_s,
                                    u"9 MESC open"_s, u"1 MFMAIN(WITHDRAW) open"_s,
                                    u"2 MFMAIN(ADJUSTMENT) open"_s, u"3 MFMAIN(ENQUIRY) open"_s,
                                    u"4 MFCUST open"_s, u"0 MFCOMM open"_s}));
        QCOMPARE(s.AppValue, Currency());
    }

    // The menu has no amount of its own to pass on; the supervisor's tools open only past MESC.
    void startModesOpenTheirScreens() {
        for (const auto& [mode, screen] :
             {std::pair(u"EOD"_s, u"MEOD"_s), std::pair(u"LOG"_s, u"MFLOG"_s),
              std::pair(u"MAINMENU"_s, u"MAINMENU"_s), std::pair(u"SUPERVISOR"_s, u"MESC"_s)}) {
            test::Fixture f;
            GenClass app;
            QStringList closed;
            QTimer timer;
            closeScreens(timer, closed);
            QVERIFY(!app.StartApp(u"S1"_s, {}, u"01/02/2024"_s, f.printerPath(), u"OUT1"_s,
                                  f.iniPath(), f.db(), mode, {}, {}, Currency::parse(u"10"_s)));
            QCOMPARE(closed, QStringList{screen});
            QCOMPARE(app.session().AppValue,
                     Currency::parse(mode == u"MAINMENU"_s ? u"0"_s : u"10"_s));
        }
    }
};

QTEST_MAIN(TestMainMenu)
#include "tst_mainmenu.moc"
