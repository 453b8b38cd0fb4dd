#include <pondar/genclass.h>

#include "card/cardsim.h"
#include "card/codec.h"
#include "members/cardissue.h"
#include "members/memberdata.h"
#include "shell/database.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "support/dialogs.h"
#include "support/fixtures.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using Button = QMessageBox::StandardButton;

namespace {

QLineEdit* txt(QWidget* w, int i) {
    return test::child<QLineEdit>(w, u"TXT(%1)"_s.arg(i));
}
QPushButton* cbut(QWidget* w, int i) {
    return test::child<QPushButton>(w, u"CBUT(%1)"_s.arg(i));
}

// Runs the step in the screen `open` shows and returns what `open` returned; a failed check
// closes the screen, so the test reports it instead of waiting on a dialog nobody closes.
template <typename Open>
auto onScreen(const QString& name, std::function<void(QWidget*)> step, Open&& open) {
    test::OnModal modal(name, [&step](QWidget* w) {
        const QPointer<QWidget> screen(w);
        step(w);
        if (screen && screen->isVisible() && QTest::currentTestFailed())
            screen->close();
    });
    auto result = open();
    if (!modal.ran())
        qWarning("screen %s never opened", qPrintable(name));
    return result;
}

void onRegister(SessionSettings& s, std::function<void(QWidget*)> step) {
    onScreen(u"MFCUST"_s, std::move(step), [&] { return showMemberRegister(s), true; });
}

// Types into a box as the operator does: focus, replace the selected text, Enter.
void type(QLineEdit* box, const QString& text) {
    test::focusOn(box);
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Return);
}

QString logLines(const test::Fixture& f) {
    return f.rows(u"SELECT Description FROM Customize_Log ORDER BY ID"_s);
}

QByteArray text(const QByteArray& block) {
    return QByteArray(block.constData()); // up to the first NUL
}

} // namespace

// The member register, its lookups and the staff entry that opens a top-up.
class TestRegister final : public QObject {
    Q_OBJECT

    test::Fixture* f = nullptr;
    SessionSettings s; // on the fixture's database with a fixed clock, as StartApp leaves it

private Q_SLOTS:
    void init() {
        f = new test::Fixture;
        f->addMember(u"A1"_s, u"ALICE"_s);
        f->addMember(u"B2"_s, u"BOB"_s, u"A1"_s);
        f->addMember(u"X9"_s, u"GONE"_s, {}, true);
        f->addStaff(u"S01"_s, u"ALICE TAN"_s);
        f->addStaff(u"S02"_s, u"BOB LEFT"_s, true);
        f->addStaff(u"s03"_s, u"CHOY"_s);
        s.Conn = f->db();
        s.StaffCode = u"S01"_s;
        s.BzDate = u"15/11/2026"_s;
        s.clock = [] { return QDateTime(QDate(2026, 11, 15), QTime(10, 30)); };
    }
    void cleanup() {
        s = SessionSettings(); // lets go of the connection before the fixture removes it
        delete f;
    }

    void newMemberIsSavedWhateverTheCardDoes_data() {
        QTest::addColumn<QString>("cardState");
        QTest::addColumn<QList<Button>>("answers");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QByteArray>("code");
        const QString store = u"Store Data to Card "_s;
        const QString addZero = u"Confirm to Add in value : 0.00 to Card ?"_s;
        const QString saved = u"Data successfully saved to Card !!"_s;
        const Button yes = QMessageBox::Yes, no = QMessageBox::No;
        QTest::newRow("blank card issued") << u"blank"_s << QList<Button>{yes, yes}
                                           << QStringList{store, addZero, saved} << "N0001"_ba;
        QTest::newRow("card not wanted")
            << u"blank"_s << QList<Button>{no} << QStringList{store} << QByteArray();
        QTest::newRow("used card overwritten")
            << u"used"_s << QList<Button>{yes, yes, yes}
            << QStringList{store, u"This Card contain Data !!! Continue overwrite ? "_s, addZero,
                           saved}
            << "N0001"_ba;
        QTest::newRow("no card") << u"none"_s << QList<Button>{yes}
                                 << QStringList{store, u"Error Reading Card Device !!!"_s}
                                 << QByteArray();
    }
    void newMemberIsSavedWhateverTheCardDoes() {
        QFETCH(QString, cardState);
        QFETCH(QList<Button>, answers);
        QFETCH(QStringList, messages);
        QFETCH(QByteArray, code);

        test::CardSim sim;
        sim.attach(s);
        if (cardState != u"none"_s)
            sim.put({0x0A, 0x0B, 0x0C, 0x0D});
        if (cardState == u"used"_s) {
            test::RecordingPrompts yes;
            QCOMPARE(members::issueCard(s, yes, u"OLD01"_s, u"OLD OWNER"_s),
                     members::CardIssue::Written);
        }
        const QString name = u"NURUL AIN BINTI ABDULLAH"_s; // longer than the card takes
        test::MessageBoxes boxes;
        for (Button answer : answers)
            boxes.queue(answer);
        onRegister(s, [&](QWidget* w) {
            cbut(w, 1)->click();
            QTRY_COMPARE(QApplication::focusWidget(), txt(w, 0));
            type(txt(w, 0), u"N0001"_s);
            type(txt(w, 1), name);
            type(txt(w, 9), u"F"_s);
            QTest::mouseClick(cbut(w, 4), Qt::LeftButton);
            QCOMPARE(txt(w, 0)->text(), u"N0001"_s); // browsing the member just saved
            w->close();
        });
        QCOMPARE(boxes.texts(), messages);
        // Only the question that destroys a card's data leaves Yes to a deliberate choice.
        for (const auto& seen : boxes.seen())
            if (seen.answer != QMessageBox::Ok)
                QCOMPARE(seen.preferred,
                         seen.text.contains(u"overwrite"_s) ? QMessageBox::No : QMessageBox::Yes);
        QCOMPARE(f->rows(u"SELECT MemberName, sex FROM tloy_mt_member WHERE MemberCode='N0001'"_s),
                 name + u"|F"_s);
        // The card written is registered as the new member's.
        const QString written = u"Writing New Member Code : N0001/"_s + name + u" to Mifare Card"_s;
        const QStringList logged{u"Card Registered : CardNo : N0001 Serial : V0A0B0C0DS"_s,
                                 written};
        QCOMPARE(logLines(*f).split(u'\n').filter(u"N0001"_s),
                 code.isEmpty() ? logged.mid(1) : logged);
        QCOMPARE(text(sim.block(41)), code);
        if (!code.isEmpty())
            QCOMPARE(text(card::decrypt(text(sim.block(40)))) + ' ' + text(sim.block(42)) + ' ' +
                         text(sim.block(36)),
                     "V0A0B0C0DS " + name.left(16).toLatin1() + " 0");
    }

    // Each bad entry keeps the focus in its box; leaving with Escape saves nothing.
    void badEntryKeepsTheOperatorInTheBox() {
        struct Case {
            int box; // the code, box 0, takes typing only when adding
            QString typed, message;
        };
        for (const Case& c : {Case{0, u"N 1"_s, u"Invalid Input Character !!!"_s},
                              Case{0, u"B2"_s, u"Duplicated Member Code !!!"_s},
                              Case{9, u"m"_s, u"Invalid Sex Type !!!"_s},
                              Case{12, u"ZZ"_s, u"Invalid Introducer Code !!!"_s}}) {
            test::MessageBoxes boxes;
            onRegister(s, [&](QWidget* w) {
                if (c.box == 0)
                    cbut(w, 1)->click();
                type(txt(w, c.box), c.typed);
                QTRY_COMPARE(QApplication::focusWidget(), txt(w, c.box));
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
            });
            QCOMPARE(boxes.texts(), QStringList{c.message});
        }
        QCOMPARE(f->rows(u"SELECT COUNT(*), COUNT(sex) FROM tloy_mt_member"_s), u"3|0"_s);
        QCOMPARE(logLines(*f), QString());
    }

    // Opened by StartApp("MEMBER"); removal is refused while the member has a top-up row.
    void deleteIsRefusedWhileTheMemberHasATopUp() {
        db::exec(f->db(), u"INSERT INTO Customize_Topup (cardNo, FValue) VALUES (?,?)"_s,
                 {u"B2"_s, db::bindMoney(Currency::parse(u"5"_s))});
        GenClass app;
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::Yes);
        const bool started = onScreen(
            u"MFCUST"_s,
            [](QWidget* w) {
                cbut(w, 3)->click(); // A1, no rows: removed
                QCOMPARE(txt(w, 0)->text(), u"B2"_s);
                cbut(w, 3)->click(); // B2, a top-up row
                w->close();
            },
            [&] {
                return app.StartApp(u"S01"_s, {}, u"15/11/2026"_s, f->printerPath(), u"OUT1"_s,
                                    f->iniPath(), f->db(), u"MEMBER"_s, u"T1"_s, u"B1"_s,
                                    Currency());
            });
        QVERIFY(!started);
        QCOMPARE(boxes.texts(), (QStringList{u"Confirm to Remove ALICE ?"_s,
                                             u"Function Rejected !!! Transaction Found !!!"_s}));
        QCOMPARE(boxes.seen().at(0).preferred, QMessageBox::No);
        QCOMPARE(f->rows(u"SELECT MemberCode FROM tloy_mt_member ORDER BY MemberCode"_s),
                 u"B2\nX9"_s);
        QCOMPARE(logLines(*f), u"Remove Member Code : A1/ALICE"_s);
    }

    // A double-click picks column 0 as shown; Escape later picks nothing and empties the box.
    void lookupPicksColumnZeroAndEscapePicksNothing() {
        f->addMember(u"B3  "_s, u"BOB"_s);
        const std::optional<QString> picked = onScreen(
            u"SEAFORM"_s,
            [](QWidget* w) {
                auto* view = test::child<QTableView>(w, u"DataGrid1"_s);
                const QModelIndex third = view->model()->index(2, 1);
                view->setCurrentIndex(third);
                QTest::mouseDClick(view->viewport(), Qt::LeftButton, {},
                                   view->visualRect(third).center());
            },
            [&] { return pickFromLookup(s, members::memberSearchLookup()); });
        QCOMPARE(picked, std::optional<QString>(u"B3  "_s));
        test::MessageBoxes boxes;
        onRegister(s, [&](QWidget* w) {
            test::OnModal lookup(u"SEAFORM"_s, [&](QWidget* grid) {
                QTest::keyClick(test::child<QTableView>(grid, u"DataGrid1"_s), Qt::Key_Escape);
            });
            test::focusOn(txt(w, 12));
            QTest::keyClicks(txt(w, 12), u"B"_s);
            QTest::keyClick(txt(w, 12), Qt::Key_Down);
            QVERIFY(lookup.ran());
            QCOMPARE(txt(w, 12)->text(), QString());
            w->close();
        });
        QCOMPARE(boxes.texts(), QStringList());
    }

    // Ok hands back the code upper-cased with its name; an inactive code or Close, nothing.
    void staffEntryReturnsWhatOkConfirms() {
        struct Case {
            QString typed;
            bool ok;
            QString shown, message;
        };
        for (const Case& c : {Case{u"S02"_s, false, {}, u"Invalid Staff Code !!!"_s},
                              Case{u"s03"_s, true, u"CHOY"_s, {}}, // stored lower case
                              Case{u"s01"_s, true, u"ALICE TAN"_s, {}}}) {
            test::MessageBoxes boxes;
            const std::optional<StaffMember> staff = onScreen(
                u"MFCOMM"_s,
                [&](QWidget* w) {
                    auto* box = test::child<QLineEdit>(w, u"TXT"_s);
                    test::focusOn(box);
                    QTest::keyClicks(box, c.typed);
                    QTest::keyClick(box, Qt::Key_Tab);
                    if (!c.message.isEmpty())
                        QTRY_COMPARE(QApplication::focusWidget(), box);
                    QCOMPARE(test::child<QLabel>(w, u"SNAME"_s)->text(), c.shown);
                    QTest::mouseClick(test::child<QPushButton>(w, c.ok ? u"CSAVE"_s : u"CEXIT"_s),
                                      Qt::LeftButton);
                },
                [&] { return askStaffMember(s); });
            QCOMPARE(boxes.texts(), c.message.isEmpty() ? QStringList() : QStringList{c.message});
            QCOMPARE(staff.has_value(), c.ok);
            if (staff)
                QCOMPARE(staff->code + u'|' + staff->name, c.typed.toUpper() + u'|' + c.shown);
        }
    }
};

QTEST_MAIN(TestRegister)
#include "tst_register.moc"
