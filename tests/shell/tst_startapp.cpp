#include <pondar/genclass.h>

#include "shell/inifile.h"
#include "shell/session.h"
#include "support/fixtures.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;

namespace {

bool start(GenClass& app, const test::Fixture& f, const QString& mode,
           const QString& amount = u"50"_s) {
    return app.StartApp(u"S01"_s, u"conn"_s, u"15/11/2026"_s, f.printerPath(), u"OUT1"_s,
                        f.iniPath(), f.db(), mode, u"T9"_s, u"B7"_s, Currency::parse(amount));
}

} // namespace

class TestStartApp final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void copiesParticularsAndLoadsSettings() {
        test::Fixture f;
        test::writeFile(f.iniPath(),
                        "[GeneralSetup]\r\nMemberComm=10\r\nDownComm=2.5%\r\nServerComm=1.23456\r\n"
                        "[TRANSACTION]\r\nReturnFlag=1\r\nCardNo=keep\r\n");
        GenClass app;
        app.session().ReaderPort = 4;
        QVERIFY(!start(app, f, u"no such mode"_s, u"12.345"_s));
        const SessionSettings& s = app.session();
        QCOMPARE((QStringList{s.StaffCode, s.ConnString, s.BzDate, s.Printer, s.OutletCode,
                              s.IniPath, s.TrsNo, s.BillNo, s.AppValue.toShortString()}),
                 (QStringList{u"S01"_s, u"conn"_s, u"15/11/2026"_s, f.printerPath(), u"OUT1"_s,
                              f.iniPath(), u"T9"_s, u"B7"_s, u"12.345"_s}));
        QCOMPARE(s.ReaderPort, 1);
        QCOMPARE(s.MemberComm, 10.0);
        QCOMPARE(s.DownComm, 2.5);
        QCOMPARE(s.ServerComm.toShortString(), u"1.2346"_s);
        QVERIFY(!s.TransactionOk);
        QCOMPARE(s.Conn.connectionName(), f.db().connectionName());
        const IniFile file(f.iniPath());
        QCOMPARE(file.read(u"TRANSACTION"_s, u"ReturnFlag"_s), u"0"_s);
        QCOMPARE(file.read(u"TRANSACTION"_s, u"CardNo"_s), u"keep"_s);
    }

    void missingSettingsFileReadsAsZero() {
        test::Fixture f;
        GenClass app;
        QVERIFY(!start(app, f, u"LOG-NOT"_s));
        QCOMPARE(app.session().MemberComm, 0.0);
        QCOMPARE(app.session().ServerComm, Currency());
        QCOMPARE(IniFile(f.iniPath()).read(u"TRANSACTION"_s, u"ReturnFlag"_s), u"0"_s);
    }

    void modesAreCaseSensitive_data() {
        QTest::addColumn<QString>("mode");
        for (const char* m : {"topup", "Withdraw", "mainmenu", "", " TOPUP"})
            QTest::newRow(m) << QString::fromLatin1(m);
    }
    void modesAreCaseSensitive() {
        QFETCH(QString, mode);
        test::Fixture f;
        GenClass app;
        app.session().TransactionMode = u"unchanged"_s;
        QVERIFY(!start(app, f, mode));
        QCOMPARE(app.session().TransactionMode, u"unchanged"_s);
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
