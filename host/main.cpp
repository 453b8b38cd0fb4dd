#include "cardtray.h"
#include "hostwindow.h"

#include "card/membercard.h"
#include "card/reader.h"
#include "card/simfolder.h"
#include "shell/database.h"
#include "shell/session.h"

#include <pondar/error.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSqlError>
#include <QStandardPaths>
#include <QTimer>

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

// --help is answered before the GUI application exists, so it works without a display.
bool asksForHelp(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg(argv[i]);
        if (arg == "-h" || arg == "--help" || arg == "-?" || arg == "--help-all")
            return true;
    }
    return false;
}

// Pictures a component screen as a person sees it: opens it from the host window's button,
// lets it read the demo card on the reader, saves the window to a PNG and closes the screen.
int screenshotOfScreen(HostWindow& window, const QString& screen, const QString& file) {
    bool saved = false;
    int ticks = 0;
    QTimer poll;
    poll.setInterval(50);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal)
            return;
        const QString name = modal->objectName();
        if (name == u"MFCOMM"_s) {
            modal->findChild<QLineEdit*>(u"TXT"_s)->setText(u"S001"_s);
            modal->findChild<QPushButton*>(u"CSAVE"_s)->click();
        } else if (name == u"MFMAIN"_s && screen == u"balance"_s) {
            // The enquiry that gives the component its connection before the display opens.
            modal->findChild<QPushButton*>(u"CBUT(0)"_s)->click();
        } else if (name == u"MFMAIN"_s) {
            poll.stop();
            modal->findChild<QPushButton*>(u"CBUT(2)"_s)->click();
            QApplication::processEvents();
            saved = modal->grab().save(file);
            modal->findChild<QPushButton*>(u"CBUT(0)"_s)->click();
        } else if (name == u"MFBAL"_s) {
            if (++ticks < 30) // a second and a half: the display has read the card
                return;
            poll.stop();
            saved = modal->grab().save(file);
            static_cast<QDialog*>(modal)->done(QDialog::Accepted);
        } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            qWarning("%s", qPrintable(box->text()));
            box->done(QMessageBox::No);
        }
    });
    poll.start();
    QTimer::singleShot(0, &window, [&] {
        if (screen == u"balance"_s) {
            window.findChild<QPushButton*>(u"start-ENQUIRY"_s)->click();
            window.findChild<QPushButton*>(u"ShowEnquiry"_s)->click();
        } else {
            window.findChild<QPushButton*>(u"start-TOPUP"_s)->click();
        }
        QApplication::quit();
    });
    QApplication::exec();
    return saved ? 0 : 1;
}

// Puts the card of a demo member on the simulated reader.
void putOnReader(const QString& simDir, const QString& code) {
    pondar::card::SimFolder folder(simDir);
    for (const pondar::card::SimFolder::Card& card : folder.tray()) {
        if (card.code == code) {
            folder.put(card.file);
            return;
        }
    }
}

void addOptions(QCommandLineParser& parser) {
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
    parser.addOption(QCommandLineOption(
        u"screen"_s,
        u"With --screenshot: picture host (the host window, the default), transaction (a "
        "top-up screen reading the first demo card) or balance (the balance display)."_s,
        u"screen"_s, u"host"_s));
}

} // namespace

int main(int argc, char** argv) {
    if (asksForHelp(argc, argv)) {
        QCoreApplication core(argc, argv);
        QCoreApplication::setApplicationName(u"pondar-host"_s);
        QCommandLineParser parser;
        addOptions(parser);
        parser.process(core); // prints the help and exits
        return 0;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"pondar-host"_s);

    QCommandLineParser parser;
    addOptions(parser);
    parser.process(app);
    const auto option = [&](const char* name) { return parser.value(QString::fromLatin1(name)); };
    const auto isSet = [&](const char* name) { return parser.isSet(QString::fromLatin1(name)); };

    if (isSet("reader")) {
        const QString reader = option("reader");
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

    if (isSet("tray")) {
        CardTray tray(QDir(option("tray")).absolutePath());
        tray.setWindowTitle(u"Pondar card tray"_s);
        tray.resize(520, 360);
        tray.show();
        return QApplication::exec();
    }

    const DemoData data(QDir(option("data")).absolutePath());
    QDir().mkpath(data.folder);
    const bool odbc = isSet("odbc");
    QSqlDatabase db;
    if (isSet("pgsql")) {
        db = QSqlDatabase::addDatabase(u"QPSQL"_s, u"host"_s);
        if (const QString error = pondar::db::setPostgreSqlConnection(db, option("pgsql"));
            !error.isEmpty()) {
            QMessageBox::critical(nullptr, u"Pondar demo host"_s, error);
            return 1;
        }
    } else {
        db = QSqlDatabase::addDatabase(odbc ? u"QODBC"_s : u"QSQLITE"_s, u"host"_s);
        db.setDatabaseName(odbc ? option("odbc") : data.database);
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
    if (isSet("screenshot")) {
        const QString screen = option("screen");
        if (screen == u"host"_s) {
            QApplication::processEvents();
            return window.grab().save(option("screenshot")) ? 0 : 1;
        }
        if (!simDir.isEmpty())
            putOnReader(simDir, u"000001"_s);
        return screenshotOfScreen(window, screen, option("screenshot"));
    }
    return QApplication::exec();
}
