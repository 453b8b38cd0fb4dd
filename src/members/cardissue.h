#pragma once

class QWidget;

namespace pondar {

struct SessionSettings;

// Writes the member just saved (session.CurrentCode, session.CurrentName) onto the card on the
// reader. The outcome is shown to the operator only; the register logs the issue either way.
void issueCard(SessionSettings& session, QWidget* parent);

} // namespace pondar
