#pragma once

#include "shell/entryboxes.h"

#include <QDialog>

#include <array>

class QCheckBox;
class QDataWidgetMapper;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTableView;

namespace pondar {

class GridModel;

struct SessionSettings;
class DataNavigator;

namespace members {
class MemberTableModel;
}

// The member register: browse, find, add, edit and remove the members of tloy_mt_member. The
// boxes are bound to the current record; nothing reaches the table before "&Save", and leaving
// the screen drops what was not saved.
class MFCUST final : public QDialog {
    Q_OBJECT

public:
    explicit MFCUST(SessionSettings& session, QWidget* parent = nullptr);
    ~MFCUST() override;

    void done(int result) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    void load();
    void reload();
    void moveTo(int row);
    void clearBoxes();
    void refreshCount();
    void refreshHistory();
    bool adding() const;
    void toBrowsing();

    EntryBoxes::Outcome checkCode();
    EntryBoxes::Outcome checkSex();
    EntryBoxes::Outcome checkIntroducer();
    void introducerLookup();

    void addNew();
    void cancel();
    void remove();
    void save();
    void search();
    void issueCard(const QString& code, const QString& name);

    SessionSettings& m_session;
    std::array<QLineEdit*, 13> TXT{};
    std::array<QLabel*, 10> LBL{};
    std::array<QPushButton*, 6> CBUT{};
    QCheckBox* Check1 = nullptr;
    QCheckBox* NewCode = nullptr;
    DataNavigator* MData = nullptr;
    QTabWidget* SSTab1 = nullptr;
    QTableView* HData = nullptr;

    GridModel* m_history = nullptr;
    members::MemberTableModel* m_model = nullptr;
    QDataWidgetMapper* m_mapper = nullptr;
    EntryBoxes* m_boxes = nullptr;
    int m_rowBeforeNew = -1;
};

} // namespace pondar
