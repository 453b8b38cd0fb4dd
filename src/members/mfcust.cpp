#include "members/mfcust.h"

#include "card/widgetprompts.h"
#include "members/cardissue.h"
#include "members/datanavigator.h"
#include "members/memberdata.h"
#include "members/membermodel.h"
#include "shell/activitylog.h"
#include "shell/database.h"
#include "shell/gridmodel.h"
#include "shell/gridview.h"
#include "shell/messages.h"
#include "shell/screens.h"
#include "shell/session.h"

#include <QCheckBox>
#include <QDataWidgetMapper>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemDelegate>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQueryModel>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

namespace {

struct Binding {
    const char16_t* column;
    int maxLength;
};

// TXT(i) is bound to kColumns[i].
constexpr Binding kColumns[13] = {
    {u"MemberCode", 10},   {u"MemberName", 50},   {u"ResidentAdd1", 50}, {u"ResidentAdd2", 50},
    {u"ResidentAdd3", 50}, {u"ResidentAdd4", 50}, {u"IcNew", 16},        {u"hpno", 20},
    {u"telno", 20},        {u"sex", 1},           {u"MaritalStatus", 1}, {u"EmailAdd", 50},
    {u"downlinecode", 10},
};

constexpr const char16_t* kLabels[10] = {
    u"Member Code.", u"Address",   u"IC No.",         u"Hp No.",        u"Name",
    u"Tel No.",      u"Sex (M/F)", u"Marital Status", u"Email Address", u"Introduced By",
};

constexpr const char16_t* kButtons[6] = {u"&Close",  u"&New",  u"&Cancel",
                                         u"&Delete", u"&Save", u"&Search"};

// Writes the boxes back to the record. A box left empty over a column that holds nothing leaves
// the column alone, so saving never turns a missing value into an empty text (or an untouched
// new record's flag into anything but the table's default); the flag is stored as 0 or 1.
class RecordDelegate final : public QItemDelegate {
public:
    using QItemDelegate::QItemDelegate;

    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override {
        const bool empty = model->data(index, Qt::EditRole).isNull();
        if (auto* box = qobject_cast<QCheckBox*>(editor)) {
            if (!(empty && !box->isChecked()))
                model->setData(index, box->isChecked() ? 1 : 0, Qt::EditRole);
            return;
        }
        if (auto* box = qobject_cast<QLineEdit*>(editor); box && empty && box->text().isEmpty())
            return;
        QItemDelegate::setModelData(editor, model, index);
    }
};

} // namespace

MFCUST::MFCUST(SessionSettings& session, QWidget* parent)
    : QDialog(parent)
    , m_session(session) {
    setObjectName(u"MFCUST"_s);
    setWindowTitle(u"Member Details"_s);
    QFont tahoma = font();
    tahoma.setFamily(u"Tahoma"_s);
    setFont(tahoma);
    buildControls();
    guarded(this, [&] { load(); });
}

MFCUST::~MFCUST() = default;

void MFCUST::buildControls() {
    for (int i = 0; i < 13; ++i) {
        TXT[i] = new QLineEdit(this);
        TXT[i]->setObjectName(u"TXT(%1)"_s.arg(i));
        TXT[i]->setMaxLength(kColumns[i].maxLength);
    }
    for (int i = 0; i < 10; ++i) {
        LBL[i] = new QLabel(QString::fromUtf16(kLabels[i]), this);
        LBL[i]->setObjectName(u"LBL(%1)"_s.arg(i));
    }
    for (int i = 0; i < 6; ++i) {
        CBUT[i] = new QPushButton(QString::fromUtf16(kButtons[i]), this);
        CBUT[i]->setObjectName(u"CBUT(%1)"_s.arg(i));
        CBUT[i]->setAutoDefault(false);
    }
    Check1 = new QCheckBox(u"InActive"_s, this);
    Check1->setObjectName(u"Check1"_s);
    // The adding flag: shown, but only the buttons change it.
    NewCode = new QCheckBox(this);
    NewCode->setObjectName(u"NewCode"_s);
    NewCode->setEnabled(false);
    NewCode->setFocusPolicy(Qt::NoFocus);
    NewCode->hide(); // the screen's own add-mode flag, not the operator's
    MData = new DataNavigator(this);
    MData->setObjectName(u"MData"_s);

    // Top frame: code, IC number and name.
    auto* top = new QGroupBox(this);
    auto* topGrid = new QGridLayout(top);
    topGrid->addWidget(LBL[0], 0, 0);
    topGrid->addWidget(TXT[0], 0, 1);
    topGrid->addWidget(LBL[2], 0, 2);
    topGrid->addWidget(TXT[6], 0, 3);
    topGrid->addWidget(LBL[4], 1, 0);
    topGrid->addWidget(TXT[1], 1, 1, 1, 3);

    SSTab1 = new QTabWidget(this);
    SSTab1->setObjectName(u"SSTab1"_s);
    auto* general = new QWidget;
    auto* grid = new QGridLayout(general);
    grid->addWidget(LBL[1], 0, 0);
    for (int i = 2; i <= 5; ++i)
        grid->addWidget(TXT[i], i - 2, 1, 1, 3);
    grid->addWidget(LBL[3], 4, 0);
    grid->addWidget(TXT[7], 4, 1);
    grid->addWidget(LBL[5], 4, 2);
    grid->addWidget(TXT[8], 4, 3);
    grid->addWidget(LBL[8], 5, 0);
    grid->addWidget(TXT[11], 5, 1, 1, 3);
    grid->addWidget(LBL[9], 6, 0);
    grid->addWidget(TXT[12], 6, 1);
    grid->addWidget(Check1, 6, 3);
    grid->addWidget(LBL[6], 7, 0);
    grid->addWidget(TXT[9], 7, 1);
    grid->addWidget(LBL[7], 7, 2);
    grid->addWidget(TXT[10], 7, 3);
    grid->setRowStretch(8, 1);
    SSTab1->addTab(general, u"General"_s);

    auto* historyPage = new QWidget;
    HData = new QTableView(historyPage);
    HData->setObjectName(u"HData"_s);
    setUpGrid(HData);
    m_history = new GridModel(this);
    HData->setModel(m_history);
    auto* historyLayout = new QVBoxLayout(historyPage);
    historyLayout->addWidget(HData);
    SSTab1->addTab(historyPage, u"History"_s);
    SSTab1->addTab(new QWidget, u"Pending Balance"_s);
    // The history is kept filled but never offered; the pending page has never held anything.
    SSTab1->setTabVisible(1, false);
    SSTab1->setTabVisible(2, false);

    // Bottom frame: buttons, the adding flag and the navigator.
    auto* bottom = new QGroupBox(this);
    auto* bottomLayout = new QGridLayout(bottom);
    for (int i = 0; i < 6; ++i)
        bottomLayout->addWidget(CBUT[i], 0, i);
    bottomLayout->addWidget(NewCode, 1, 0);
    bottomLayout->addWidget(MData, 1, 1, 1, 5);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(top);
    layout->addWidget(SSTab1, 1);
    layout->addWidget(bottom);
    resize(600, 440);

    // Focus order: code, IC number, name, address, mobile, telephone, e-mail, introducer, sex,
    // marital status, then "&Save".
    const std::array<QWidget*, 20> order = {
        TXT[0],  TXT[6], TXT[1],  TXT[2],  TXT[3],  TXT[4],  TXT[5],  TXT[7],  TXT[8],  TXT[11],
        TXT[12], TXT[9], TXT[10], CBUT[4], CBUT[5], CBUT[0], CBUT[1], CBUT[2], CBUT[3], Check1,
    };
    for (std::size_t i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);

    m_boxes = new EntryBoxes(this);
    showButtonFocus(this);
    for (QLineEdit* box : TXT)
        m_boxes->add(box);
    m_boxes->exempt(CBUT[0]);
    m_boxes->exempt(CBUT[2]);
    m_boxes->setCheck(TXT[0], [this] { return checkCode(); });
    m_boxes->setCheck(TXT[9], [this] { return checkSex(); });
    m_boxes->setCheck(TXT[12], [this] { return checkIntroducer(); });
    m_boxes->setOnDown(TXT[12], [this] { guarded(this, [&] { introducerLookup(); }); });

    auto action = [this](int i, void (MFCUST::*slot)()) {
        connect(CBUT[i], &QPushButton::clicked, this,
                [this, slot] { guarded(this, [&] { (this->*slot)(); }); });
    };
    connect(CBUT[0], &QPushButton::clicked, this, [this] { close(); });
    action(1, &MFCUST::addNew);
    action(2, &MFCUST::cancel);
    action(3, &MFCUST::remove);
    action(4, &MFCUST::save);
    action(5, &MFCUST::search);

    connect(TXT[0], &QLineEdit::textChanged, this, [this] {
        if (m_mapper && m_mapper->currentIndex() >= 0)
            guarded(this, [&] { refreshHistory(); });
    });
    // The model pages through the register; the moves come back as rows of its window.
    connect(MData, &DataNavigator::firstRequested, this,
            [this] { guarded(this, [&] { moveTo(m_model->first()); }); });
    connect(MData, &DataNavigator::previousRequested, this, [this] {
        guarded(this, [&] { moveTo(m_model->previous(m_mapper->currentIndex())); });
    });
    connect(MData, &DataNavigator::nextRequested, this,
            [this] { guarded(this, [&] { moveTo(m_model->next(m_mapper->currentIndex())); }); });
    connect(MData, &DataNavigator::lastRequested, this,
            [this] { guarded(this, [&] { moveTo(m_model->last()); }); });

    TXT[0]->setEnabled(false);
    for (int i = 1; i < 6; ++i)
        CBUT[i]->setEnabled(false);
    MData->setEnabled(false);
}

void MFCUST::load() {
    m_model = new members::MemberTableModel(m_session.Conn, this);
    m_mapper = new QDataWidgetMapper(this);
    m_mapper->setModel(m_model);
    m_mapper->setItemDelegate(new RecordDelegate(m_mapper));
    // Boxes reach the record only on "&Save".
    m_mapper->setSubmitPolicy(QDataWidgetMapper::ManualSubmit);
    for (int i = 0; i < 13; ++i) {
        const int column = m_model->fieldIndex(QString::fromUtf16(kColumns[i].column));
        if (column < 0)
            throw db::DatabaseError(u"tloy_mt_member has no column "_s +
                                    QString::fromUtf16(kColumns[i].column) + u'.');
        m_mapper->addMapping(TXT[i], column);
    }
    const int nonActive = m_model->fieldIndex(u"NonActive"_s);
    if (nonActive < 0)
        throw db::DatabaseError(u"tloy_mt_member has no column NonActive."_s);
    m_mapper->addMapping(Check1, nonActive);
    // The mapper's editor filter would take Escape in a bound box as "undo my typing"; the screen
    // looks at the keys first, so Escape closes it from anywhere.
    for (QLineEdit* box : TXT)
        box->installEventFilter(this);

    m_model->showAll();
    reload();
    toBrowsing();
}

void MFCUST::reload() {
    if (!m_model->select())
        throw db::DatabaseError(m_model->lastError().text());
    refreshCount();
    moveTo(0);
}

void MFCUST::moveTo(int row) {
    row = m_model->fetchTo(std::max(row, 0));
    if (row < 0) {
        clearBoxes();
        return;
    }
    m_mapper->setCurrentIndex(row);
}

void MFCUST::clearBoxes() {
    for (QLineEdit* box : TXT)
        box->clear();
    Check1->setChecked(false);
}

void MFCUST::refreshCount() {
    MData->setCaption(members::recordCountCaption(m_model->totalCount()));
}

void MFCUST::refreshHistory() {
    m_history->load(members::memberHistory(m_session.Conn, TXT[0]->text()), {1}, {3});
    const std::array<std::pair<const char16_t*, int>, 4> columns = {{
        {u"Type", 600},
        {u"Date", 2300},
        {u"Ref", 1500},
        {u"Value", 1000},
    }};
    for (int i = 0; i < 4; ++i) {
        m_history->setHeaderData(i, Qt::Horizontal, QString::fromUtf16(columns[i].first));
        HData->setColumnWidth(i, members::twipsToPixels(columns[i].second));
    }
    widenToContents(HData);
}

bool MFCUST::adding() const {
    return NewCode->isChecked();
}

void MFCUST::toBrowsing() {
    MData->setEnabled(true);
    for (int i = 0; i < 6; ++i)
        CBUT[i]->setEnabled(true);
    TXT[0]->setEnabled(false);
    NewCode->setChecked(false);
}

EntryBoxes::Outcome MFCUST::checkCode() {
    const QString code = TXT[0]->text();
    if (code.isEmpty())
        return EntryBoxes::Outcome::Pass;
    if (!checkInput(this, code))
        return EntryBoxes::Outcome::Refuse;
    // An existing member's code cannot be edited, so only a new one can collide.
    if (adding() && members::memberExists(m_session.Conn, code)) {
        showError(this, u"Duplicated Member Code !!!"_s);
        return EntryBoxes::Outcome::Refuse;
    }
    return EntryBoxes::Outcome::Pass;
}

EntryBoxes::Outcome MFCUST::checkSex() {
    const QString sex = TXT[9]->text();
    if (sex == u"M"_s || sex == u"F"_s)
        return EntryBoxes::Outcome::Pass;
    showError(this, u"Invalid Sex Type !!!"_s);
    return EntryBoxes::Outcome::Refuse;
}

EntryBoxes::Outcome MFCUST::checkIntroducer() {
    const QString code = TXT[12]->text();
    if (code.isEmpty())
        return EntryBoxes::Outcome::Pass;
    if (!checkInput(this, code))
        return EntryBoxes::Outcome::Refuse;
    // Any existing member may be named here, inactive ones and the member itself included; only
    // the lookup list is narrower.
    if (!members::memberExists(m_session.Conn, code)) {
        showError(this, u"Invalid Introducer Code !!!"_s);
        return EntryBoxes::Outcome::Refuse;
    }
    return EntryBoxes::Outcome::Pass;
}

void MFCUST::introducerLookup() {
    const std::optional<QString> picked =
        pickFromLookup(m_session, members::introducerLookup(TXT[0]->text(), TXT[12]->text()), this);
    // An abandoned lookup empties the box.
    TXT[12]->setText(picked.value_or(QString()));
    focusAgain(TXT[12]);
}

void MFCUST::addNew() {
    if (adding())
        m_model->revertAll(); // one new member at a time
    else
        m_rowBeforeNew = m_mapper->currentIndex();
    NewCode->setChecked(true);
    CBUT[3]->setEnabled(false);
    CBUT[5]->setEnabled(false);
    MData->setEnabled(false);
    const int row = m_model->rowCount();
    if (!m_model->insertRow(row))
        throw db::DatabaseError(m_model->lastError().text());
    m_mapper->setCurrentIndex(row);
    TXT[0]->setEnabled(true);
    TXT[0]->setFocus(Qt::OtherFocusReason);
}

void MFCUST::cancel() {
    const bool wasAdding = adding();
    const int row = wasAdding ? m_rowBeforeNew : m_mapper->currentIndex();
    m_model->revertAll();
    toBrowsing();
    moveTo(row); // the boxes show the record as stored again
}

void MFCUST::remove() {
    const int row = m_mapper->currentIndex();
    if (row < 0)
        return;
    const QString code = TXT[0]->text();
    const QString name = TXT[1]->text();
    if (members::hasTransactions(m_session.Conn, code)) {
        showError(this, u"Function Rejected !!! Transaction Found !!!"_s);
        return;
    }
    if (!askYesNo(this, members::removeQuestion(name), Preferred::No))
        return;
    writeLog(m_session, members::removeLogLine(code, name));
    m_model->revertAll();
    m_model->removeRow(row);
    if (!m_model->submitAll()) {
        const QString error = m_model->lastError().text();
        m_model->revertAll();
        throw db::DatabaseError(error);
    }
    m_model->showAll();
    reload();
    cancel();
}

void MFCUST::save() {
    const QString code = TXT[0]->text();
    const QString name = TXT[1]->text();
    if (code.isEmpty()) {
        showError(this, u"Invalid Member Code !!!"_s);
        focusAgain(TXT[0]);
        return;
    }
    if (name.isEmpty()) {
        showError(this, u"Invalid Member Name !!!"_s);
        focusAgain(TXT[1]);
        return;
    }
    if (!checkInput(this, code)) {
        focusAgain(TXT[0]);
        return;
    }
    if (m_mapper->currentIndex() < 0)
        return; // an empty register and no new record: nothing to write
    const bool isNew = adding();
    m_mapper->submit();
    if (!m_model->submitAll()) {
        // The record stays as typed, still pending, so the operator can correct it.
        throw db::DatabaseError(m_model->lastError().text());
    }
    toBrowsing();
    refreshCount();
    const int row = m_model->findRow(code);
    moveTo(row >= 0 ? row : 0);

    QString line;
    if (isNew) {
        // The row is saved whatever happens at the reader, and so is the log line.
        guarded(this, [&] { issueCard(code.trimmed(), members::cardName(name)); });
        line = members::newMemberLogLine(code, name);
    } else {
        line = members::updateLogLine(code, name);
    }
    writeLog(m_session, line);
    cancel();
}

void MFCUST::issueCard(const QString& code, const QString& name) {
    card::WidgetPrompts prompts(this);
    switch (members::issueCard(m_session, prompts, code, name)) {
    case members::CardIssue::DeviceFailed:
        showError(this, u"Error Reading Card Device !!!"_s);
        break;
    case members::CardIssue::Written:
        showNotice(this, u"Data successfully saved to Card !!"_s);
        break;
    case members::CardIssue::Declined:
        break;
    }
}

void MFCUST::search() {
    if (const auto picked = pickFromLookup(m_session, members::memberSearchLookup(), this))
        m_model->showOnly(*picked);
    else
        m_model->showAll();
    reload();
}

bool MFCUST::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape && key->modifiers() == Qt::NoModifier) {
            close();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void MFCUST::done(int result) {
    // Leaving drops whatever was not saved, a new record included.
    if (m_model)
        m_model->revertAll();
    QDialog::done(result);
}

} // namespace pondar
