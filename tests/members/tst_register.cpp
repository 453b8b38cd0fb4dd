#include <pondar/genclass.h>

#include "card/cardsim.h"
#include "card/codec.h"
#include "members/cardissue.h"
#include "members/session.h"
#include "shell/database.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QStyledItemDelegate>
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
QString caption(QWidget* w) {
    return test::child<QLabel>(w, u"Caption"_s)->text();
}
QWidget* focused() {
    return QApplication::focusWidget();
}

void onRegister(SessionSettings& s, std::function<void(QWidget*)> step) {
    test::onScreen(Screen::Member, u"MFCUST"_s, s, std::move(step));
}

// Types into a box as the operator does: focus, replace the selected text, Enter.
void type(QLineEdit* box, const QString& text) {
    test::focusOn(box);
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Return);
}

QStringList logLines(const test::Fixture& f) {
    QStringList lines;
    QSqlQuery q = db::exec(f.db(), u"SELECT Description FROM Customize_Log ORDER BY ID"_s);
    while (q.next())
        lines.append(q.value(0).toString());
    return lines;
}

QByteArray text(const QByteArray& block) {
    const qsizetype nul = block.indexOf('\0');
    return nul < 0 ? block : block.left(nul);
}

void addTransaction(const test::Fixture& f, const QString& card, const QString& date,
                    const QString& type, const char* value) {
    db::exec(f.db(),
             u"INSERT INTO Customize_Transaction (CardNo, TrsDate, BillNo, Billtype, PValue) "
             "VALUES (?,?,?,?,?)"_s,
             {card, date, QString(u"B-"_s + date.left(10)), type,
              db::bindMoney(Currency::parse(QString::fromLatin1(value)))});
}

} // namespace

class TestRegister final : public QObject {
    Q_OBJECT

    test::Fixture* f = nullptr;

private Q_SLOTS:
    void init() {
        f = new test::Fixture;
        f->addMember(u"A1"_s, u"ALICE"_s);
        f->addMember(u"B2"_s, u"BOB"_s, u"A1"_s);
        f->addMember(u"X9"_s, u"GONE"_s, {}, true);
    }
    void cleanup() { delete f; }

    void openedByStartAppOnTheFirstMember() {
        GenClass app;
        test::MessageBoxes boxes;
        test::OnModal step(
            u"MFCUST"_s, test::closingOnFailure([&](QWidget* w) {
                QCOMPARE(caption(w), u" Total Records : 3"_s);
                QCOMPARE(txt(w, 0)->text(), u"A1"_s);
                QCOMPARE(txt(w, 1)->text(), u"ALICE"_s);
                QVERIFY(!txt(w, 0)->isEnabled());

                // Enter and Up walk the focus order; the focused box is light yellow and selected.
                test::focusOn(txt(w, 6));
                QTest::keyClick(txt(w, 6), Qt::Key_Return);
                QCOMPARE(focused(), txt(w, 1));
                QCOMPARE(txt(w, 1)->palette().color(QPalette::Base), QColor(0xFF, 0xFF, 0xC0));
                QCOMPARE(txt(w, 1)->selectedText(), u"ALICE"_s);
                QTest::keyClick(txt(w, 1), Qt::Key_Up);
                QCOMPARE(focused(), txt(w, 6));
                QCOMPARE(txt(w, 1)->palette().color(QPalette::Base), QColor(Qt::white));
                test::focusOn(txt(w, 10));
                QTest::keyClick(txt(w, 10), Qt::Key_Return);
                QCOMPARE(focused(), cbut(w, 4));

                // Editing in place: "&Save" updates the row and says so in the log.
                type(txt(w, 1), u"ALICE WONG"_s);
                QTest::mouseClick(cbut(w, 4), Qt::LeftButton);
                QCOMPARE(txt(w, 1)->text(), u"ALICE WONG"_s);
                // An edit left unsaved is dropped with the screen.
                type(txt(w, 8), u"0312345678"_s);
                QTest::keyClick(focused(), Qt::Key_Escape);
            }));
        QVERIFY(!app.StartApp(u"S01"_s, {}, u"15/11/2026"_s, f->printerPath(), u"OUT1"_s,
                              f->iniPath(), f->db(), u"MEMBER"_s, u"T1"_s, u"B1"_s, Currency()));
        QVERIFY(step.ran());
        QCOMPARE(boxes.texts(), QStringList());
        QCOMPARE(f->scalar(u"SELECT MemberName FROM tloy_mt_member WHERE MemberCode='A1'"_s),
                 QVariant(u"ALICE WONG"_s));
        QVERIFY(f->scalar(u"SELECT telno FROM tloy_mt_member WHERE MemberCode='A1'"_s).isNull());
        QCOMPARE(logLines(*f), QStringList{u"Update Member Details for Code : A1/ALICE WONG"_s});
    }

    void newMemberIsSavedWhateverTheCardDoes_data() {
        QTest::addColumn<QString>("cardState");
        QTest::addColumn<QList<Button>>("answers");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QByteArray>("value");
        const QString store = u"Store Data to Card "_s;
        const QString overwrite = u"This Card contain Data !!! Continue overwrite ? "_s;
        const QString addZero = u"Confirm to Add in value : 0.00 to Card ?"_s;
        const QString saved = u"Data successfully saved to Card !!"_s;
        const Button yes = QMessageBox::Yes, no = QMessageBox::No;
        QTest::newRow("blank card issued")
            << u"blank"_s << QList<Button>{yes, yes} << QStringList{store, addZero, saved}
            << QByteArray("N0001") << QByteArray("0");
        QTest::newRow("card not wanted") << u"blank"_s << QList<Button>{no} << QStringList{store}
                                         << QByteArray() << QByteArray();
        QTest::newRow("used card kept")
            << u"used"_s << QList<Button>{yes, no} << QStringList{store, overwrite}
            << QByteArray("OLD01") << QByteArray("0");
        QTest::newRow("used card overwritten") << u"used"_s << QList<Button>{yes, yes, yes}
                                               << QStringList{store, overwrite, addZero, saved}
                                               << QByteArray("N0001") << QByteArray("0");
        // The fields are reported written even when the value is not.
        QTest::newRow("value sector locked")
            << u"locked"_s << QList<Button>{yes} << QStringList{store, saved} << QByteArray("N0001")
            << QByteArray();
        QTest::newRow("no card") << u"none"_s << QList<Button>{yes}
                                 << QStringList{store, u"Error Reading Card Device !!!"_s}
                                 << QByteArray() << QByteArray();
    }
    void newMemberIsSavedWhateverTheCardDoes() {
        QFETCH(QString, cardState);
        QFETCH(QList<Button>, answers);
        QFETCH(QStringList, messages);
        QFETCH(QByteArray, code);
        QFETCH(QByteArray, value);

        test::CardSim sim;
        SessionSettings s = test::sessionOn(*f);
        sim.attach(s);
        if (cardState != u"none"_s)
            sim.put({0x0A, 0x0B, 0x0C, 0x0D});
        if (cardState == u"used"_s) {
            s.CurrentCode = u"OLD01"_s;
            s.CurrentName = u"OLD OWNER"_s;
            test::RecordingPrompts yes;
            QCOMPARE(members::issueCard(s, yes), members::CardIssue::Written);
        }
        if (cardState == u"locked"_s) {
            QByteArray image = sim.image();
            image.replace(39 * 16, 6, QByteArray(6, '\x22')); // sector 9 keyed differently
            sim.put(image);
        }
        const QString name = u"NURUL AIN BINTI ABDULLAH"_s; // longer than the card takes

        test::MessageBoxes boxes;
        for (Button answer : answers)
            boxes.queue(answer);
        onRegister(s, [&](QWidget* w) {
            auto* adding = test::child<QCheckBox>(w, u"NewCode"_s);
            cbut(w, 1)->click();
            QVERIFY(adding->isChecked());
            QVERIFY(!cbut(w, 3)->isEnabled());
            QVERIFY(!cbut(w, 5)->isEnabled());
            QVERIFY(!test::child<QWidget>(w, u"MData"_s)->isEnabled());
            QTRY_COMPARE(focused(), txt(w, 0));
            QTest::keyClicks(txt(w, 0), u"N0001"_s);
            QTest::keyClick(txt(w, 0), Qt::Key_Return);
            QCOMPARE(focused(), txt(w, 6));
            type(txt(w, 1), name);
            type(txt(w, 9), u"F"_s);
            QTest::mouseClick(cbut(w, 4), Qt::LeftButton);

            // Back to browsing, on the member just saved.
            QVERIFY(!adding->isChecked());
            QVERIFY(!txt(w, 0)->isEnabled());
            QVERIFY(cbut(w, 3)->isEnabled());
            QCOMPARE(caption(w), u" Total Records : 4"_s);
            QCOMPARE(txt(w, 0)->text(), u"N0001"_s);
            w->close();
        });
        QCOMPARE(boxes.texts(), messages);
        QCOMPARE(f->scalar(u"SELECT MemberName FROM tloy_mt_member WHERE MemberCode='N0001'"_s),
                 QVariant(name));
        QCOMPARE(f->scalar(u"SELECT sex FROM tloy_mt_member WHERE MemberCode='N0001'"_s),
                 QVariant(u"F"_s));
        QCOMPARE(logLines(*f),
                 QStringList{u"Writing New Member Code : N0001/"_s + name + u" to Mifare Card"_s});
        QCOMPARE(text(sim.block(41)), code);
        QCOMPARE(text(sim.block(36)), value);
        if (code == "N0001") {
            QCOMPARE(text(card::decrypt(text(sim.block(40)))), QByteArray("V0A0B0C0DS"));
            QCOMPARE(text(sim.block(42)), name.left(16).toLatin1());
        }
    }

    void badEntryKeepsTheOperatorInTheBox_data() {
        QTest::addColumn<bool>("adding");
        QTest::addColumn<int>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message");
        const QString badCharacter = u"Invalid Input Character !!!"_s;
        QTest::newRow("code with a blank") << true << 0 << u"N 1"_s << badCharacter;
        QTest::newRow("code with a quote") << true << 0 << u"N'1"_s << badCharacter;
        QTest::newRow("duplicate code") << true << 0 << u"B2"_s << u"Duplicated Member Code !!!"_s;
        QTest::newRow("new code") << true << 0 << u"N1"_s << QString();
        QTest::newRow("lower-case sex") << false << 9 << u"m"_s << u"Invalid Sex Type !!!"_s;
        QTest::newRow("sex M") << false << 9 << u"M"_s << QString();
        QTest::newRow("unknown introducer")
            << false << 12 << u"ZZ"_s << u"Invalid Introducer Code !!!"_s;
        QTest::newRow("introducer with a quote") << false << 12 << u"A'"_s << badCharacter;
        QTest::newRow("inactive introducer") << false << 12 << u"X9"_s << QString();
        QTest::newRow("own code as introducer") << false << 12 << u"A1"_s << QString();
    }
    void badEntryKeepsTheOperatorInTheBox() {
        QFETCH(bool, adding);
        QFETCH(int, box);
        QFETCH(QString, typed);
        QFETCH(QString, message);
        SessionSettings s = test::sessionOn(*f);
        test::MessageBoxes boxes;
        onRegister(s, [&](QWidget* w) {
            if (adding)
                cbut(w, 1)->click();
            type(txt(w, box), typed);
            if (message.isEmpty()) {
                QVERIFY(focused() != txt(w, box));
            } else {
                QTRY_COMPARE(focused(), txt(w, box));
                // Nor can a click on "&Save" take the focus away.
                QTest::mouseClick(cbut(w, 4), Qt::LeftButton);
                QTRY_COMPARE(focused(), txt(w, box));
            }
            // Leaving drops whatever was typed, a new member included.
            QTest::keyClick(focused(), Qt::Key_Escape);
        });
        QCOMPARE(boxes.texts(), message.isEmpty() ? QStringList() : QStringList(2, message));
        QCOMPARE(f->count(u"tloy_mt_member"_s), 3);
        QCOMPARE(f->scalar(u"SELECT COUNT(*) FROM tloy_mt_member WHERE sex IS NOT NULL OR "
                           "downlinecode IS NOT NULL AND MemberCode <> 'B2'"_s),
                 QVariant(0));
        QCOMPARE(logLines(*f), QStringList());
    }

    // Deleting is refused while the member has top-up or transaction rows; other members' rows
    // do not count, and No keeps the member.
    void deleteIsRefusedWhileTheMemberHasRows() {
        db::exec(f->db(), u"INSERT INTO Customize_Topup (cardNo, FValue) VALUES (?,?)"_s,
                 {u"B2"_s, db::bindMoney(Currency::parse(u"5"_s))});
        addTransaction(*f, u"X9"_s, u"2026-11-01 10:00:00"_s, u"IN"_s, "10");
        SessionSettings s = test::sessionOn(*f);
        test::MessageBoxes boxes;
        boxes.queue(QMessageBox::No);
        boxes.queue(QMessageBox::Yes);
        onRegister(s, [&](QWidget* w) {
            cbut(w, 3)->click(); // A1, declined
            QCOMPARE(txt(w, 0)->text(), u"A1"_s);
            cbut(w, 3)->click(); // A1, confirmed
            QCOMPARE(txt(w, 0)->text(), u"B2"_s);
            QCOMPARE(caption(w), u" Total Records : 2"_s);
            cbut(w, 3)->click(); // B2, a top-up row
            QTest::mouseClick(test::child<QWidget>(w, u"Next"_s), Qt::LeftButton);
            QCOMPARE(txt(w, 0)->text(), u"X9"_s);
            cbut(w, 3)->click(); // X9, a transaction row
            w->close();
        });
        const QString asked = u"Confirm to Remove ALICE ?"_s;
        const QString refused = u"Function Rejected !!! Transaction Found !!!"_s;
        QCOMPARE(boxes.texts(), (QStringList{asked, asked, refused, refused}));
        QCOMPARE(f->count(u"tloy_mt_member"_s), 2);
        QCOMPARE(logLines(*f), QStringList{u"Remove Member Code : A1/ALICE"_s});
    }

    void introducerLookupFillsOrEmptiesTheBox_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("expected");
        QTest::newRow("picked") << u"B"_s << int(Qt::Key_Return) << u"B2"_s;
        QTest::newRow("abandoned with escape") << u"B"_s << int(Qt::Key_Escape) << QString();
        QTest::newRow("quote typed") << u"O'"_s << int(Qt::Key_Return) << u"O'N1"_s;
    }
    void introducerLookupFillsOrEmptiesTheBox() {
        QFETCH(QString, typed);
        QFETCH(int, key);
        QFETCH(QString, expected);
        f->addMember(u"B3"_s, u"BETTY"_s, {}, true);
        f->addMember(u"O'N1"_s, u"O'NEIL"_s);
        SessionSettings s = test::sessionOn(*f);
        test::MessageBoxes boxes;
        QStringList offered;
        onRegister(s, [&](QWidget* w) {
            test::OnModal lookup(u"SEAFORM"_s, [&](QWidget* grid) {
                auto* view = test::child<QTableView>(grid, u"DataGrid1"_s);
                for (int row = 0; row < view->model()->rowCount(); ++row)
                    offered.append(view->model()->index(row, 0).data().toString());
                QTest::keyClick(view, Qt::Key(key));
            });
            test::focusOn(txt(w, 12));
            QTest::keyClicks(txt(w, 12), typed);
            QTest::keyClick(txt(w, 12), Qt::Key_Down);
            QVERIFY(lookup.ran());
            QCOMPARE(txt(w, 12)->text(), expected);
            QTRY_COMPARE(focused(), txt(w, 12));
            w->close();
        });
        // Active members other than the one on screen whose code starts with what was typed.
        QCOMPARE(offered, QStringList{expected.isEmpty() ? u"B2"_s : expected});
        QCOMPARE(boxes.texts(), QStringList());
    }

    // Search narrows the register to the member picked, and shows all again when none is;
    // the history grid follows the member on screen.
    void searchAndHistoryFollowTheMemberOnScreen() {
        addTransaction(*f, u"A1"_s, u"2026-11-02 09:15:00"_s, u"OUT"_s, "-3");
        addTransaction(*f, u"A1"_s, u"2026-11-01 10:00:00"_s, u"IN"_s, "12.5");
        addTransaction(*f, u"A1"_s, u"2026-11-03 08:00:00"_s, u"PED"_s, "0");
        SessionSettings s = test::sessionOn(*f);
        QStringList rows;
        onRegister(s, [&](QWidget* w) {
            auto* grid = test::child<QTableView>(w, u"HData"_s);
            const auto history = [grid] {
                auto* money = qobject_cast<QStyledItemDelegate*>(grid->itemDelegateForColumn(3));
                QStringList out;
                for (int row = 0; row < grid->model()->rowCount(); ++row)
                    out.append(
                        grid->model()->index(row, 0).data().toString() + u' ' +
                        money->displayText(grid->model()->index(row, 3).data(), QLocale::c()));
                return out;
            };
            rows = history();
            {
                test::OnModal pick(u"SEAFORM"_s, [](QWidget* lookup) {
                    auto* view = test::child<QTableView>(lookup, u"DataGrid1"_s);
                    view->setCurrentIndex(view->model()->index(1, 0));
                    QTest::keyClick(view, Qt::Key_Return);
                });
                cbut(w, 5)->click();
                QVERIFY(pick.ran());
            }
            QCOMPARE(caption(w), u" Total Records : 1"_s);
            QCOMPARE(txt(w, 0)->text(), u"B2"_s);
            QCOMPARE(txt(w, 12)->text(), u"A1"_s);

            test::OnModal leave(u"SEAFORM"_s, [](QWidget* lookup) { lookup->close(); });
            cbut(w, 5)->click();
            QVERIFY(leave.ran());
            QCOMPARE(caption(w), u" Total Records : 3"_s);
            QCOMPARE(txt(w, 0)->text(), u"A1"_s);
            QTest::mouseClick(test::child<QWidget>(w, u"Next"_s), Qt::LeftButton);
            QCOMPARE(txt(w, 0)->text(), u"B2"_s);
            QCOMPARE(history(), QStringList());
            w->close();
        });
        QCOMPARE(rows, (QStringList{u"IN 12.50"_s, u"OUT -3.00"_s, u"PED 0.00"_s}));
    }
};

QTEST_MAIN(TestRegister)
#include "tst_register.moc"
