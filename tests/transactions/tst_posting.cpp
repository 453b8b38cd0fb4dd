#include "shell/database.h"
#include "shell/session.h"
#include "support/fixtures.h"
#include "transactions/ledger.h"
#include "transactions/save.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace pondar;
using test::Fixture;

namespace {

void addPending(const Fixture& f, const QString& cardNo, int value, bool settled) {
    db::exec(f.db(),
             u"INSERT INTO Customize_Topup (cardNo,DateInput,DateUpdate,UpdateStatus,FValue,"
             "BillNo) VALUES (?,'2026-11-01 00:00:00',?,?,?,'HOST1')"_s,
             {cardNo, settled ? QVariant(u"2026-11-02 10:00:00"_s) : QVariant(), settled ? 1 : 0,
              value});
}

} // namespace

class TestPosting final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Two introduced members top up (10 % to the introducer each); the introducer's next
    // withdrawal settles both credits in one "PED" line and leaves older settled rows alone.
    void introducedMembersSettleInOnePedLine() {
        Fixture f;
        f.addMember(u"INTRO"_s, u"Ida"_s);
        f.addMember(u"M1"_s, u"Max"_s, u"INTRO"_s);
        f.addMember(u"M2"_s, u"Mia"_s, u"INTRO"_s);
        addPending(f, u"INTRO"_s, 7, true); // settled long ago
        SessionSettings s;
        s.Conn = f.db();
        s.IniPath = f.iniPath();
        s.StaffCode = u"OP1"_s;
        s.BzDate = u"15/11/2026"_s;
        s.TransactionMode = u"TOPUP"_s;
        s.DownComm = 10.0;
        s.clock = [] { return QDateTime(QDate(2026, 11, 15), QTime(16, 33, 5)); };
        const auto save = [&](const QString& cardNo, const MemberExtras& extras,
                              const QString& balance, const QString& amount) {
            s.IntroducerCode = extras.introducer;
            TransactionForm form;
            form.boxes.cardNo = cardNo;
            form.boxes.name = u"Ann"_s;
            form.boxes.staffCode = u"S1"_s;
            form.boxes.balance = balance;
            form.boxes.pending = extras.pending.format();
            form.boxes.introducer = extras.introducer;
            const bool topUp = s.TransactionMode == u"TOPUP"_s;
            (topUp ? form.boxes.topUp : form.boxes.withdraw) = amount;
            return saveTransaction(s, form,
                                   *(topUp ? planTopUp(form.boxes) : planWithdraw(form.boxes)).plan)
                .ok;
        };
        QVERIFY(save(u"M1"_s, LoadMemberExtras(f.db(), u"M1"_s), u"20.00"_s, u"100"_s));
        QVERIFY(save(u"M2"_s, LoadMemberExtras(f.db(), u"M2"_s), u"20.00"_s, u"50"_s));
        const MemberExtras intro = LoadMemberExtras(f.db(), u"INTRO"_s);
        QCOMPARE(intro.pending.format(), u"15.00"_s);

        s.TransactionMode = u"WITHDRAW"_s;
        QVERIFY(save(u"INTRO"_s, intro, u"10.00"_s, u"20"_s));
        QCOMPARE(f.rows(u"SELECT Billtype,PValue,NewValue FROM Customize_Transaction "
                        "WHERE CardNo='INTRO' ORDER BY ID"_s),
                 u"PED|15|NULL\nOUT|-20|5"_s);
        QCOMPARE(f.rows(u"SELECT UpdateStatus,DateUpdate FROM Customize_Topup WHERE "
                        "cardNo='INTRO' ORDER BY ID"_s),
                 u"1|2026-11-02 10:00:00\n1|2026-11-15 16:33:05\n1|2026-11-15 16:33:05"_s);
        QCOMPARE(pendingBalance(f.db(), u"INTRO"_s), Currency());
    }
};

QTEST_GUILESS_MAIN(TestPosting)
#include "tst_posting.moc"
