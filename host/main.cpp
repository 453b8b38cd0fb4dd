#include "cardtray.h"
#include "hostwindow.h"

#include "card/membercard.h"
#include "card/reader.h"
#include "card/simfolder.h"
#include "shell/session.h"

#include <pondar/error.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QMessageBox>
#include <QSqlError>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

// Answers every card question Yes: the demo issues its first cards without asking anyone.
class Consent final : public pondar::card::CardPrompts {
public:
    bool ask(const QString&) override { return true; }
    void error(const QString& text, const QString&) override { throw pondar::Error(text); }
};

// A new tray holds, besides blank cards, the cards of the first two demo members with a balance
// of 0, so that a top-up can be tried at once; more cards come from the member register.
void stockTray(const QString& simDir, const QStringList& memberCodes,
               const QStringList& memberNames) {
    pondar::card::SimFolder folder(simDir);
    pondar::card::SimFolder::Card onReader;
    if (!folder.tray().isEmpty() || folder.onReader(onReader))
        return;
    folder.stock(3);
    const QList<pondar::card::SimFolder::Card> blanks = folder.tray();
    for (qsizetype i = 0; i < std::min({blanks.size(), memberCodes.size(), qsizetype(2)}); ++i) {
        folder.put(blanks[i].file);
        pondar::SessionSettings session;
        session.Reader = pondar::card::makeSimulatedReader(simDir);
        Consent yes;
        pondar::card::MemberCard card(session, yes);
        const bool issued = card.openSelectLogin(pondar::card::MemberSector) &&
                            card.writeSerial() && card.writeCode(memberCodes[i]) &&
                            card.writeName(memberNames[i]) &&
                            card.confirmAndWriteValue(pondar::BillType::In, {}, {});
        card.close();
        folder.takeOff();
        if (!issued)
            throw pondar::Error(u"Could not issue the demo card of "_s + memberCodes[i]);
    }
}

// Takes libpq's "key=value key=value" form: the keys Qt has fields for go there, any other
// (sslmode=..., connect_timeout=...) into the driver's options. An empty text when usable.
QString usePostgreSql(QSqlDatabase& db, const QString& connection) {
    QStringList options;
    for (const QString& pair : connection.split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype eq = pair.indexOf(u'=');
        if (eq <= 0)
            return u"Cannot read \""_s + pair +
                   u"\" of the PostgreSQL connection: use key=value."_s;
        const QString key = pair.left(eq);
        const QString value = pair.mid(eq + 1);
        if (key == u"host"_s)
            db.setHostName(value);
        else if (key == u"port"_s)
            db.setPort(value.toInt());
        else if (key == u"dbname"_s)
            db.setDatabaseName(value);
        else if (key == u"user"_s)
            db.setUserName(value);
        else if (key == u"password"_s)
            db.setPassword(value);
        else
            options << pair;
    }
    db.setConnectOptions(options.join(u';'));
    return {};
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"pondar-host"_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Demo point-of-sale host for the Pondar membership card component."_s);
    parser.addHelpOption();
    const QCommandLineOption dataOption(
        u"data"_s, u"Folder for the demo database, settings file, cards and printer file."_s,
        u"folder"_s,
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/pondar-demo"_s);
    parser.addOption(dataOption);
    const QCommandLineOption shotOption(
        u"screenshot"_s, u"Save a picture of the window to a PNG file and quit (a smoke test)."_s,
        u"file"_s);
    parser.addOption(shotOption);
    const QCommandLineOption trayOption(
        u"tray"_s, u"Show only the card tray of a simulated reader's folder."_s, u"folder"_s);
    parser.addOption(trayOption);
    const QCommandLineOption odbcOption(
        u"odbc"_s,
        u"Keep the host's tables behind this ODBC connection string (\"DRIVER=...;...\") "
        "instead of the SQLite file in the data folder."_s,
        u"connection"_s);
    parser.addOption(odbcOption);
    const QCommandLineOption pgsqlOption(
        u"pgsql"_s,
        u"Keep the host's tables in this PostgreSQL database (\"host=... dbname=... user=...\", "
        "also port and password) instead of the SQLite file in the data folder."_s,
        u"connection"_s);
    parser.addOption(pgsqlOption);
    const QCommandLineOption readerOption(
        u"reader"_s,
        u"The card reader: sim (simulated cards in the data folder, the default), pcsc (the "
        "first PC/SC reader) or pcsc:NAME (the first PC/SC reader whose name contains NAME)."_s,
        u"reader"_s);
    parser.addOption(readerOption);
    parser.process(app);

    if (parser.isSet(readerOption)) {
        const QString reader = parser.value(readerOption);
        if (reader == u"pcsc"_s || reader.startsWith(u"pcsc:"_s)) {
            qputenv("PONDAR_READER", reader.toLocal8Bit());
        } else if (reader != u"sim"_s) {
            QMessageBox::critical(nullptr, u"Pondar demo host"_s,
                                  u"Unknown reader "_s + reader + u"; use sim or pcsc."_s);
            return 1;
        } else {
            qunsetenv("PONDAR_READER");
        }
    }

    if (parser.isSet(trayOption)) {
        CardTray tray(QDir(parser.value(trayOption)).absolutePath());
        tray.setWindowTitle(u"Pondar card tray"_s);
        tray.resize(520, 360);
        tray.show();
        return QApplication::exec();
    }

    const DemoData data(QDir(parser.value(dataOption)).absolutePath());
    QDir().mkpath(data.folder);
    const bool odbc = parser.isSet(odbcOption);
    QSqlDatabase db;
    if (parser.isSet(pgsqlOption)) {
        db = QSqlDatabase::addDatabase(u"QPSQL"_s, u"host"_s);
        if (const QString error = usePostgreSql(db, parser.value(pgsqlOption)); !error.isEmpty()) {
            QMessageBox::critical(nullptr, u"Pondar demo host"_s, error);
            return 1;
        }
    } else {
        db = QSqlDatabase::addDatabase(odbc ? u"QODBC"_s : u"QSQLITE"_s, u"host"_s);
        db.setDatabaseName(odbc ? parser.value(odbcOption) : data.database);
    }
    if (!db.open()) {
        QMessageBox::critical(nullptr, u"Pondar demo host"_s,
                              u"Cannot open the demo database "_s + db.databaseName() + u"\n\n"_s +
                                  db.lastError().text());
        return 1;
    }
    if (const QString error = data.prepare(db); !error.isEmpty()) {
        QMessageBox::critical(nullptr, u"Pondar demo host"_s, error);
        return 1;
    }

    // The demo runs on simulated cards unless told otherwise; the component reads the same
    // variable, so it has to be set before the first screen opens a reader.
    QString simDir = data.cards;
    const QString reader = qEnvironmentVariable("PONDAR_READER");
    if (reader.isEmpty())
        qputenv("PONDAR_READER", QString(u"sim:"_s + simDir).toLocal8Bit());
    else
        simDir = reader.startsWith(u"sim:"_s) ? QDir(reader.mid(4)).absolutePath() : QString();
    if (!simDir.isEmpty()) {
        try {
            stockTray(simDir, {u"000001"_s, u"000002"_s}, {u"TAN AH KOW"_s, u"SITI AMINAH"_s});
        } catch (const pondar::Error& e) {
            QMessageBox::critical(nullptr, u"Pondar demo host"_s, e.message());
            return 1;
        }
    }

    HostWindow window(data, db, simDir);
    window.show();
    if (parser.isSet(shotOption)) {
        QApplication::processEvents();
        return window.grab().save(parser.value(shotOption)) ? 0 : 1;
    }
    return QApplication::exec();
}
