#pragma once

#include <QSqlDatabase>
#include <QSqlTableModel>
#include <QString>
#include <QVariantList>

namespace pondar::members {

// The register's record source: tloy_mt_member in code order, either every member or the one
// picked in a search. Every member is reached a page at a time: the model holds one window of
// at most PageRows consecutive members, and moving past either end of it loads the next one,
// so a register of any size opens, jumps to its end and saves in the time of one page. Edits
// stay in the model until submitAll() (manual submit), which loads the same window again. Codes
// are bound to the statements, never pasted into their text.
class MemberTableModel final : public QSqlTableModel {
public:
    static constexpr int PageRows = 200;

    explicit MemberTableModel(const QSqlDatabase& db, QObject* parent = nullptr);

    // Choose the record source, from its first member; select() loads it.
    void showAll();
    void showOnly(const QString& code);

    // Drops every pending edit and loads the current window afresh.
    bool select() override;

    // Rows in the record source, counted by the database: the model itself only holds a window.
    qint64 totalCount() const;

    // Moves over the whole record source, loading the window that holds the record, and returns
    // its row in the model; -1 when there is none. next() and previous() stay on the row they
    // were given at either end of the source.
    int first();
    int last();
    int next(int row);
    int previous(int row);
    // The row holding this member code, its window loaded; -1 (with the first window loaded)
    // when it is not in the source.
    int findRow(const QString& code);

    // The row itself when the window holds it, else its last row; -1 when it is empty.
    int fetchTo(int row);

    QString code(int row) const;

protected:
    QString selectStatement() const override;

private:
    // Which members the window holds.
    enum class Window {
        Start,   // the first PageRows
        From,    // PageRows from m_anchor on
        Through, // PageRows up to m_anchor
        End,     // the last PageRows
        Only,    // the member picked in a search
    };
    bool load(Window window, const QString& anchor = {});

    Window m_window = Window::Start;
    QString m_anchor;
    bool m_clearing = false;
};

} // namespace pondar::members
