#include "Quillmere/Platform/Linux/Desktop/InfoBundle.h"
#include "Quillmere/Platform/Linux/Desktop/PortalAppearance.h"
#include "Quillmere/Platform/Linux/Desktop/SqliteDefaults.h"
#include "Quillmere/Platform/Linux/Desktop/StatusNotifierHost.h"
#include "Quillmere/Platform/Linux/Doctor/FnKeyboards.h"
#include "Quillmere/Platform/Linux/Doctor/MethodFinding.h"
#include "Quillmere/Platform/Linux/Doctor/SessionFindings.h"
#include "Quillmere/Platform/Linux/Doctor/ShortcutHolders.h"
#include "Quillmere/Platform/Linux/Doctor/StoreFinding.h"
#include "Quillmere/Platform/Linux/Doctor/TapFindings.h"
#include "Quillmere/Platform/Linux/KernelKeyboards.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtension.h"
#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"
#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandKeyBinds.h"
#include "Quillmere/Platform/Linux/Tap/Kde/KdeGlobalShortcuts.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayKeyBindings.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>
#include <string>

namespace quillmere {

namespace {

using namespace std::chrono_literals;

/// Lets the event loop run until the condition holds, but not for ever.
template <typename Condition>
void waitFor(Condition condition, std::chrono::milliseconds patience) {
    const QDeadlineTimer deadline(patience);
    QTimer alarm;
    alarm.start(patience);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

Finding trayFinding() {
    const StatusNotifierHost host;
    waitFor([&] { return host.isAvailable(); }, 2s);
    if (host.isAvailable()) return {"Tray", "there is one", {}};
    return {"Tray", "none",
            "Start Quillmere a second time to open its settings, or add a tray to the desktop's panel."};
}

Finding portalFinding() {
    const PortalAppearance appearance;
    waitFor([&] { return appearance.hasPortal().has_value(); }, 5s);
    if (appearance.hasPortal().value_or(false))
        return {"Dark or light",
                appearance.isDark() ? "the desktop's portal says dark" : "the desktop's portal says light",
                {}};
    return {"Dark or light", "no portal tells: light is assumed",
            "To follow the desktop, install xdg-desktop-portal with the desktop's own part of it."};
}

class LinuxExamination final : public Examination {
public:
    InputSourceService& inputSources() override { return *inputSources_; }
    const Bundle& bundle() override { return bundle_; }

    std::vector<Finding> session() override {
        return {programFinding(bus_), desktopFinding(session_, bus_), methodFinding(inputSources_->framework())};
    }
    std::vector<Finding> keyboard(const std::vector<Shortcut>& shortcuts) override;
    Stored stored() override { return storedIn(SqliteDefaults::standardFile()); }
    std::vector<Finding> surroundings() override { return {trayFinding(), portalFinding()}; }

private:
    Finding holders(const TapChoices& choices, const std::vector<Shortcut>& shortcuts);

    LinuxSession session_ = LinuxSession::current();
    QDBusConnection bus_ = QDBusConnection::sessionBus();
    InfoBundle bundle_;
    std::unique_ptr<ComposedInputSources> inputSources_ = makeLinuxInputSources();
};

std::vector<Finding> LinuxExamination::keyboard(const std::vector<Shortcut>& shortcuts) {
    const TapChoices choices{.session = session_,
                             .hasX11Tap = session_.isX11() && X11Connection::open() != nullptr,
                             .hasGnome = isOnBus(bus_, GnomeExtension::name),
                             .hasKde = !session_.isX11() && KdeGlobalShortcuts::areThere(bus_),
                             .hasSway = !session_.isX11() && SwayKeyBindings::reservedAt(session_.swaySocket),
                             .hasHyprland = !session_.isX11() && HyprlandKeyBinds::reservedAt(session_.hyprlandFolder),
                             .service = ServiceAccess::asked(QDBusConnection::systemBus())};
    std::vector<Finding> rows = tapFindings(choices);
    rows.push_back(holders(choices, shortcuts));
    const FnSight sight = choices.service.isGiven() ? FnSight::every : session_.isX11() ? FnSight::x11 : FnSight::none;
    rows.push_back(fnFinding(kernelInputDevices(), sight));
    return rows;
}

Finding LinuxExamination::holders(const TapChoices& choices, const std::vector<Shortcut>& shortcuts) {
    if (choices.hasX11Tap) return x11Holders(shortcuts);
    if (choices.hasSway) return swayHolders(shortcuts, session_.swaySocket, *inputSources_);
    if (choices.hasHyprland) return hyprlandHolders(shortcuts, session_.hyprlandFolder, *inputSources_);
    if (choices.hasKde) return kdeHolders(shortcuts, bus_, *inputSources_);
    return untoldHolders(shortcuts);
}

}  // namespace

std::unique_ptr<Examination> makeExamination() {
    return std::make_unique<LinuxExamination>();
}

}  // namespace quillmere
