#pragma once

#include <pondar/currency.h>
#include <pondar/error.h>
#include <pondar/pondar_export.h>

#include <QSqlDatabase>
#include <QString>

#include <memory>

namespace pondar {

struct SessionSettings;

// The component's entry point. A host creates one and keeps it; each StartApp call shows the
// screens of one start mode, modal, and returns when the user has closed them. Call it on the
// GUI thread of a running QApplication.
//
// StartApp returns true only when a top-up or a withdrawal was written to a card and posted in
// that call. It throws pondar::Error when the call cannot go on (the host's connection is not
// open, or the component's tables cannot be created on it); screens report their own failures
// in message boxes and never throw to the host.
class PONDAR_EXPORT GenClass final {
public:
    GenClass();
    ~GenClass();
    GenClass(const GenClass&) = delete;
    GenClass& operator=(const GenClass&) = delete;

    bool StartApp(const QString& CStaffCode, const QString& bConnString, const QString& cBzDate,
                  const QString& cPrinter, const QString& OutletCode, const QString& IniPath,
                  const QSqlDatabase& CConn, const QString& CAppType, const QString& CTrsNo,
                  const QString& CBillNo, pondar::Currency CAppValue);

    // The customer balance display alone; returns false when it closes.
    bool ShowEnquiry();

    // The session state the screens share, for the component's own tests and tools.
    SessionSettings& session();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace pondar
