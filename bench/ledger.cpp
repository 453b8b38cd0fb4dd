#include "ledger.h"

#include "shell/database.h"
#include "shell/text.h"

#include <pondar/currency.h>

#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <random>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace pondar::bench {

namespace {

// One prepared insert, run once per row.
class Inserter final {
public:
    Inserter(const QSqlDatabase& db, const QString& sql)
        : m_query(db) {
        if (!m_query.prepare(sql))
            throw db::DatabaseError(m_query.lastError().text() + u"\n\n"_s + sql);
    }
    void operator()(const QVariantList& values) {
        for (int i = 0; i < values.size(); ++i)
            m_query.bindValue(i, values.at(i));
        if (!m_query.exec())
            throw db::DatabaseError(m_query.lastError().text());
    }

private:
    QSqlQuery m_query;
};

QVariant money(double value) {
    return db::bindMoney(Currency::fromDouble(value));
}

QString staffOf(int n) {
    return u"S%1"_s.arg(n + 1, 2, 10, QChar(u'0'));
}

} // namespace

QDate firstDay() {
    return {2023, 1, 1};
}

QString cardOf(int n) {
    return u"%1"_s.arg(n + 1, 8, 10, QChar(u'0'));
}

QString nameOf(int n) {
    return u"MEMBER %1"_s.arg(n + 1);
}

QString outletOf(int n) {
    return u"OUT%1"_s.arg(n + 1);
}

QString serialOf(int n) {
    return u"V%1S"_s.arg(0x10000000 + n, 8, 16, QChar(u'0')).toUpper();
}

void generateLedger(const QSqlDatabase& db, const LedgerSize& size,
                    const std::function<void(const QString&)>& progress) {
    auto say = [&](const QString& text) {
        if (progress)
            progress(text);
    };
    std::mt19937 random(20240201);
    auto pick = [&](int below) { return int(random() % unsigned(below)); };

    QSqlDatabase conn = db;
    if (!conn.transaction())
        throw db::DatabaseError(conn.lastError().text());

    say(u"members and staff"_s);
    Inserter member(db, u"INSERT INTO tloy_mt_member (MemberCode,MemberName,downlinecode,"
                        "NonActive) VALUES (?,?,?,?)"_s);
    for (int n = 0; n < size.members; ++n)
        member({cardOf(n), nameOf(n), n > 0 && n % 3 == 0 ? cardOf(pick(n)) : QString(),
                n % 50 == 49 ? 1 : 0});
    Inserter staff(db, u"INSERT INTO tpay_mt_staff (StaffCode,StaffName) VALUES (?,?)"_s);
    for (int n = 0; n < size.staff; ++n)
        staff({staffOf(n), u"STAFF %1"_s.arg(n + 1)});

    say(u"card lines, commission and log"_s);
    Inserter line(db, u"INSERT INTO Customize_Transaction (CardNo,Name,TrsDate,TrsNo,TrsOutlet,"
                      "RefTrsNo,BillNo,Billtype,PValue,PreviousValue,NewValue,PendingValue,"
                      "TopupValue,ExtraValue,Remark) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s);
    Inserter comm(db, u"INSERT INTO Customize_StaffComm (StaffCode,TrsDate,RefTrsNo,CardNo,Name,"
                      "TopupValue,PValue) VALUES (?,?,?,?,?,?,?)"_s);
    Inserter log(db, u"INSERT INTO Customize_Log (StaffCode,BizDate,ActualDate,Description) "
                     "VALUES (?,?,?,?)"_s);
    const int perDay = std::max(1, size.lines / size.days);
    const int sites = std::max(1, size.sites);
    // Each card's balance as its lines move it: a line's previous value is where the card stood.
    std::vector<Currency> balance(std::size_t(size.members));
    auto whole = [](int n) { return Currency::fromUnits(n * Currency::Scale); };
    for (int i = 0; i < size.lines; ++i) {
        const QDate day = firstDay().addDays(std::min(i / perDay, size.days - 1));
        // The day's lines between 08:00 and 22:00, in order.
        const QDateTime moment(day,
                               QTime(8, 0).addSecs(int(qint64(i % perDay) * 14 * 3600 / perDay)));
        const QString trsDate = isoDayStart(day);
        const int m = pick(size.members);
        const QString card = cardOf(m);
        const QString ref = moment.toString(u"ddMMyyyyhhmmss"_s) + u'-' + card + u'-';
        // A fifth of the lines are top-ups of 5 to 50, most are purchases of 0.50 to 5.00.
        const int kind = pick(40);
        const QString staffCode = staffOf(pick(size.staff));
        const QString outlet = outletOf(pick(sites));
        const Currency previous = balance[std::size_t(m)];
        const Currency topUp = whole(5 * (1 + pick(10)));
        QString type;
        Currency value;
        if (kind < 8) {
            type = u"IN"_s;
            value = topUp + topUp.percent(10);
        } else if (kind < 36) {
            // Never more than the card holds.
            type = u"OUT"_s;
            value = -std::min(previous, Currency::fromUnits((1 + pick(10)) * Currency::Scale / 2));
        } else if (kind < 37) {
            type = u"AIN"_s;
            value = whole(5);
        } else if (kind < 38) {
            type = u"AOT"_s;
            value = -std::min(previous, whole(5));
        } else {
            type = u"PED"_s;
            value = topUp.percent(5);
        }
        balance[std::size_t(m)] = previous + value;
        const bool in = type == u"IN"_s;
        line({card, nameOf(m), trsDate, u"T%1"_s.arg(i), outlet, ref,
              type == u"PED"_s ? QVariant() : QVariant(u"B%1"_s.arg(i)), type, db::bindMoney(value),
              db::bindMoney(previous), db::bindMoney(previous + value), money(0),
              in ? db::bindMoney(topUp) : QVariant(),
              in ? db::bindMoney(topUp.percent(10)) : QVariant(), QVariant()});
        if (in)
            comm({staffCode, trsDate, ref, card, nameOf(m), db::bindMoney(topUp),
                  db::bindMoney(topUp.percent(1))});
        log({staffCode, trsDate, isoDateTime(moment),
             QString(u"Writing value :"_s + value.format() + u" to CardNo : "_s + card)});
        if (i % 100000 == 99999)
            say(u"%1 lines"_s.arg(i + 1));
    }

    say(u"pending and settled top-ups"_s);
    Inserter topup(db, u"INSERT INTO Customize_Topup (cardNo,DateInput,DateUpdate,UpdateStatus,"
                       "FValue,TrsNo,RefTrsNo,BillNo) VALUES (?,?,?,?,?,?,?,?)"_s);
    // Pending top-ups wait on a fifth of the cards, a few each; as many are already settled.
    const int waitingCards = std::max(1, size.members / 5);
    for (int i = 0; i < 2 * size.pending; ++i) {
        const bool pending = i % 2 == 0;
        const int m = pending ? pick(waitingCards) : pick(size.members);
        const QDate day = firstDay().addDays(pick(size.days));
        topup({cardOf(m), isoDayStart(day),
               pending ? QVariant() : QVariant(isoDayStart(day.addDays(1))), pending ? 0 : 1,
               money(double(1 + pick(20)) / 2), u"T%1"_s.arg(i), u"P%1"_s.arg(i),
               pick(4) == 0 ? QVariant(u"BILL%1"_s.arg(i)) : QVariant()});
    }

    say(u"registered cards"_s);
    // Every member's card is registered; one in a hundred was blocked and replaced.
    Inserter registered(db, u"INSERT INTO Customize_Card (CardNo,CardSerial,Status,DateIssue,"
                            "DateBlock,StaffCode,Remark) VALUES (?,?,?,?,?,?,?)"_s);
    for (int n = 0; n < size.members; ++n) {
        const QString issued = isoDayStart(firstDay().addDays(pick(size.days)));
        if (n % 100 == 99)
            registered({cardOf(n), serialOf(n + size.members), u"BLOCKED"_s, issued, issued,
                        staffOf(0), u"lost"_s});
        registered(
            {cardOf(n), serialOf(n), u"ACTIVE"_s, issued, QVariant(), staffOf(0), QVariant()});
    }

    if (!conn.commit())
        throw db::DatabaseError(conn.lastError().text());
}

} // namespace pondar::bench
