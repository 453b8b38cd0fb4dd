#pragma once

#include <QStyledItemDelegate>

namespace pondar {

// Shows a grid column of stored values the way the screens print them: money as "#0.00",
// right-aligned, or dates as "dd/mm/yyyy hh:mm:ss".
class GridFormat final : public QStyledItemDelegate {
    Q_OBJECT

public:
    enum class Kind { Money, Date };
    GridFormat(Kind kind, QObject* parent);

    QString displayText(const QVariant& value, const QLocale& locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    Kind m_kind;
};

} // namespace pondar
