#include "members/memberdata.h"

#include "shell/database.h"
#include "shell/text.h"

#include <QDateTime>
#include <QtMath>

using namespace Qt::Literals::StringLiterals;

namespace pondar::members {

db::Statement introducerLookup(const QString& ownCode, const QString& typed) {
    return {u"Select MemberCode AS CardNo,MemberName AS Name from tloy_mt_member"
            " where NonActive=0 and Membercode <> ? and  MemberCode like ? order by MemberCode"_s,
            {ownCode, QString(typed + u'%')}};
}

db::Statement memberSearchLookup() {
    return {u"Select MemberCode AS CardNo,MemberName AS Name from tloy_mt_member"
            "  order by MemberCode"_s,
            {}};
}

db::Statement staffLookup() {
    return {u"Select StaffCode AS StaffCode,StaffName AS Name from tpay_mt_Staff"
            " where NonActive=0  order by StaffCode"_s,
            {}};
}

QSqlQuery memberHistory(const QSqlDatabase& db, const QString& code) {
    return db::scrollable(db,
                          u"select Billtype AS Type,TrsDate AS Date,BillNo AS Ref,PValue AS Value"
                          " from Customize_Transaction where CardNo=? order by TrsDate"_s,
                          {code});
}

bool memberExists(const QSqlDatabase& db, const QString& code) {
    return db::hasRow(db, u"Select * from tloy_mt_member where membercode=?"_s, {code});
}

bool hasTransactions(const QSqlDatabase& db, const QString& code) {
    for (const QString& table : {u"Customize_Topup"_s, u"Customize_Transaction"_s}) {
        auto q = db::exec(db,
                          u"Select CardNo,count(ID) as TBal from "_s + table +
                              u" where CardNo=? group by CardNo"_s,
                          {code});
        if (q.next() && q.value(1).toLongLong() != 0)
            return true;
    }
    return false;
}

StaffMatch findActiveStaff(const QSqlDatabase& db, const QString& code) {
    auto q =
        db::exec(db, u"Select * from tpay_mt_staff where staffcode=? and NonActive=0"_s, {code});
    StaffMatch match;
    if (q.next()) {
        match.found = true;
        match.name = q.value(u"StaffName"_s);
    }
    return match;
}

QString cardName(const QString& memberName) {
    return memberName.left(20);
}

QString removeLogLine(const QString& code, const QString& name) {
    return u"Remove Member Code : "_s + code + u'/' + name;
}

QString newMemberLogLine(const QString& code, const QString& name) {
    return u"Writing New Member Code : "_s + code + u'/' + name + u" to Mifare Card"_s;
}

QString updateLogLine(const QString& code, const QString& name) {
    return u"Update Member Details for Code : "_s + code + u'/' + name;
}

QString recordCountCaption(qint64 count) {
    return u" Total Records : "_s + QString::number(count);
}

QString removeQuestion(const QString& name) {
    return u"Confirm to Remove "_s + name + u" ?"_s;
}

int twipsToPixels(int twips) {
    return qRound(twips / 15.0);
}

} // namespace pondar::members
