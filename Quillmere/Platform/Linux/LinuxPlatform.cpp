#include "Quillmere/Platform/Linux/Desktop/DesktopLoginItem.h"
#include "Quillmere/Platform/Linux/Desktop/Gnome/GnomeExtensionOffer.h"
#include "Quillmere/Platform/Linux/Desktop/Gnome/GnomeTrayHost.h"
#include "Quillmere/Platform/Linux/Desktop/InfoBundle.h"
#include "Quillmere/Platform/Linux/Desktop/MissingTray.h"
#include "Quillmere/Platform/Linux/Desktop/PortalAppearance.h"
#include "Quillmere/Platform/Linux/Desktop/SqliteDefaults.h"
#include "Quillmere/Platform/Linux/Desktop/StatusNotifierHost.h"
#include "Quillmere/Platform/Linux/KernelKeyboards.h"
#include "Quillmere/Platform/Linux/LinuxSession.h"
#include "Quillmere/Platform/Linux/Plate/LayerShellPlatePanel.h"
#include "Quillmere/Platform/Linux/Plate/X11PlatePanel.h"
#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"
#include "Quillmere/Platform/Linux/Tap/FallbackEventTap.h"
#include "Quillmere/Platform/Linux/Tap/FirstEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Kde/KdeEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServicePermissionRequest.h"
#include "Quillmere/Platform/Linux/Tap/ServiceOffer.h"
#include "Quillmere/Platform/Linux/Tap/ShortcutConflicts.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayEventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11FirstEventTap.h"
#include "Quillmere/Platform/Platform.h"
#include "Quillmere/Platform/Qt/QtMainQueue.h"
#include "Quillmere/Platform/Qt/QtWorkspace.h"

#include <QPointer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

/// How long the start may wait for the key-tap service where it is the tap: few
/// Wayland desktops have one of their own. Before the service has answered nothing
/// can be switched, and to ask the user for the permission would be wrong most
/// of the time.
constexpr std::chrono::seconds serviceWait(10);
/// The bus's own limit for starting a service that nobody waits for.
constexpr std::chrono::seconds serviceStart(25);

std::unique_ptr<ServiceEventTap> makeServiceTap(std::chrono::seconds firstWait) {
    return std::make_unique<ServiceEventTap>(QDBusConnection::systemBus(), firstWait);
}

std::unique_ptr<EventTap> makeX11Tap() {
    return std::make_unique<X11FirstEventTap>(std::make_unique<X11EventTap>(),
                                              [] { return makeServiceTap(serviceStart); });
}

/// Of those that there may be, the ones that switch by themselves first.
std::unique_ptr<EventTap> makeDesktopTap(ComposedInputSources& sources, std::vector<std::unique_ptr<Offer>>& offers) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    InputSourceService& layouts = sources.desktop();
    std::vector<std::unique_ptr<EventTap>> taps;
    const auto add = [&](auto tap, const QString& conflict) {
        offers.push_back(std::make_unique<ShortcutConflicts>(tap->taken(), conflict));
        taps.push_back(std::move(tap));
    };
    add(std::make_unique<GnomeEventTap>(bus),
        QStringLiteral("GNOME has %1 for something else, so it does not switch here. Choose another shortcut, or "
                       "change it in GNOME's settings."));
    add(std::make_unique<SwayEventTap>(LinuxSession::current().swaySocket, layouts),
        QStringLiteral("sway's own configuration has %1, so it does not switch here. Choose another shortcut, or "
                       "take it out there."));
    add(std::make_unique<HyprlandEventTap>(LinuxSession::current().hyprlandFolder, layouts),
        QStringLiteral("Hyprland has a bind of your own on %1, so it does not switch here. Choose another shortcut, or "
                       "take the bind out of Hyprland's configuration."));
    add(std::make_unique<KdeEventTap>(bus, layouts),
        QStringLiteral("KDE has %1 for something else, so it does not switch here. Choose another shortcut, or "
                       "change it in the System Settings."));
    return std::make_unique<FirstEventTap>(std::move(taps), sources);
}

/// The service's where it gives one, else the desktop's own.
std::unique_ptr<FallbackEventTap> makeWaylandTap(std::unique_ptr<ServiceEventTap> service,
                                                 ServicePermissionRequest& permissionRequest,
                                                 ComposedInputSources& sources,
                                                 std::vector<std::unique_ptr<Offer>>& offers) {
    // Or the next probe would only ask, and the one after that find the answer.
    permissionRequest.onGranted = [tap = QPointer(service.get())] {
        if (tap) tap->request();
    };
    return std::make_unique<FallbackEventTap>(std::move(service), makeDesktopTap(sources, offers));
}

std::unique_ptr<Offer> makeExtensionOffer() {
    return std::make_unique<GnomeExtensionOffer>(QDBusConnection::sessionBus(), GnomeExtensionOffer::standardProgram());
}

bool isGnome(const LinuxSession& session) {
    return std::ranges::find(session.desktops, "GNOME") != session.desktops.end();
}

std::unique_ptr<TrayHost> makeTrayHost(const LinuxSession& session) {
    if (isGnome(session)) return std::make_unique<GnomeTrayHost>(QDBusConnection::sessionBus());
    return std::make_unique<StatusNotifierHost>();
}

std::unique_ptr<PlatePanel> makePlatePanel(const LinuxSession& session, const Appearance& appearance) {
    auto panel = session.hasWayland ? LayerShellPlatePanel::create(appearance) : nullptr;
    return panel ? std::move(panel) : std::make_unique<X11PlatePanel>();
}

}  // namespace

Platform makePlatform() {
    const LinuxSession session = LinuxSession::current();
    auto workspace = std::make_unique<QtWorkspace>();
    auto permissionRequest =
        std::make_unique<ServicePermissionRequest>(*workspace, ServicePermissionRequest::standardDocumentation());
    // First, since it may have to be started meanwhile.
    auto service = session.isX11() ? nullptr : makeServiceTap(serviceWait);
    auto inputSources = makeLinuxInputSources();
    std::unique_ptr<EventTap> eventTap;
    auto trayHost = makeTrayHost(session);
    std::vector<std::unique_ptr<Offer>> offers;
    offers.push_back(std::make_unique<MissingTray>(*trayHost));
    if (session.isX11()) {
        eventTap = makeX11Tap();
    } else {
        auto tap = makeWaylandTap(std::move(service), *permissionRequest, *inputSources, offers);
        offers.push_back(std::make_unique<ServiceOffer>(*tap, *permissionRequest));
        if (isGnome(session)) offers.push_back(makeExtensionOffer());
        eventTap = std::move(tap);
    }
    auto appearance = std::make_unique<PortalAppearance>();
    auto platePanel = makePlatePanel(session, *appearance);
    return {
        .mainQueue = std::make_unique<QtMainQueue>(),
        .userDefaults = std::make_unique<SqliteDefaults>(SqliteDefaults::standardFile()),
        .inputSources = std::move(inputSources),
        .eventTap = std::move(eventTap),
        .keyboards = std::make_unique<KernelKeyboards>(),
        .platePanel = std::move(platePanel),
        .appearance = std::move(appearance),
        .trayHost = std::move(trayHost),
        .loginItem = std::make_unique<DesktopLoginItem>(),
        .bundle = std::make_unique<InfoBundle>(),
        .workspace = std::move(workspace),
        .permissionRequest = std::move(permissionRequest),
        .offers = std::move(offers),
    };
}

}  // namespace quillmere
