#include "members/seaform.h"

#include "members/memberdata.h"
#include "shell/database.h"
#include "shell/messages.h"
#include "shell/session.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QSqlQueryModel>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace pondar {

SEAFORM::SEAFORM(SessionSettings& session, const db::Statement& lookup, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , DataGrid1(new QTableView(this))
    , Command1(new QPushButton(u"&Close"_s, this))
    , m_model(new QSqlQueryModel(this)) {
    setObjectName(u"SEAFORM"_s);
    setWindowTitle(u"Search"_s);
    QFont tahoma = font();
    tahoma.setFamily(u"Tahoma"_s);
    setFont(tahoma);

    DataGrid1->setObjectName(u"DataGrid1"_s);
    DataGrid1->setModel(m_model);
    DataGrid1->setSelectionBehavior(QAbstractItemView::SelectRows);
    DataGrid1->setSelectionMode(QAbstractItemView::SingleSelection);
    DataGrid1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    DataGrid1->verticalHeader()->setDefaultSectionSize(DataGrid1->fontMetrics().height() + 6);
    DataGrid1->installEventFilter(this);
    DataGrid1->viewport()->installEventFilter(this);

    Command1->setObjectName(u"Command1"_s);
    Command1->setAutoDefault(false);
    connect(Command1, &QPushButton::clicked, this, [this] { guarded(this, [&] { close(); }); });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(DataGrid1);
    layout->addLayout(buttons);
    resize(520, 360);

    guarded(this, [&] { fill(lookup); });
}

void SEAFORM::fill(const db::Statement& lookup) {
    DataGrid1->setEnabled(false);
    m_model->clear();
    m_model->setQuery(db::scrollable(m_session.Conn, lookup.sql, lookup.values));
    DataGrid1->setColumnWidth(0, members::twipsToPixels(2000));
    DataGrid1->setColumnWidth(1, members::twipsToPixels(4500));
    if (m_model->rowCount() == 0)
        return;
    DataGrid1->setEnabled(true);
    DataGrid1->setCurrentIndex(m_model->index(0, 0));
    DataGrid1->setFocus();
}

void SEAFORM::showEvent(QShowEvent* event) {
    m_picked.clear();
    QDialog::showEvent(event);
}

bool SEAFORM::eventFilter(QObject* watched, QEvent* event) {
    if (watched == DataGrid1 && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            guarded(this, [&] { pick(); });
            return true;
        }
    }
    // A double-click anywhere on the rows takes the current row, as the grid always did.
    if (watched == DataGrid1->viewport() && event->type() == QEvent::MouseButtonDblClick) {
        guarded(this, [&] { pick(); });
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void SEAFORM::pick() {
    const QModelIndex current = DataGrid1->currentIndex();
    if (!DataGrid1->isEnabled() || !current.isValid())
        return;
    m_picked = m_model->index(current.row(), 0).data(Qt::DisplayRole).toString();
    accept();
}

} // namespace pondar
