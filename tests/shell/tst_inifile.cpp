#include "shell/inifile.h"
#include "support/fixtures.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using pondar::IniFile;
using pondar::test::readFile;
using pondar::test::writeFile;

class TestIniFile final : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    // Names match in any case and with blanks around them; the first section and key win;
    // quotes are taken off and values are cut to the longest the host's call returns.
    void readsLikeTheWindowsFunctions() {
        const QString path = m_dir.filePath(u"read.ini"_s);
        writeFile(path, "; comment\r\n[Other]\r\nMemberComm=99\r\n  [ generalsetup ]  \r\n"
                        "  memberCOMM  =  10  \r\nMemberComm=77\r\nQuoted=\"a b\"\r\nLong=" +
                            QByteArray(300, 'x') + "\r\n[GeneralSetup]\r\nDownComm=5\r\n");
        const IniFile ini(path);
        const auto read = [&](const char* key) {
            return ini.read(u"GeneralSetup"_s, QString::fromLatin1(key));
        };
        QCOMPARE(QStringList({read("MemberComm"), read("quoted"), read("DownComm")}),
                 QStringList({u"10"_s, u"a b"_s, QString()}));
        QCOMPARE(read("Long"), QString(IniFile::MaxValueLength, u'x'));
        QCOMPARE(IniFile(m_dir.filePath(u"none.ini"_s)).read(u"A"_s, u"B"_s), QString());
    }

    // A write replaces or adds one key in Windows-1252, in the file's line ending, and leaves every
    // other line as it was; a missing file or section is created.
    void writeChangesOnlyItsKey() {
        const QString path = m_dir.filePath(u"write.ini"_s);
        writeFile(path, "; host\n[Host]\nPrinter = LPT1   \n\n[transaction]\nreturnflag = 1\n"
                        "CardNo=old\n\n[Tail]\nz=9\n");
        const IniFile ini(path);
        QVERIFY(ini.write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s));
        QVERIFY(ini.write(u"TRANSACTION"_s, u"Name"_s, u"Caf\u00e9 \u20ac"_s));
        QVERIFY(ini.write(u"New"_s, u"X"_s, u"1"_s));
        QCOMPARE(readFile(path), QByteArray("; host\n[Host]\nPrinter = LPT1   \n\n[transaction]\n"
                                            "returnflag=0\nCardNo=old\nName=Caf\xe9 \x80\n\n"
                                            "[Tail]\nz=9\n[New]\nX=1\n"));
        QCOMPARE(ini.read(u"transaction"_s, u"name"_s), u"Caf\u00e9 \u20ac"_s);

        const QString fresh = m_dir.filePath(u"fresh.ini"_s);
        QVERIFY(IniFile(fresh).write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s));
        QCOMPARE(readFile(fresh), QByteArray("[TRANSACTION]\r\nReturnFlag=0\r\n"));
        QVERIFY(!IniFile(m_dir.filePath(u"no/such/folder/x.ini"_s)).write(u"S"_s, u"K"_s, u"V"_s));
    }
};

QTEST_APPLESS_MAIN(TestIniFile)
#include "tst_inifile.moc"
