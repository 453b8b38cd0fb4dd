#include "members/cardissue.h"

namespace pondar {

void issueCard(SessionSettings&, QWidget*) {
    // Card writing is added with the card layer.
}

} // namespace pondar
