#pragma once

#include "shell/database.h"
#include "shell/modes.h"

#include <QString>

#include <optional>

class QWidget;

namespace pondar {

struct SessionSettings;

namespace reports {
struct SlipRequest;
}

// The staff member named at the till, who earns the commission.
struct StaffMember {
    QString code; // trimmed, upper case; empty when the operator confirmed an empty box
    QString name;
};

// Each shows its screen modal and returns when it closes; what the screen decided is the return
// value. A fresh screen each time, so nothing of the last showing carries over. Each subsystem
// defines its own in its entry.cpp.

void showMainMenu(SessionSettings& session, QWidget* parent = nullptr); // MAINMENU

void showMemberRegister(SessionSettings& session, QWidget* parent = nullptr); // MFCUST
// MFCOMM: the staff member confirmed with "&Ok"; nothing when the operator left.
std::optional<StaffMember> askStaffMember(SessionSettings& session, QWidget* parent = nullptr);
// SEAFORM over a two-column statement (code, name): the code of the row picked, as the grid
// shows it; nothing when the operator left without a pick.
std::optional<QString> pickFromLookup(SessionSettings& session, const db::Statement& lookup,
                                      QWidget* parent = nullptr);

// MFMAIN in a mode, the staff code preset in its staff box: true when a Save was written to a
// card and posted.
bool runTransaction(SessionSettings& session, TransactionMode mode, const QString& staffCode = {},
                    QWidget* parent = nullptr);

void showSlip(SessionSettings& session, const reports::SlipRequest& request,
              QWidget* parent = nullptr);                                   // PFORM
void showEndOfDay(SessionSettings& session, QWidget* parent = nullptr);     // MEOD
void showMemberReport(SessionSettings& session, QWidget* parent = nullptr); // MRPT
void showLogViewer(SessionSettings& session, QWidget* parent = nullptr);    // MFLOG

void showBalanceDisplay(SessionSettings& session, QWidget* parent = nullptr); // MFBAL
// MSUP: the supervisor's card tools; the caller asks for the password first.
void showSupervisor(SessionSettings& session, QWidget* parent = nullptr);
// MESC: true when the supervisor password was given.
bool askSupervisorPassword(SessionSettings& session, QWidget* parent = nullptr);

} // namespace pondar
