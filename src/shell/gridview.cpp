#include "shell/gridview.h"

#include <QHeaderView>
#include <QTableView>

#include <algorithm>

namespace pondar {

void setUpGrid(QTableView* view) {
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setWordWrap(false);
    view->setTextElideMode(Qt::ElideRight);
    view->horizontalHeader()->setStretchLastSection(true);
    view->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void widenToContents(QTableView* view) {
    const QHeaderView* header = view->horizontalHeader();
    const QAbstractItemView* cells = view; // where the size hint is public
    const int last = header->count() - 1;
    for (int c = 0; c < last; ++c) {
        if (view->isColumnHidden(c))
            continue;
        const int wanted = std::max(cells->sizeHintForColumn(c), header->sectionSizeHint(c));
        if (view->columnWidth(c) < wanted)
            view->setColumnWidth(c, wanted);
    }
}

} // namespace pondar
