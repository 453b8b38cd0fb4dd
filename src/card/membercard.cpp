#include "card/membercard.h"

#include "card/codec.h"
#include "shell/session.h"
#include "shell/text.h"

#include <pondar/error.h>

#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace pondar::card {

namespace {

struct Field {
    QString name;
    int block;
    bool reserved;
};

const Field* findField(const QString& name) {
    static const Field fields[] = {
        {u"SERIAL"_s, 0, false},     {u"CODE"_s, 1, false},          {u"NAME"_s, 2, false},
        {u"VALUE"_s, 0, false},      {u"LASTUPDATEDATE"_s, 1, true}, {u"LASTUPDATETIME"_s, 2, true},
        {u"BLACKLISTED"_s, 0, true},
    };
    for (const Field& f : fields) {
        if (f.name == name)
            return &f;
    }
    return nullptr;
}

QByteArray beforeFirstNul(const QByteArray& bytes) {
    const qsizetype nul = bytes.indexOf('\0');
    return nul < 0 ? bytes : bytes.left(nul);
}

// A CODE or NAME block as card issue writes it: text without control bytes, then only zeros.
// A CR LF would add lines to the hand-off, an ESC or GS would drive the slip printer.
bool isCleanTextBlock(const QByteArray& block) {
    const QByteArray text = beforeFirstNul(block);
    for (qsizetype i = text.size(); i < block.size(); ++i) {
        if (block[i] != '\0')
            return false;
    }
    return !hasControlByte(text);
}

} // namespace

QString readFailureMessage(ReadResult result) {
    switch (result) {
    case ReadResult::Ok:
        return {};
    case ReadResult::DeviceFailed:
        return u"Error Reading Device !!! Please unplug again your USB Cable "_s;
    case ReadResult::NotOwnSerial:
    case ReadResult::BadBalance:
    case ReadResult::BadRecord:
        return u"Error Reading Device !!!"_s;
    case ReadResult::ValueSectorFailed:
        return u"Error Open Device !!!"_s;
    }
    return {};
}

bool parseBalance(const QByteArray& block, Currency& balance) {
    const QByteArray text = beforeFirstNul(block);
    for (qsizetype i = text.size(); i < block.size(); ++i) {
        if (block[i] != '\0')
            return false;
    }
    if (text.isEmpty()) {
        balance = Currency();
        return true;
    }
    // A negative balance is never written by a Save, so one on a card is forged or garbled.
    static const QRegularExpression plainDecimal(u"^[0-9]+(\\.[0-9]+)?$"_s);
    const QString s = QString::fromLatin1(text);
    if (!plainDecimal.match(s).hasMatch())
        return false;
    try {
        balance = Currency::parse(s);
    } catch (const CurrencyError&) {
        return false;
    }
    return true;
}

MemberCard::MemberCard(SessionSettings& session, CardPrompts& prompts)
    : m_session(session)
    , m_prompts(prompts)
    , m_reader(session, prompts) {}

bool MemberCard::openSelectLogin(int sector) {
    return m_reader.openSelectLogin(m_session.ReaderPort, sector);
}

bool MemberCard::writeField(int sector, const QString& fieldName, const QByteArray& bytes) {
    const Field* field = findField(fieldName);
    if (field && field->reserved && (sector == MemberSector || sector == ValueSector))
        throw Error(u"Card field "_s + fieldName + u" would overwrite the member record !!!"_s);
    if (bytes.size() > FieldSize)
        throw Error(u"Card field "_s + fieldName + u" holds at most 16 characters !!!"_s);
    if (field)
        m_block = field->block;
    QByteArray block = bytes;
    block.append(FieldSize - bytes.size(), '\0');
    return m_reader.writeBlock(sector, m_block, block);
}

bool MemberCard::writeField(int sector, const QString& fieldName, const QString& text) {
    return writeField(sector, fieldName, toAnsi(text));
}

bool MemberCard::writeSerial() {
    return writeField(MemberSector, u"SERIAL"_s, encrypt(toAnsi(m_session.CardSerial)));
}

bool MemberCard::writeCode(const QString& code) {
    return writeField(MemberSector, u"CODE"_s, code);
}

bool MemberCard::writeName(const QString& name) {
    // The register allows 20 characters; the card keeps the first 16 so the card still works.
    return writeField(MemberSector, u"NAME"_s, name.left(FieldSize));
}

bool MemberCard::checkCard(int sector) {
    const QByteArray stored = beforeFirstNul(m_reader.readBlock(sector, u"0"_s));
    return fromAnsi(decrypt(stored)) == m_session.CardSerial;
}

QString MemberCard::readField(int sector, int block) {
    return fromAnsi(beforeFirstNul(m_reader.readBlock(sector, QString::number(block))));
}

ReadResult MemberCard::read(CardData& data) {
    data = CardData();
    if (!openSelectLogin(MemberSector))
        return ReadResult::DeviceFailed;
    if (!checkCard(MemberSector))
        return ReadResult::NotOwnSerial;
    const QByteArray code = m_reader.readBlock(MemberSector, u"1"_s);
    const QByteArray name = m_reader.readBlock(MemberSector, u"2"_s);
    if (!isCleanTextBlock(code) || !isCleanTextBlock(name))
        return ReadResult::BadRecord;
    data.code = fromAnsi(beforeFirstNul(code)).trimmed();
    data.name = fromAnsi(beforeFirstNul(name)).trimmed();
    // The card stays selected: every exchange counts at the till, and a second select would
    // only find the same card again.
    if (!m_reader.logInTo(ValueSector))
        return ReadResult::ValueSectorFailed;
    const QByteArray value = m_reader.readBlock(ValueSector, u"0"_s);
    if (value.isEmpty() || !parseBalance(value, data.balance))
        return ReadResult::BadBalance;
    return ReadResult::Ok;
}

QString valueQuestion(BillType billType, Currency amount) {
    return addsValue(billType)
               ? QString(u"Confirm to Add in value : "_s + amount.format() + u" to Card ?"_s)
               : QString(u"Confirm to withdraw out value : "_s + amount.format() +
                         u" from Card ?"_s);
}

bool MemberCard::confirmAndWriteValue(BillType billType, Currency amount, Currency newBalance) {
    checkBalanceFits(newBalance);
    if (!m_prompts.ask(valueQuestion(billType, amount)))
        return false;
    return writeValue(newBalance);
}

void MemberCard::checkBalanceFits(Currency balance) {
    const QString value = balance.toShortString();
    if (value.size() > FieldSize)
        throw Error(u"Card balance "_s + value + u" is too large for the card !!!"_s);
}

bool MemberCard::writeValue(Currency newBalance) {
    checkBalanceFits(newBalance);
    // Right after a read (the same-card check of a Save) the value's sector is still open; a
    // card taken away in between fails the write rather than reaching another card's sector.
    if (!m_reader.loggedInTo(ValueSector) && !openSelectLogin(ValueSector))
        return false;
    return writeField(ValueSector, u"VALUE"_s, newBalance.toShortString());
}

void MemberCard::close() {
    m_reader.close();
}

ReaderClosing::ReaderClosing(SessionSettings& session, MemberCard& card)
    : m_session(session)
    , m_card(card) {}

ReaderClosing::~ReaderClosing() {
    if (m_session.ReaderHandle >= 0)
        m_card.close();
}

} // namespace pondar::card
