#include "transactions/mfmain.h"

#include "members/memberdata.h"
#include "shell/gridmodel.h"
#include "shell/gridview.h"
#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"
#include "transactions/ledger.h"
#include "transactions/save.h"
#include "transactions/supervisor.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

constexpr int TopUpTab = 0;
constexpr int WithdrawTab = 1;
constexpr int AdjustmentTab = 2;
constexpr int HistoryTab = 3;

const QString NotAMember = u"Member either inactive or not Found in Database !!!"_s;

QTableView* makeGrid(const QString& name, QWidget* parent) {
    auto* grid = new QTableView(parent);
    grid->setObjectName(name);
    setUpGrid(grid);
    grid->verticalHeader()->hide();
    return grid;
}

} // namespace

MFMAIN::MFMAIN(SessionSettings& session, TransactionMode mode, const QString& staffCode,
               QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , m_mode(mode)
    , m_staffCode(staffCode)
    , m_prompts(this)
    , m_card(session, m_prompts)
    , m_entry(new EntryBoxes(this)) {
    setObjectName(u"MFMAIN"_s);
    setWindowTitle(u"Mifare Entry"_s);
    setProperty("TransactionMode", modeText(mode));

    LTITLE = new QLabel(u"Place your mifare card now and press connect button"_s, this);
    LTITLE->setObjectName(u"LTITLE"_s);
    QFont bold = LTITLE->font();
    bold.setBold(true);
    LTITLE->setFont(bold);

    // What Connect fills is read from the card, never typed: Save trusts these boxes.
    auto* card = new QFormLayout;
    card->addRow(u"Card No"_s, makeBox(txt::CardNo, true));
    card->addRow(u"Name"_s, makeBox(txt::Name, true));
    card->addRow(u"Card Balance"_s, makeBox(txt::Balance, true));
    // The figure the customer leans over the counter to read.
    QFont balanceFont = TXT[txt::Balance]->font();
    balanceFont.setPointSizeF(balanceFont.pointSizeF() * 1.8);
    balanceFont.setBold(true);
    TXT[txt::Balance]->setFont(balanceFont);
    TXT[txt::Balance]->setAlignment(Qt::AlignRight);
    card->addRow(u"Pending Topup Bal."_s, makeBox(txt::Pending, true));

    const std::array<QString, 6> captions = {u"&Close"_s, u"&Save"_s, u"&Connect"_s,
                                             u"&Save"_s,  u"&Save"_s, u"&Print"_s};
    for (int i = 0; i < int(CBUT.size()); ++i) {
        CBUT[i] = new QPushButton(captions[i], this);
        CBUT[i]->setObjectName(u"CBUT(%1)"_s.arg(i));
        // Enter presses the button that has focus; from a box it moves on (EntryBoxes).
        CBUT[i]->setAutoDefault(true);
        connect(CBUT[i], &QPushButton::clicked, this, [this, i] {
            guarded(this, [&] {
                switch (i) {
                case 0:
                    reject();
                    break;
                case 2:
                    connectClicked();
                    break;
                case 5:
                    printEnquiry();
                    break;
                default:
                    save();
                }
            });
        });
    }

    // The keys a cashier reaches without looking; each button tells its key.
    CBUT[2]->setDefault(true);
    const std::array<std::pair<int, QString>, 4> tips = {
        {{0, u"Close (Esc)"_s}, {2, u"Connect (F2)"_s}, {5, u"Print (F5)"_s}, {1, u"Save (F9)"_s}}};
    for (const auto& [i, tip] : tips)
        CBUT[i]->setToolTip(tip);
    CBUT[3]->setToolTip(CBUT[1]->toolTip());
    CBUT[4]->setToolTip(CBUT[1]->toolTip());
    const auto functionKey = [this](Qt::Key key, auto action) {
        auto* shortcut = new QShortcut(QKeySequence(key), this);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    functionKey(Qt::Key_F2, [this] { pressFromKeyboard(CBUT[2]); });
    functionKey(Qt::Key_F5, [this] { pressFromKeyboard(CBUT[5]); });
    functionKey(Qt::Key_F9, [this] {
        if (const int i = saveButton(); i >= 0) {
            STab->setCurrentIndex(i == 1 ? TopUpTab : i == 3 ? WithdrawTab : AdjustmentTab);
            pressFromKeyboard(CBUT[i]);
        }
    });
    showButtonFocus(this);

    STab = new QTabWidget(this);
    STab->setObjectName(u"STab"_s);
    STab->addTab(topUpPage(), u"Top Up"_s);
    STab->addTab(withdrawPage(), u"Withdraw"_s);
    STab->addTab(adjustmentPage(), u"Adjustment"_s);
    STab->addTab(historyPage(), u"History"_s);

    PData = makeGrid(u"PData"_s, this);
    m_pending = new GridModel(this);
    PData->setModel(m_pending);
    auto* pendingLabel = new QLabel(u"&Pending Bal Details"_s, this);
    pendingLabel->setBuddy(PData);

    auto* side = new QVBoxLayout;
    side->addWidget(pendingLabel);
    side->addWidget(PData);
    auto* top = new QHBoxLayout;
    // Half the width for the pending lines, so date, reference and amount all fit.
    top->addLayout(card, 1);
    top->addLayout(side, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(CBUT[2]);
    buttons->addWidget(CBUT[5]);
    buttons->addStretch();
    buttons->addWidget(CBUT[0]);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(LTITLE);
    layout->addLayout(top);
    layout->addWidget(STab);
    layout->addLayout(buttons);
    resize(720, 560);

    connect(TXT[txt::TopUp], &QLineEdit::textChanged, this, [this](const QString& text) {
        TXT[txt::Extra]->setText(extraValueText(text, m_session.MemberComm));
    });
    for (int i : {txt::TopUp, txt::Extra, txt::Withdraw, txt::AdjustIn, txt::AdjustOut}) {
        m_entry->setCheck(TXT[i], [this, i] {
            amountLeft(i);
            return EntryBoxes::Outcome::Pass;
        });
    }
    m_entry->setCheck(STCODE, [this] { return staffCodeLeft(); });
    m_entry->setOnDown(STCODE, [this] { guarded(this, [&] { staffLookup(); }); });
    m_entry->exempt(CBUT[0]);
    m_entry->pressOnEnter(STCODE, CBUT[1]);
    m_entry->pressOnEnter(TXT[txt::Withdraw], CBUT[3]);
    m_entry->pressOnEnter(TXT[txt::Remark], CBUT[4]);

    activate();
}

MFMAIN::~MFMAIN() = default;

QLineEdit* MFMAIN::makeBox(int index, bool readOnly) {
    auto* box = new QLineEdit(this);
    box->setObjectName(u"TXT(%1)"_s.arg(index));
    box->setReadOnly(readOnly);
    if (readOnly)
        box->setFocusPolicy(Qt::ClickFocus); // still selectable, never a tab stop
    else
        m_entry->add(box);
    TXT[index] = box;
    return box;
}

QWidget* MFMAIN::topUpPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    form->addRow(u"Topup Value : (+)"_s, makeBox(txt::TopUp));
    form->addRow(u"Extra Value : (+)"_s, makeBox(txt::Extra));
    STCODE = new QLineEdit(page);
    STCODE->setObjectName(u"STCODE"_s);
    m_entry->add(STCODE);
    form->addRow(u"Staff Code"_s, STCODE);
    DownLineCode = new QLineEdit(page);
    DownLineCode->setObjectName(u"DownLineCode"_s);
    DownLineCode->setReadOnly(true); // the register owns the introducer
    DownLineCode->setFocusPolicy(Qt::ClickFocus);
    form->addRow(u"Introduced by"_s, DownLineCode);
    form->addRow(QString(), CBUT[1]);
    return page;
}

QWidget* MFMAIN::withdrawPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    form->addRow(u"Withdraw Value : (-)"_s, makeBox(txt::Withdraw));
    form->addRow(QString(), CBUT[3]);
    return page;
}

QWidget* MFMAIN::adjustmentPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    form->addRow(u"Adjust In. (+)"_s, makeBox(txt::AdjustIn));
    form->addRow(u"Adjust Out. (-)"_s, makeBox(txt::AdjustOut));
    form->addRow(u"Remark."_s, makeBox(txt::Remark));
    form->addRow(QString(), CBUT[4]);
    return page;
}

QWidget* MFMAIN::historyPage() {
    auto* page = new QWidget(this);
    MData = makeGrid(u"MData"_s, page);
    m_history = new GridModel(this);
    MData->setModel(m_history);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(MData);
    return page;
}

int MFMAIN::saveButton() const {
    switch (m_mode) {
    case TransactionMode::TopUp:
        return 1;
    case TransactionMode::Withdraw:
        return 3;
    case TransactionMode::Adjustment:
        return 4;
    case TransactionMode::Enquiry:
        break;
    }
    return -1;
}

void MFMAIN::activate() {
    CBUT[5]->setEnabled(false);
    for (int tab : {TopUpTab, WithdrawTab, AdjustmentTab})
        STab->setTabEnabled(tab, false);
    switch (m_mode) {
    case TransactionMode::TopUp:
        STab->setTabEnabled(TopUpTab, true);
        TXT[txt::TopUp]->setText(m_session.AppValue.format());
        STCODE->setText(m_staffCode);
        STab->setCurrentIndex(TopUpTab);
        break;
    case TransactionMode::Withdraw:
        STab->setTabEnabled(WithdrawTab, true);
        TXT[txt::Withdraw]->setText(m_session.AppValue.format());
        STab->setCurrentIndex(WithdrawTab);
        break;
    case TransactionMode::Adjustment:
        STab->setTabEnabled(AdjustmentTab, true);
        STab->setCurrentIndex(AdjustmentTab);
        break;
    case TransactionMode::Enquiry:
        STab->setCurrentIndex(HistoryTab);
        break;
    }
    CBUT[2]->setFocus();
}

bool MFMAIN::ReadCardToScreen() {
    m_memberFound = false;
    m_serialRead.clear();
    TXT[txt::Pending]->setText(u"0.00"_s);
    // A failed read must not leave the previous card's particulars on show.
    for (int i : {txt::CardNo, txt::Name, txt::Balance})
        TXT[i]->clear();

    card::CardData data;
    const card::ReadResult result = m_card.read(data);
    if (result == card::ReadResult::DeviceFailed || result == card::ReadResult::NotOwnSerial ||
        result == card::ReadResult::BadRecord) {
        showError(this, card::readFailureMessage(result));
        return false;
    }
    CBUT[5]->setEnabled(true);
    TXT[txt::CardNo]->setText(data.code);
    TXT[txt::Name]->setText(data.name);
    if (result != card::ReadResult::Ok) {
        showError(this, card::readFailureMessage(result));
        return false;
    }
    TXT[txt::Balance]->setText(data.balance.format());
    m_serialRead = m_session.CardSerial;

    switch (m_mode) {
    case TransactionMode::TopUp:
        STab->setCurrentIndex(TopUpTab);
        focusBox(txt::TopUp);
        break;
    case TransactionMode::Withdraw:
        STab->setCurrentIndex(WithdrawTab);
        focusBox(txt::Withdraw);
        break;
    case TransactionMode::Adjustment:
        STab->setCurrentIndex(AdjustmentTab);
        focusBox(txt::AdjustIn);
        break;
    case TransactionMode::Enquiry:
        break;
    }
    LoadMemberExtras(data.code);
    return true;
}

void MFMAIN::connectClicked() {
    // What the journal holds goes to the ledger first, so the check below sees it.
    if (const QStringList posted = replayJournal(m_session); !posted.isEmpty())
        showNotice(this, replayMessage(posted));
    if (!ReadCardToScreen())
        return;
    const QString cardNo = TXT[txt::CardNo]->text();
    const Currency balance = Currency::parse(TXT[txt::Balance]->text());
    if (const QStringList posted = settleOpenSaves(m_session, cardNo, balance); !posted.isEmpty()) {
        showNotice(this, replayMessage(posted));
        LoadMemberExtras(cardNo);
    }
    if (!admitCard(m_session, m_serialRead, cardNo, m_memberFound)) {
        // A blocked card shows nothing and takes nothing.
        m_serialRead.clear();
        m_memberFound = false;
        for (int i : {txt::CardNo, txt::Name, txt::Balance, txt::Pending})
            TXT[i]->clear();
        DownLineCode->clear();
        CBUT[5]->setEnabled(false);
        showError(this, CardBlockedText);
        return;
    }
    refreshHistory();
    if (!m_memberFound) {
        showError(this, NotAMember);
        ClearEntry();
        return;
    }
    checkLedger(cardNo, balance);
}

// A card that does not hold its ledger balance takes no Save until a supervisor puts it right:
// the ledger's balance onto the card, or the card's difference into the ledger.
void MFMAIN::checkLedger(const QString& cardNo, Currency balance) {
    const CardLedgerCheck check = checkCardAgainstLedger(m_session, cardNo, balance);
    if (check.matches)
        return;
    showError(this, check.message());
    if (askYesNo(this, u"Write the Database balance to the Card ?"_s)) {
        if (!askSupervisorPassword(m_session, this))
            return;
        if (!writeLedgerBalanceToCard(m_session, m_prompts, connectedCard(), check)) {
            showError(this, u"Error Writing to Card !!!"_s);
            return;
        }
        ReadCardToScreen();
        return;
    }
    if (askYesNo(this, u"Post the Card balance as an adjustment ?"_s) &&
        askSupervisorPassword(m_session, this)) {
        postCardDifference(m_session, boxes(), check);
        refreshHistory();
    }
}

ConnectedCard MFMAIN::connectedCard() const {
    return {m_serialRead, TXT[txt::CardNo]->text(), TXT[txt::Balance]->text(), m_memberFound};
}

void MFMAIN::LoadMemberExtras(const QString& cardNo) {
    TXT[txt::Pending]->setText(u"0.00"_s);
    DownLineCode->clear();
    const MemberExtras extras = pondar::LoadMemberExtras(m_session.Conn, cardNo);
    m_memberFound = extras.found;
    DownLineCode->setText(extras.introducer);
    TXT[txt::Pending]->setText(extras.pending.format());
    refreshPending();
}

void MFMAIN::ClearEntry() {
    for (int i :
         {txt::TopUp, txt::Extra, txt::Withdraw, txt::AdjustIn, txt::AdjustOut, txt::Remark})
        TXT[i]->clear();
    DownLineCode->clear();
    STCODE->clear();
    STab->setCurrentIndex(TopUpTab);
    LoadMemberExtras(TXT[txt::CardNo]->text());
}

void MFMAIN::refreshHistory() {
    m_history->load(historyQuery(m_session.Conn, TXT[txt::CardNo]->text()), {1}, {3});
    widenToContents(MData);
}

void MFMAIN::refreshPending() {
    m_pending->load(pendingGridQuery(m_session.Conn, TXT[txt::CardNo]->text()), {0}, {2});
    widenToContents(PData);
}

TransactionBoxes MFMAIN::boxes() const {
    TransactionBoxes b;
    b.cardNo = TXT[txt::CardNo]->text();
    b.name = TXT[txt::Name]->text();
    b.balance = TXT[txt::Balance]->text();
    b.topUp = TXT[txt::TopUp]->text();
    b.adjustIn = TXT[txt::AdjustIn]->text();
    b.adjustOut = TXT[txt::AdjustOut]->text();
    b.withdraw = TXT[txt::Withdraw]->text();
    b.remark = TXT[txt::Remark]->text();
    b.pending = TXT[txt::Pending]->text();
    b.extra = TXT[txt::Extra]->text();
    b.staffCode = STCODE->text();
    b.introducer = DownLineCode->text();
    return b;
}

void MFMAIN::focusBox(int index) {
    if (index < 0 || !TXT[index])
        return;
    TXT[index]->setFocus();
    TXT[index]->selectAll();
}

void MFMAIN::save() {
    using Status = SaveOutcome::Status;
    m_transactionOk = false;
    TransactionSave service(m_session, m_prompts);
    const SaveOutcome outcome = service.save(m_mode, boxes(), connectedCard());
    switch (outcome.status) {
    case Status::Refused:
    case Status::NotWritten:
        showError(this, outcome.message, outcome.title);
        focusBox(outcome.focus);
        return;
    case Status::Unposted:
        // The card holds the new value and the customer owes it; the journal posts it later.
        // Nothing may offer the same Save again.
        m_transactionOk = true;
        for (int i : {1, 3, 4})
            CBUT[i]->setEnabled(false);
        showError(this, outcome.message, outcome.title);
        ReadCardToScreen();
        return;
    case Status::Posted:
        break;
    }
    m_transactionOk = true;
    guarded(this, [&] { showSlip(m_session, outcome.slip, this); });
    if (ReadCardToScreen())
        refreshHistory();
    accept();
}

void MFMAIN::printEnquiry() {
    const reports::EnquirySlip enquiry{TXT[txt::CardNo]->text(), TXT[txt::Name]->text(),
                                       Currency::parse(TXT[txt::Balance]->text())};
    showSlip(m_session, reports::SlipRequest{enquiry, false}, this);
}

void MFMAIN::amountLeft(int index) {
    QLineEdit* box = TXT[index];
    if (index == txt::AdjustIn || index == txt::AdjustOut) {
        const int other = index == txt::AdjustIn ? txt::AdjustOut : txt::AdjustIn;
        if (Currency::parse(box->text()) > Currency())
            TXT[other]->setText(u"0.00"_s);
    }
    box->setText(reformatAmount(box->text()));
}

EntryBoxes::Outcome MFMAIN::staffCodeLeft() {
    using Outcome = EntryBoxes::Outcome;
    const QString code = STCODE->text();
    if (code.isEmpty())
        return Outcome::Pass;
    if (!checkInput(this, code))
        return Outcome::Refocus;
    if (!members::findActiveStaff(m_session.Conn, code).found) {
        showError(this, u"Invalid Staff Code !!!"_s);
        return Outcome::Refuse;
    }
    STCODE->setText(code.trimmed().toUpper());
    return Outcome::Pass;
}

void MFMAIN::staffLookup() {
    const std::optional<QString> picked = pickFromLookup(m_session, members::staffLookup(), this);
    if (!picked)
        return;
    STCODE->setText(*picked);
    sendTab(STCODE);
}

void MFMAIN::done(int result) {
    // The reader stays open while the screen reads cards and is released with it.
    m_card.close();
    QDialog::done(result);
}

} // namespace pondar
