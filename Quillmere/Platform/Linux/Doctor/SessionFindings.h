#pragma once

#include "Quillmere/Platform/Finding.h"
#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <QDBusConnection>

namespace quillmere {

/// Whether somebody has this name on the bus.
bool isOnBus(const QDBusConnection& bus, const QString& name);

/// Whether the program runs in this session.
Finding programFinding(const QDBusConnection& bus);

/// The desktop, its version where it tells, and what shows windows.
Finding desktopFinding(const LinuxSession& session, const QDBusConnection& bus);

}  // namespace quillmere
