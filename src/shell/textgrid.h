#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

namespace pondar {

namespace db {
class Rows;
}

// A read-only grid of one statement's rows, for the report screens: date columns shown
// "dd/mm/yyyy hh:mm:ss", money columns "#0.00" right-aligned, everything else as stored, a
// null as an empty cell. The rows (one card's lines, one business date's log) are read in one
// pass into one block of UTF-8 text, so no result stays open on the connection and no value
// costs an object of its own; cells are turned into strings only when shown.
class TextGridModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit TextGridModel(QObject* parent = nullptr);

    // Reads every row. Throws db::DatabaseError, leaving the grid empty.
    void load(db::Rows& rows, QList<int> dateColumns, QList<int> moneyColumns);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                       int role = Qt::EditRole) override;

private:
    struct Cell {
        qsizetype start = 0;
        qsizetype length = -1; // -1: null
    };

    QStringList m_headers;
    QList<int> m_dateColumns;
    QList<int> m_moneyColumns;
    QByteArray m_text;
    std::vector<Cell> m_cells;
    int m_rows = 0;
};

} // namespace pondar
