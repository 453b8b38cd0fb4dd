#include <pondar/genclass.h>

#include "shell/inifile.h"
#include "shell/session.h"
#include "support/fixtures.h"

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

class TestStartApp final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Any mode keeps the particulars, reads the settings and clears ReturnFlag; these open nothing.
    void copiesParticularsAndLoadsSettings_data() {
        QTest::addColumn<QString>("mode");
        for (const char* m : {"no such mode", "topup", " TOPUP", ""})
            QTest::newRow(m) << QString::fromLatin1(m);
    }
    void copiesParticularsAndLoadsSettings() {
        QFETCH(QString, mode);
        test::Fixture f;
        test::writeFile(f.iniPath(),
                        "[GeneralSetup]\r\nMemberComm=10\r\nDownComm=2.5%\r\nServerComm=1.23456\r\n"
                        "[TRANSACTION]\r\nReturnFlag=1\r\nCardNo=keep\r\n");
        GenClass app;
        QVERIFY(!app.StartApp(u"S01"_s, u"conn"_s, u"15/11/2026"_s, f.printerPath(), u"OUT1"_s,
                              f.iniPath(), f.db(), mode, u"T9"_s, u"B7"_s,
                              Currency::parse(u"12.345"_s)));
        const SessionSettings& s = app.session();
        QCOMPARE((QStringList{s.StaffCode, s.ConnString, s.BzDate, s.OutletCode, s.TrsNo, s.BillNo,
                              s.AppValue.toShortString()}),
                 (QStringList{u"S01"_s, u"conn"_s, u"15/11/2026"_s, u"OUT1"_s, u"T9"_s, u"B7"_s,
                              u"12.345"_s}));
        QCOMPARE(QString::number(s.MemberComm) + u' ' + QString::number(s.DownComm) + u' ' +
                     s.ServerComm.toShortString(),
                 u"10 2.5 1.2346"_s);
        const IniFile file(f.iniPath());
        QCOMPARE(file.read(u"TRANSACTION"_s, u"ReturnFlag"_s) + u' ' +
                     file.read(u"TRANSACTION"_s, u"CardNo"_s),
                 u"0 keep"_s);
    }

    // What would post wrong amounts or dates stops StartApp; the hand-off is still reset.
    void refusesBadSettings_data() {
        QTest::addColumn<QByteArray>("rates");
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("named"); // empty: StartApp runs
        const auto row = [](const char* name, const char* rates, const char* date,
                            const char* named) {
            QTest::newRow(name) << QByteArray(rates) << QString::fromLatin1(date)
                                << QString::fromLatin1(named);
        };
        const char* fine = "MemberComm=10\r\nDownComm=5\r\nServerComm=2\r\n";
        row("negative rate", "MemberComm=-50\r\n", "15/11/2026", "MemberComm");
        row("rate 1e400", "DownComm=1e400\r\n", "15/11/2026", "DownComm");
        row("ServerComm past money range", "ServerComm=1e20\r\n", "15/11/2026", "ServerComm");
        row("rate abc reads 0", "ServerComm=abc\r\n", "15/11/2026", "");
        for (const char* date : {"31/02/2026", "99/99/9999", "2026-13-45"})
            row(date, fine, date, date);
        row("empty date", fine, "", "Business date");
        row("29/02/2028", fine, "29/02/2028", "");
        row("2026-11-23", fine, "2026-11-23", "");
    }
    void refusesBadSettings() {
        QFETCH(QByteArray, rates);
        QFETCH(QString, date);
        QFETCH(QString, named);
        test::Fixture f;
        test::writeFile(f.iniPath(), "[TRANSACTION]\r\nReturnFlag=1\r\n[GeneralSetup]\r\n" + rates);
        GenClass app;
        QString error;
        try {
            app.StartApp(u"S01"_s, {}, date, f.printerPath(), u"OUT1"_s, f.iniPath(), f.db(),
                         u"none"_s, {}, {}, Currency());
        } catch (const Error& e) {
            error = e.message();
        }
        if (named.isEmpty())
            QCOMPARE(error, QString());
        else
            QVERIFY2(error.contains(named), qPrintable(error));
        QCOMPARE(IniFile(f.iniPath()).read(u"TRANSACTION"_s, u"ReturnFlag"_s), u"0"_s);
    }

    // Without a hand-off the host would take the previous sale's amounts for this one.
    void unusableFileOrDatabaseIsRaised() {
        test::Fixture f;
        const QSqlDatabase closed = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"never-opened"_s);
        QVERIFY_THROWS_EXCEPTION(Error, GenClass().StartApp(u"S"_s, {}, u"15/11/2026"_s, {}, {},
                                                            f.iniPath(), closed, u"MEMBER"_s, {},
                                                            {}, Currency()));
        test::writeFile(f.iniPath(), "[TRANSACTION]\r\nReturnFlag=1\r\n");
        QFile::setPermissions(f.iniPath(), QFile::ReadOwner);
        QVERIFY_THROWS_EXCEPTION(Error, GenClass().StartApp(u"S"_s, {}, u"15/11/2026"_s, {}, {},
                                                            f.iniPath(), f.db(), u"MEMBER"_s, {},
                                                            {}, Currency()));
    }
};

QTEST_MAIN(TestStartApp)
#include "tst_startapp.moc"
