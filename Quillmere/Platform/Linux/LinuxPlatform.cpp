#include "Quillmere/Platform/Linux/Desktop/DesktopLoginItem.h"
#include "Quillmere/Platform/Linux/Desktop/DesktopWorkspace.h"
#include "Quillmere/Platform/Linux/Desktop/InfoBundle.h"
#include "Quillmere/Platform/Linux/Desktop/PortalAppearance.h"
#include "Quillmere/Platform/Linux/Desktop/SqliteDefaults.h"
#include "Quillmere/Platform/Linux/Desktop/StatusNotifierHost.h"
#include "Quillmere/Platform/Linux/LinuxSession.h"
#include "Quillmere/Platform/Linux/Plate/X11PlatePanel.h"
#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"
#include "Quillmere/Platform/Linux/Tap/FallbackEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServicePermissionRequest.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11EventTap.h"
#include "Quillmere/Platform/Platform.h"
#include "Quillmere/Platform/Qt/QtMainQueue.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace quillmere {

namespace {

/// How long the start may wait for the key-tap service. An X server's own tap
/// does until it is there. A Wayland desktop has none: before the service has
/// answered nothing can be switched, and to ask the user for the permission
/// would be wrong most of the time.
std::chrono::seconds serviceWait(const LinuxSession& session) {
    return std::chrono::seconds(session.hasWayland ? 10 : 2);
}

}  // namespace

Platform makePlatform() {
    // First, since the service may have to be started meanwhile.
    auto serviceTap =
        std::make_unique<ServiceEventTap>(QDBusConnection::systemBus(), serviceWait(LinuxSession::current()));
    auto workspace = std::make_unique<DesktopWorkspace>();
    auto permissionRequest =
        std::make_unique<ServicePermissionRequest>(*workspace, ServicePermissionRequest::standardDocumentation());
    // Or the next probe would only ask, and the one after that find the answer.
    permissionRequest->onGranted = [tap = QPointer(serviceTap.get())] {
        if (tap) tap->request();
    };
    return {
        .mainQueue = std::make_unique<QtMainQueue>(),
        .userDefaults = std::make_unique<SqliteDefaults>(SqliteDefaults::standardFile()),
        .inputSources = makeLinuxInputSources(),
        .eventTap = std::make_unique<FallbackEventTap>(std::move(serviceTap), std::make_unique<X11EventTap>()),
        .platePanel = std::make_unique<X11PlatePanel>(),
        .appearance = std::make_unique<PortalAppearance>(),
        .trayHost = std::make_unique<StatusNotifierHost>(),
        .loginItem = std::make_unique<DesktopLoginItem>(),
        .bundle = std::make_unique<InfoBundle>(),
        .workspace = std::move(workspace),
        .permissionRequest = std::move(permissionRequest),
    };
}

}  // namespace quillmere
