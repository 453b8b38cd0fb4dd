#include "members/gridformat.h"

#include "members/memberdata.h"

#include <pondar/error.h>

namespace pondar {

GridFormat::GridFormat(Kind kind, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_kind(kind) {}

QString GridFormat::displayText(const QVariant& value, const QLocale&) const {
    if (m_kind == Kind::Date)
        return members::dateText(value);
    try {
        return members::moneyText(value);
    } catch (const Error&) {
        // Painting cannot report; a value beyond the money range shows as stored.
        return value.toString();
    }
}

void GridFormat::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    if (m_kind == Kind::Money)
        option->displayAlignment = Qt::AlignRight | Qt::AlignVCenter;
}

} // namespace pondar
