// Many tills against one database server: each till process runs its own cards through the
// Save while the others do the same, and a member's introducer is shared by all of them.
// Afterwards nothing is lost, doubled or paid twice. The server dropping a till's connection in
// the middle of a Save leaves the Save in the journal, posted once after the reconnect.
#include "transactions/till.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSqlError>
#include <QTest>
#include <QTextStream>
#include <QUuid>

#include <array>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using Status = SaveOutcome::Status;

namespace {

const int Tills = 6;
const int CardsPerTill = 3;
const int Rounds = 6;
const QString Introducer = u"INTRO"_s;
const QDateTime Start(QDate(2026, 11, 15), QTime(8, 0, 0));

QString cardCode(int till, int card) {
    return u"T%1C%2"_s.arg(till).arg(card);
}

// One till process: "--till N HOST DBNAME" on the cluster's socket folder HOST. Its cards
// (and, for till 0, the introducer's card) are topped up and drawn from in turn; it prints
// "CARD code value" for each card at the end and "POSTED n", and fails at any Save not posted.
int runTill(int till, const QString& host, const QString& database) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, u"till"_s);
    db.setHostName(host);
    db.setDatabaseName(database);
    db.setUserName(u"pondar"_s);
    if (!db.open()) {
        qCritical("till %d: %s", till, qPrintable(db.lastError().text()));
        return 2;
    }
    QTemporaryDir folder;
    test::writeFile(folder.filePath(u"pondar.ini"_s), test::RatesIni);
    test::CardSim sim;
    test::RecordingPrompts prompts;
    QDateTime moment = Start;
    SessionSettings s = test::tillSession(db, folder.filePath(u"pondar.ini"_s));
    s.OutletCode = u"OUT%1"_s.arg(till);
    s.TrsNo = u"T%1"_s.arg(till);
    s.BillNo = u"B%1"_s.arg(till);
    s.clock = [&moment] { return moment; };
    sim.attach(s);

    QStringList codes;
    for (int c = 0; c < CardsPerTill; ++c)
        codes << cardCode(till, c);
    if (till == 0)
        codes << Introducer;
    QList<QByteArray> images;
    for (int c = 0; c < codes.size(); ++c) {
        test::issueCard(sim, codes.at(c), codes.at(c), u"100"_s,
                        {card::uint8(0x10 + till), card::uint8(c), 0x33, 0x44});
        db::exec(db,
                 u"INSERT INTO Customize_Transaction (CardNo,Billtype,NewValue,RefTrsNo) "
                 "VALUES (?,'AIN',100,'OPENING')"_s,
                 {codes.at(c)});
        images << sim.image();
    }

    int posted = 0;
    for (int round = 0; round < Rounds; ++round) {
        for (int c = 0; c < codes.size(); ++c) {
            sim.put(images.at(c));
            // Each Save of a card at a second of its own, so its reference is its own too.
            moment = Start.addSecs(round * 60 + c);
            TransactionBoxes boxes;
            ConnectedCard connected;
            if (!test::connectCard(s, boxes, connected)) {
                qCritical("till %d: cannot read card %s", till, qPrintable(codes.at(c)));
                return 3;
            }
            const bool topUp = round % 2 == 0 || codes.at(c) == Introducer;
            (topUp ? boxes.topUp : boxes.withdraw) = topUp ? u"10"_s : u"3"_s;
            const SaveOutcome out =
                TransactionSave(s, prompts)
                    .save(topUp ? TransactionMode::TopUp : TransactionMode::Withdraw, boxes,
                          connected);
            if (out.status != Status::Posted) {
                qCritical("till %d: card %s not posted: %s", till, qPrintable(codes.at(c)),
                          qPrintable(out.message));
                return 4;
            }
            ++posted;
            images[c] = sim.image();
        }
    }
    QTextStream out(stdout);
    for (int c = 0; c < codes.size(); ++c) {
        sim.put(images.at(c));
        TransactionBoxes boxes;
        ConnectedCard connected;
        if (!test::connectCard(s, boxes, connected))
            return 5;
        out << "CARD " << codes.at(c) << ' ' << Currency::parse(boxes.balance).toShortString()
            << '\n';
    }
    out << "POSTED " << posted << '\n';
    return 0;
}

Currency ledger(const test::Fixture& f, const QString& code) {
    return ledgerBalance(f.db(), code).balance;
}

} // namespace

class TestTills final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void manyTillsOneServer() {
        if (!test::Fixture::overPostgreSql())
            QSKIP("Many tills at once need a database server: this runs on PostgreSQL only.");
        test::Fixture f;
        f.addStaff(u"S01"_s, u"Sam"_s);
        f.addMember(Introducer, u"Ida"_s);
        for (int t = 0; t < Tills; ++t)
            for (int c = 0; c < CardsPerTill; ++c)
                f.addMember(cardCode(t, c), cardCode(t, c), Introducer);
        const QString options = f.postgreSqlOptions();
        const QString host = options.section(u' ', 0, 0).mid(5);
        const QString database = options.section(u' ', 1, 1).mid(7);

        std::array<QProcess, Tills> tills;
        for (int t = 0; t < Tills; ++t) {
            tills[t].setProcessChannelMode(QProcess::ForwardedErrorChannel);
            tills[t].start(QCoreApplication::applicationFilePath(),
                           {u"--till"_s, QString::number(t), host, database});
        }
        QMap<QString, Currency> cards;
        int posted = 0;
        for (int t = 0; t < Tills; ++t) {
            QVERIFY(tills[t].waitForFinished(240000));
            QCOMPARE(tills[t].exitCode(), 0);
            const QStringList lines =
                QString::fromUtf8(tills[t].readAllStandardOutput()).split(u'\n');
            for (const QString& line : lines) {
                const QStringList w = line.split(u' ');
                if (w.value(0) == u"CARD"_s)
                    cards.insert(w.value(1), Currency::parse(w.value(2)));
                else if (w.value(0) == u"POSTED"_s)
                    posted += w.value(1).toInt();
            }
        }
        QCOMPARE(cards.size(), Tills * CardsPerTill + 1);
        QCOMPARE(posted, (Tills * CardsPerTill + 1) * Rounds);

        // Every card holds its ledger balance; every Save is one line, none twice.
        for (auto it = cards.cbegin(); it != cards.cend(); ++it)
            QVERIFY2(ledger(f, it.key()) == it.value(), qPrintable(it.key()));
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Transaction "
                          "WHERE Billtype IN ('IN','OUT')"_s)
                     .toInt(),
                 posted);
        QCOMPARE(f.rows(u"SELECT RefTrsNo FROM Customize_Transaction WHERE Billtype<>'PED' "
                        "GROUP BY RefTrsNo HAVING COUNT(*) > 1"_s),
                 u"OPENING"_s);
        QCOMPARE(f.rows(u"SELECT RefTrsNo FROM Customize_Transaction WHERE Billtype='PED' "
                        "GROUP BY RefTrsNo HAVING COUNT(*) > 1"_s),
                 QString());

        // One credit per top-up of a member; each settled one inside exactly one "PED" line of
        // the introducer, the one whose reference carries the moment it was settled at.
        const int memberTopUps = Tills * CardsPerTill * ((Rounds + 1) / 2);
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Topup WHERE cardNo=?"_s, {u"intro"_s})
                     .toInt(),
                 memberTopUps);
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Topup WHERE cardNo=? "
                          "AND UpdateStatus=1 AND DateUpdate IS NULL"_s,
                          {Introducer})
                     .toInt(),
                 0);
        auto peds = db::exec(f.db(),
                             u"SELECT RefTrsNo, PValue FROM Customize_Transaction "
                             "WHERE CardNo=? AND Billtype='PED'"_s,
                             {Introducer});
        QList<std::pair<QDateTime, Currency>> lines;
        while (peds.next())
            lines.append(
                {QDateTime::fromString(peds.value(0).toString().left(14), u"ddMMyyyyHHmmss"_s),
                 db::readMoney(peds.value(1))});
        QVERIFY(!lines.isEmpty());
        int settledInLines = 0;
        for (const auto& [settledAt, value] : lines) {
            QCOMPARE(db::readMoney(f.scalar(u"SELECT SUM(FValue) FROM Customize_Topup "
                                            "WHERE cardNo=? AND UpdateStatus=1 AND DateUpdate=?"_s,
                                            {Introducer, settledAt})),
                     value);
            settledInLines += f.scalar(u"SELECT COUNT(*) FROM Customize_Topup WHERE cardNo=? "
                                       "AND UpdateStatus=1 AND DateUpdate=?"_s,
                                       {Introducer, settledAt})
                                  .toInt();
        }
        QCOMPARE(f.scalar(u"SELECT COUNT(*) FROM Customize_Topup WHERE cardNo=? "
                          "AND UpdateStatus=1"_s,
                          {Introducer})
                     .toInt(),
                 settledInLines);
    }

    // The server ends the till's connection after the card write: the card keeps its value,
    // the operator is told, and after the reconnect the journal posts the Save exactly once.
    void connectionKilledMidSave() {
        if (!test::Fixture::overPostgreSql())
            QSKIP("Only a database server can drop a till's connection.");
        test::SaveTill till;
        till.f.addMember(u"000045"_s, u"Ida"_s);
        till.maxWithPending(u"000045"_s);
        till.connect();
        till.boxes.topUp = u"50"_s;
        const QString pid = till.f.scalar(u"SELECT pg_backend_pid()"_s).toString();
        QSqlDatabase killer = till.f.openAnother(u"killer"_s);
        TransactionSave service(till.s, till.prompts);
        service.faultAt = [&](TransactionSave::Step step) {
            if (step == TransactionSave::Step::CardWritten)
                db::exec(killer, u"SELECT pg_terminate_backend(?)"_s, {pid.toInt()});
        };
        const SaveOutcome out = service.save(TransactionMode::TopUp, till.boxes, till.connected);
        QCOMPARE(out.status, Status::Unposted);
        QVERIFY2(out.message.contains(u"75.00"_s), qPrintable(out.message));
        QCOMPARE(till.cardValue(), u"75"_s);
        QCOMPARE(till.handOff(u"Posted"_s), u"0"_s);
        killer.close();
        killer = {};
        QSqlDatabase::removeDatabase(u"killer"_s);

        // The host reconnects; the journal posts the Save once, however often it is replayed.
        QSqlDatabase db = till.f.db();
        db.close();
        QVERIFY(db.open());
        QCOMPARE(replayJournal(till.s).size(), 1);
        QCOMPARE(replayJournal(till.s).size(), 0);
        QCOMPARE(ledger(till.f, u"000123"_s), Currency::parse(u"75"_s));
        QCOMPARE(till.f.rows(u"SELECT Billtype,PValue FROM Customize_Transaction "
                             "WHERE RefTrsNo<>'OPENING' ORDER BY Billtype"_s),
                 u"IN|50\nPED|5"_s);
    }

    // A login with only the grants the README lists: no right to create, yet StartApp's table
    // check finds what the DBA made and creates nothing, and a Save, the member register's
    // writes and the report grids run.
    void leastPrivilegedLogin() {
        if (!test::Fixture::overPostgreSql())
            QSKIP("Logins and grants are a server's: this runs on PostgreSQL only.");
        test::SaveTill till;
        till.f.addMember(u"000045"_s, u"Ida"_s);
        till.maxWithPending(u"000045"_s);
        const QString role = u"till_"_s + QUuid::createUuid().toString(QUuid::Id128);
        const QString database = till.f.postgreSqlOptions().section(u' ', 1, 1).mid(7);
        for (const QString& grant :
             QStringList{u"CREATE ROLE "_s + role + u" LOGIN"_s,
                         u"REVOKE CREATE ON SCHEMA public FROM PUBLIC"_s,
                         u"REVOKE CREATE ON DATABASE "_s + database + u" FROM PUBLIC"_s,
                         u"GRANT USAGE ON SCHEMA public TO "_s + role,
                         u"GRANT SELECT ON tpay_mt_staff TO "_s + role,
                         u"GRANT SELECT, INSERT, UPDATE, DELETE ON tloy_mt_member TO "_s + role,
                         u"GRANT SELECT, INSERT, UPDATE ON Customize_Transaction, Customize_Topup, "
                         "Customize_StaffComm, Customize_Log, Customize_Card TO "_s +
                             role})
            db::exec(till.f.db(), grant);
        {
            QSqlDatabase login = till.f.openAnother(u"login"_s, role);
            QVERIFY_THROWS_EXCEPTION(db::DatabaseError,
                                     db::exec(login, u"CREATE TABLE probe (x int)"_s));
            db::ensureSchema(login);
            till.s.Conn = login;
            till.connect();
            till.boxes.topUp = u"50"_s;
            QCOMPARE(till.save(TransactionMode::TopUp).status, Status::Posted);
            db::exec(login, u"UPDATE tloy_mt_member SET MemberName='Maxi' WHERE MemberCode=?"_s,
                     {u"000123"_s});
            QVERIFY(db::hasRow(login, u"SELECT MemberCode as [CardNo] FROM tloy_mt_member "
                                      "WHERE MemberName='Maxi'"_s));
            till.s.Conn = till.f.db();
            login.close();
        }
        QSqlDatabase::removeDatabase(u"login"_s);
        QCOMPARE(ledger(till.f, u"000123"_s), Currency::parse(u"75"_s));
        db::exec(till.f.db(), u"DROP OWNED BY "_s + role);
        db::exec(till.f.db(), u"DROP ROLE "_s + role);
    }
};

int main(int argc, char** argv) {
    if (argc == 5 && qstrcmp(argv[1], "--till") == 0) {
        QCoreApplication app(argc, argv);
        return runTill(QString::fromLocal8Bit(argv[2]).toInt(), QString::fromLocal8Bit(argv[3]),
                       QString::fromLocal8Bit(argv[4]));
    }
    QCoreApplication app(argc, argv);
    TestTills tests;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&tests, argc, argv);
}

#include "tst_tills.moc"
