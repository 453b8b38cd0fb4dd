#include <pondar/genclass.h>

#include "shell/inifile.h"
#include "shell/session.h"
#include "support/fixtures.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

class TestStartApp final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Whatever the mode, StartApp keeps the particulars, reads the settings and clears
    // ReturnFlag; a mode that is not one of the exact upper-case names opens nothing.
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

    void closedConnectionIsRaisedToTheHost() {
        test::Fixture f;
        GenClass app;
        QSqlDatabase closed = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"never-opened"_s);
        QVERIFY_THROWS_EXCEPTION(Error, app.StartApp(u"S"_s, {}, {}, {}, {}, f.iniPath(), closed,
                                                     u"MEMBER"_s, {}, {}, Currency()));
    }
};

QTEST_MAIN(TestStartApp)
#include "tst_startapp.moc"
