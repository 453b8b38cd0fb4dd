#pragma once

class QWidget;

namespace pondar {

struct SessionSettings;

enum class Screen { MainMenu, Member, StaffEntry, Transaction, Log, EndOfDay, Balance };

// Shows a screen modal and returns when it closes; false when this build has no such screen.
bool showScreen(Screen screen, SessionSettings& session, QWidget* parent = nullptr);

} // namespace pondar
