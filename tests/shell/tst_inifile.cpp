#include "shell/inifile.h"
#include "support/fixtures.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using pondar::IniFile;
using pondar::test::readFile;
using pondar::test::writeFile;

namespace {

constexpr int PerWriter = 150;

// Run as a second process by the concurrency test: writes keys PREFIX0..PREFIX149 one by one.
int runWriter(const QString& path, const QString& prefix) {
    const IniFile ini(path);
    for (int i = 0; i < PerWriter; ++i) {
        if (!ini.write(u"Keys"_s, prefix + QString::number(i), QString::number(i)))
            return 1;
    }
    return 0;
}

} // namespace

class TestIniFile final : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    // Names match in any case with blanks and tabs around them; the first section and key win.
    void reads_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("key"); // in section [S]
        QTest::addColumn<QString>("value");
        const auto row = [](const char* name, const QByteArray& file, const QString& key,
                            const QString& value) { QTest::newRow(name) << file << key << value; };
        const QByteArray windows = "; c\r\n[Other]\r\nK=99\r\n  [ s ]  \r\n \t kEY \t=\t 10 \t\r\n"
                                   "K=77\r\nQ=\"a b\"\r\n[S]\r\nL=5\r\n";
        row("names in any case", windows, u"key"_s, u"10"_s);
        row("quotes taken off", windows, u"q"_s, u"a b"_s);
        row("first section wins", windows, u"L"_s, {});
        row("long value cut", "[S]\nK=" + QByteArray(300, 'x'), u"K"_s,
            QString(IniFile::MaxValueLength, u'x'));
        row("comments, indented or not", "[S]\r\n;K=x\r\n  ;K=y\r\n", u";K"_s, {});
        row("lone CR ends a line", "[S]\rA=1\rK=2\r", u"K"_s, u"2"_s);
        row("tab inside a name kept", "[S]\nK\tX=1\n", u"K\tX"_s, u"1"_s);
        row("vertical tab not stripped", "[S]\n\vK=1\n", u"K"_s, {});
        row("UTF-8 byte-order mark", "\xEF\xBB\xBF[S]\r\nK=Caf\xC3\xA9\r\n", u"K"_s,
            u"Caf\u00e9"_s);
        row("Windows-1252", "[S]\r\nK=Caf\xE9 \x80\r\n", u"K"_s, u"Caf\u00e9 \u20ac"_s);
    }
    void reads() {
        QFETCH(QByteArray, file);
        QFETCH(QString, key);
        const QString path = m_dir.filePath(u"read.ini"_s);
        writeFile(path, file);
        QTEST(IniFile(path).read(u"S"_s, key), "value");
    }

    // A write changes or adds its one key and leaves every other byte as it was.
    void writes_data() {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("key"); // in section [S]
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");
        const auto row = [](const char* name, const QByteArray& before, const QString& key,
                            const QString& value, const QByteArray& after) {
            QTest::newRow(name) << before << key << value << after;
        };
        row("replaced, spelling kept", "[s]\r\n  kEY  =  1  \r\nZ=0\r\n", u"Key"_s, u"2"_s,
            "[s]\r\nkEY=2\r\nZ=0\r\n");
        row("after the last key", "[S]\r\nA=1\r\n; note\r\n\r\n[T]\r\nB=1\r\n", u"B"_s, u"2"_s,
            "[S]\r\nA=1\r\nB=2\r\n; note\r\n\r\n[T]\r\nB=1\r\n");
        row("section without keys", "[S]\n;K=x\n\n", u"K"_s, u"1"_s, "[S]\nK=1\n;K=x\n\n");
        row("CR only", "[S]\rA=1\r", u"B"_s, u"2"_s, "[S]\rA=1\rB=2\r");
        row("no last line end", "[S]\r\nA=1", u"B"_s, u"2"_s, "[S]\r\nA=1\r\nB=2\r\n");
        row("new section", "[T]\nA=1", u"B"_s, u"2"_s, "[T]\nA=1\n[S]\nB=2\n");
        row("new file", {}, u"B"_s, u"2"_s, "[S]\r\nB=2\r\n");
        row("controls dropped", "[S]\r\n", u"Name"_s, u"A\r\nWriteValue=9\x1b\x70\x1d\x56"_s,
            "[S]\r\nName=AWriteValue=9pV\r\n");
        row("UTF-8 kept", "\xEF\xBB\xBF[S]\r\n", u"N"_s, u"Caf\u00e9"_s,
            "\xEF\xBB\xBF[S]\r\nN=Caf\xC3\xA9\r\n");
        row("Windows-1252", "[S]\r\n", u"N"_s, u"Caf\u00e9 \u20ac"_s, "[S]\r\nN=Caf\xE9 \x80\r\n");
    }
    void writes() {
        QFETCH(QByteArray, before);
        QFETCH(QString, key);
        QFETCH(QString, value);
        const QString path = m_dir.filePath(u"write.ini"_s);
        QFile::remove(path);
        if (!before.isEmpty())
            writeFile(path, before);
        QVERIFY(IniFile(path).write(u"S"_s, key, value));
        QTEST(readFile(path), "after");
    }

    void missingFolderOrReadOnlyFileIsNotWritten() {
        QVERIFY(!IniFile(m_dir.filePath(u"no/such/folder/x.ini"_s)).write(u"S"_s, u"K"_s, u"V"_s));
        const QString path = m_dir.filePath(u"readonly.ini"_s);
        writeFile(path, "[S]\r\nK=1\r\n");
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup));
        QVERIFY(!IniFile(path).write(u"S"_s, u"K"_s, u"2"_s));
        QCOMPARE(readFile(path), QByteArray("[S]\r\nK=1\r\n"));
    }

    // A host reading the file as another user still can after the component wrote it.
    void keepsOwnerGroupAndMode() {
        const QString path = m_dir.filePath(u"shared.ini"_s);
        writeFile(path, "[S]\r\nK=1\r\n");
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0640), 0);
        const bool root = ::geteuid() == 0;
        if (root)
            QCOMPARE(::chown(QFile::encodeName(path).constData(), 65534, 65534), 0);
        struct stat before {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &before), 0);
        QVERIFY(IniFile(path).write(u"S"_s, u"K"_s, u"2"_s));
        struct stat after {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &after), 0);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(after.st_uid, before.st_uid);
        QCOMPARE(after.st_gid, before.st_gid);
        QCOMPARE(IniFile(path).read(u"S"_s, u"K"_s), u"2"_s);

        const QString link = m_dir.filePath(u"link.ini"_s);
        QVERIFY(QFile::link(path, link));
        QVERIFY(IniFile(link).write(u"S"_s, u"K"_s, u"3"_s));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(IniFile(path).read(u"S"_s, u"K"_s), u"3"_s);
    }

    // Two processes writing different keys at once: every key of both survives.
    void concurrentWritersLoseNothing() {
        const QString path = m_dir.filePath(u"concurrent.ini"_s);
        writeFile(path, "[Host]\r\nPrinter=LPT1\r\n");
        QList<QProcess*> writers;
        for (const QString& prefix : {u"A"_s, u"B"_s}) {
            writers.append(new QProcess(this));
            writers.back()->setProcessChannelMode(QProcess::ForwardedChannels);
            writers.back()->start(QCoreApplication::applicationFilePath(),
                                  {u"--writer"_s, path, prefix});
        }
        for (QProcess* p : writers) {
            QVERIFY(p->waitForFinished(120000));
            QCOMPARE(p->exitCode(), 0);
        }
        const IniFile ini(path);
        int found = 0;
        for (const QString& prefix : {u"A"_s, u"B"_s}) {
            for (int i = 0; i < PerWriter; ++i)
                found += ini.read(u"Keys"_s, prefix + QString::number(i)) == QString::number(i);
        }
        QCOMPARE(found, 2 * PerWriter);
        QCOMPARE(ini.read(u"Host"_s, u"Printer"_s), u"LPT1"_s);
    }

    // A 10 MB file of the host's reads and writes whole, its other lines untouched.
    void tenMegabyteFile() {
        const QString path = m_dir.filePath(u"big.ini"_s);
        QByteArray host = "[Host]\r\n";
        for (int i = 0; host.size() < 10 * 1024 * 1024; ++i)
            host += "Key" + QByteArray::number(i) + '=' + QByteArray(60, 'v') + "\r\n";
        writeFile(path, host + "[GeneralSetup]\r\nMemberComm=10\r\n");
        const IniFile ini(path);
        QCOMPARE(ini.read(u"GeneralSetup"_s, u"MemberComm"_s), u"10"_s);
        QVERIFY(ini.write(u"TRANSACTION"_s, u"ReturnFlag"_s, u"0"_s));
        QCOMPARE(readFile(path),
                 host + "[GeneralSetup]\r\nMemberComm=10\r\n[TRANSACTION]\r\nReturnFlag=0\r\n");
    }
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], "--writer") == 0)
        return runWriter(QFile::decodeName(argv[2]), QFile::decodeName(argv[3]));
    TestIniFile test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_inifile.moc"
