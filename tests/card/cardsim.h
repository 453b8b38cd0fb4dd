#pragma once

#include "card/membercard.h"
#include "card/prompts.h"
#include "card/reader.h"
#include "shell/session.h"
#include "support/fixtures.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <array>

namespace pondar::test {

// A simulated reader on a temporary folder, with helpers to place and inspect the card.
struct CardSim {
    QTemporaryDir dir;
    std::shared_ptr<card::ReaderLibrary> reader = card::makeSimulatedReader(dir.path());

    QString field() const { return dir.filePath(QStringLiteral("field.mfd")); }

    void put(const QByteArray& image) const {
        QFile::remove(field()); // a locked card is replaced all the same
        writeFile(field(), image);
    }
    void put(std::array<card::uint8, 4> uid) const { put(card::blankCardImage(uid)); }
    void takeAway() const { QFile::remove(field()); }
    void setType(int type) const {
        writeFile(dir.filePath(QStringLiteral("field.type")), QByteArray::number(type));
    }
    QByteArray image() const { return readFile(field()); }
    QByteArray block(int absolute) const { return image().mid(absolute * 16, 16); }

    // A session on this reader, as StartApp leaves it: port "1", key text "FF".
    void attach(SessionSettings& session) const {
        session.Reader = reader;
        session.ReaderPort = 1;
    }
};

// Records what the card logic asked and reported; questions take queued answers, else Yes.
class RecordingPrompts final : public card::CardPrompts {
public:
    bool ask(const QString& question) override {
        asked.append(question);
        return answers.isEmpty() ? true : answers.takeFirst();
    }
    void error(const QString& text, const QString& title) override {
        errors.append(title + QStringLiteral(": ") + text);
    }
    bool askWithDetail(const QString& question, const QString& detail) override {
        details.append(detail);
        return ask(question);
    }
    bool supervisorApproves() override {
        asked.append(QStringLiteral("MESC"));
        return supervisor;
    }

    QStringList asked, errors, details;
    QList<bool> answers;
    bool supervisor = false; // the password given at MESC
};

// Places a member's card holding this balance, written as card issue writes it.
inline void issueCard(const CardSim& sim, const QString& code, const QString& name,
                      const QString& balance,
                      std::array<card::uint8, 4> uid = {0x11, 0x22, 0x33, 0x44}) {
    sim.put(uid);
    SessionSettings s;
    sim.attach(s);
    RecordingPrompts yes;
    card::MemberCard c(s, yes);
    if (!c.openSelectLogin(card::MemberSector) || !c.writeSerial() || !c.writeCode(code) ||
        !c.writeName(name) ||
        !c.confirmAndWriteValue(BillType::In, Currency(), Currency::parse(balance)))
        qFatal("cannot issue the card");
    c.close();
}

} // namespace pondar::test
