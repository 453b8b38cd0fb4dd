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
    QString m_path;

private Q_SLOTS:
    void init() {
        m_path = m_dir.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u".ini"_s);
    }

    void readsLikeTheWindowsFunctions() {
        writeFile(m_path, "; the host's comment\r\n"
                          "[Other]\r\nMemberComm=99\r\n"
                          "  [ generalsetup ]  \r\n"
                          "  memberCOMM  =  10  \r\n"
                          "MemberComm=77\r\n"
                          "Quoted=\"a b\"\r\n"
                          "Empty=\r\n"
                          "Long=" +
                              QByteArray(300, 'x') +
                              "\r\n"
                              "[GeneralSetup]\r\nDownComm=5\r\n");
        const IniFile ini(m_path);
        QCOMPARE(ini.read(u"GeneralSetup"_s, u"MemberComm"_s), u"10"_s); // first key wins
        QCOMPARE(ini.read(u"GENERALSETUP"_s, u"quoted"_s), u"a b"_s);
        QCOMPARE(ini.read(u"GeneralSetup"_s, u"Empty"_s), QString());
        QCOMPARE(ini.read(u"GeneralSetup"_s, u"Long"_s), QString(IniFile::MaxValueLength, u'x'));
        QCOMPARE(ini.read(u"GeneralSetup"_s, u"DownComm"_s), QString()); // only the first section
        QCOMPARE(ini.read(u"Missing"_s, u"MemberComm"_s), QString());
        QCOMPARE(IniFile(m_dir.filePath(u"none.ini"_s)).read(u"A"_s, u"B"_s), QString());
    }

    void writeCreatesFileSectionAndKey() {
        const IniFile ini(m_path);
        QVERIFY(ini.write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s));
        QCOMPARE(readFile(m_path), QByteArray("[TRANSACTION]\r\nReturnFlag=0\r\n"));
        QVERIFY(ini.write(u"TRANSACTION"_s, u"CardNo"_s, u"000123"_s));
        QVERIFY(ini.write(u"Other"_s, u"X"_s, u"1"_s));
        QCOMPARE(
            readFile(m_path),
            QByteArray("[TRANSACTION]\r\nReturnFlag=0\r\nCardNo=000123\r\n[Other]\r\nX=1\r\n"));
        QVERIFY(!IniFile(m_dir.filePath(u"no/such/folder/x.ini"_s)).write(u"S"_s, u"K"_s, u"V"_s));
    }

    void writeLeavesEveryOtherLineAsItWas() {
        const QByteArray before = "; host settings\n"
                                  "[Host]\n"
                                  "Printer = LPT1   \n"
                                  "\n"
                                  "[transaction]\n"
                                  "returnflag = 1\n"
                                  "CardNo=old\n"
                                  "\n"
                                  "[Tail]\n"
                                  "z=9\n";
        writeFile(m_path, before);
        const IniFile ini(m_path);
        QVERIFY(ini.write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s));
        QVERIFY(ini.write(u"TRANSACTION"_s, u"NewValue"_s, u"12.5"_s));
        QCOMPARE(readFile(m_path), QByteArray("; host settings\n"
                                              "[Host]\n"
                                              "Printer = LPT1   \n"
                                              "\n"
                                              "[transaction]\n"
                                              "returnflag=0\n"
                                              "CardNo=old\n"
                                              "NewValue=12.5\n"
                                              "\n"
                                              "[Tail]\n"
                                              "z=9\n"));
        QCOMPARE(ini.read(u"Host"_s, u"printer"_s), u"LPT1"_s);
    }

    void valuesAreWindows1252() {
        const IniFile ini(m_path);
        QVERIFY(ini.write(u"S"_s, u"Name"_s, u"Caf\u00e9 \u20ac"_s));
        QCOMPARE(readFile(m_path), QByteArray("[S]\r\nName=Caf\xe9 \x80\r\n"));
        QCOMPARE(ini.read(u"S"_s, u"Name"_s), u"Caf\u00e9 \u20ac"_s);
    }
};

QTEST_APPLESS_MAIN(TestIniFile)
#include "tst_inifile.moc"
