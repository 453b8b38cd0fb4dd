#include "shell/textgrid.h"

#include "shell/database.h"
#include "shell/rows.h"
#include "shell/text.h"

#include <pondar/error.h>

namespace pondar {

TextGridModel::TextGridModel(QObject* parent)
    : QAbstractTableModel(parent) {}

void TextGridModel::load(db::Rows& rows, QList<int> dateColumns, QList<int> moneyColumns) {
    beginResetModel();
    m_headers.clear();
    m_text.resize(0); // keeps the block for the next search
    m_cells.clear();
    m_rows = 0;
    m_dateColumns = std::move(dateColumns);
    m_moneyColumns = std::move(moneyColumns);
    try {
        const int columns = rows.columnCount();
        std::vector<bool> money(std::size_t(columns), false);
        for (int c = 0; c < columns; ++c) {
            m_headers.append(rows.columnName(c));
            money[std::size_t(c)] = m_moneyColumns.contains(c);
        }
        while (rows.next()) {
            for (int c = 0; c < columns; ++c) {
                Cell cell;
                cell.start = m_text.size();
                if (!rows.isNull(c)) {
                    if (money[std::size_t(c)]) {
                        try {
                            m_text.append(rows.money(c).format().toLatin1());
                        } catch (const Error&) {
                            rows.appendUtf8(m_text, c); // no till wrote it; shown as stored
                        }
                    } else {
                        rows.appendUtf8(m_text, c);
                    }
                    cell.length = m_text.size() - cell.start;
                }
                m_cells.push_back(cell);
            }
            ++m_rows;
        }
    } catch (...) {
        m_headers.clear();
        m_text.clear();
        m_cells.clear();
        m_rows = 0;
        endResetModel();
        throw;
    }
    endResetModel();
}

int TextGridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

int TextGridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_headers.size());
}

QVariant TextGridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_rows || index.column() >= m_headers.size())
        return {};
    const int column = index.column();
    if (role == Qt::TextAlignmentRole && m_moneyColumns.contains(column))
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    const Cell& cell = m_cells[std::size_t(index.row()) * m_headers.size() + std::size_t(column)];
    if (cell.length < 0)
        return {};
    const QString text = QString::fromUtf8(m_text.constData() + cell.start, cell.length);
    if (role == Qt::DisplayRole && m_dateColumns.contains(column)) {
        const QDateTime moment = db::readDateTime(text);
        return moment.isValid() ? displayDateTime(moment) : text;
    }
    return text;
}

QVariant TextGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && (role == Qt::DisplayRole || role == Qt::EditRole) &&
        section >= 0 && section < m_headers.size())
        return m_headers.at(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

bool TextGridModel::setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                                  int role) {
    if (orientation != Qt::Horizontal || section < 0 || section >= m_headers.size() ||
        (role != Qt::DisplayRole && role != Qt::EditRole))
        return false;
    m_headers[section] = value.toString();
    Q_EMIT headerDataChanged(orientation, section, section);
    return true;
}

} // namespace pondar
