#pragma once

#include "card/membercard.h"
#include "card/widgetprompts.h"
#include "shell/entryboxes.h"
#include "shell/modes.h"
#include "transactions/save.h"
#include "transactions/saveplan.h"

#include <QDialog>

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTableView;

namespace pondar {

struct SessionSettings;
class GridModel;

// The transaction screen: the operator reads a member's card with Connect, types an amount on
// the tab of the screen's mode and saves it. The Save itself is TransactionSave's; the screen
// reads its boxes, hands them over and shows the outcome. It closes itself after a posted Save.
class MFMAIN final : public QDialog {
    Q_OBJECT

public:
    // A top-up starts with the staff member chosen at staff entry in its staff box.
    MFMAIN(SessionSettings& session, TransactionMode mode, const QString& staffCode,
           QWidget* parent = nullptr);
    ~MFMAIN() override;

    // Whether a Save was written to a card and posted while the screen was open.
    bool transactionOk() const { return m_transactionOk; }

    void done(int result) override;

private:
    QLineEdit* makeBox(int index, bool readOnly = false);
    QWidget* topUpPage();
    QWidget* withdrawPage();
    QWidget* adjustmentPage();
    QWidget* historyPage();
    void activate();
    // The Save of the screen's mode, -1 for an enquiry.
    int saveButton() const;

    // Connect: false when the card could not be read (its message was shown).
    bool ReadCardToScreen();
    void connectClicked();
    void checkLedger(const QString& cardNo, Currency balance);
    ConnectedCard connectedCard() const;
    void LoadMemberExtras(const QString& cardNo);
    void ClearEntry();
    void refreshHistory();
    void refreshPending();

    void save();
    void printEnquiry();
    TransactionBoxes boxes() const;
    void focusBox(int index);

    void amountLeft(int index);
    EntryBoxes::Outcome staffCodeLeft();
    void staffLookup();

    SessionSettings& m_session;
    const TransactionMode m_mode;
    const QString m_staffCode;
    bool m_transactionOk = false;
    card::WidgetPrompts m_prompts;
    card::MemberCard m_card;
    EntryBoxes* m_entry;
    bool m_memberFound = false;
    QString m_serialRead; // the serial of the card Connect read, so Save can tell a swapped card

    QLabel* LTITLE = nullptr;
    std::array<QLineEdit*, 12> TXT{}; // 3 and 5 are not used
    QTabWidget* STab = nullptr;
    QLineEdit* STCODE = nullptr;
    QLineEdit* DownLineCode = nullptr;
    QTableView* MData = nullptr;
    QTableView* PData = nullptr;
    std::array<QPushButton*, 6> CBUT{};
    GridModel* m_history = nullptr;
    GridModel* m_pending = nullptr;
};

} // namespace pondar
