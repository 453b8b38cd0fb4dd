#pragma once

class QTableView;

namespace pondar {

// How the screens' read-only grids read: whole rows picked, one line to a row (a date-time never
// wraps), the last column taking the room left.
void setUpGrid(QTableView* view);
// After a load: each column at least as wide as its title and the values fetched so far, so an
// amount is never cut to its leading digits.
void widenToContents(QTableView* view);

} // namespace pondar
