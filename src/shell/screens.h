#pragma once

class QWidget;

namespace pondar {

struct SessionSettings;

enum class Screen {
    MainMenu,     // MAINMENU
    Member,       // MFCUST
    StaffEntry,   // MFCOMM
    Lookup,       // SEAFORM
    Transaction,  // MFMAIN
    Slip,         // PFORM
    Log,          // MFLOG
    EndOfDay,     // MEOD
    MemberReport, // MRPT
    Balance,      // MFBAL
    Password,     // MESC
};

// Shows a screen modal and returns when it closes; false when this build has no such screen.
// Screens reach each other only through this and the session.
bool showScreen(Screen screen, SessionSettings& session, QWidget* parent = nullptr);

// Each subsystem's screens, defined in its own folder (entry.cpp); false where not built yet.
bool showCardScreen(Screen screen, SessionSettings& session, QWidget* parent);
bool showMemberScreen(Screen screen, SessionSettings& session, QWidget* parent);
bool showTransactionScreen(Screen screen, SessionSettings& session, QWidget* parent);
bool showReportScreen(Screen screen, SessionSettings& session, QWidget* parent);
bool showShellScreen(Screen screen, SessionSettings& session, QWidget* parent);

} // namespace pondar
