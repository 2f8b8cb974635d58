#pragma once

#include "Tests/Support/Compositor.h"
#include "Tests/Support/Screen.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/SettingsPortal.h"
#include "Tests/Support/StoredSettings.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TrayPanel.h"
#include "Tests/Support/Typist.h"
#include "Tests/Support/WindowManager.h"
#include "Tests/Support/XServer.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::support {

/// A whole desktop of one's own: X server, window manager, message bus, panel
/// with a tray, settings portal, and a user's folders. Nothing of it touches,
/// or depends on, the machine's own session.
class Desktop {
public:
    struct Options {
        std::string layouts = "us,ua,de";
        std::string variants;
        QSize screen{1280, 800};
        /// Where the monitors are on the screen; none: one that fills it.
        std::vector<QRect> monitors;
        bool hasCompositor = false;
        bool compositorDrawsShadows = false;
        bool hasTray = true;
        /// No value: a desktop without a settings portal.
        std::optional<SettingsPortal::Scheme> scheme = SettingsPortal::Scheme::light;
    };

    /// Starts everything and waits until it works.
    explicit Desktop(const Options& options);

    /// What a program of this desktop finds in its environment.
    const Environment& environment() const { return environment_; }
    const std::string& display() const { return server_->display(); }
    /// For logs and other leftovers of what runs here.
    const std::filesystem::path& folder() const { return folder_.path(); }
    std::filesystem::path configHome() const { return folder_.path() / "config"; }
    StoredSettings settings() const { return StoredSettings(configHome()); }

    XServer& server() { return *server_; }
    XConnection& connection() { return server_->connection(); }
    Typist& typist() { return *typist_; }
    Screen& screen() { return *screen_; }
    SessionBus& bus() { return *bus_; }

    /// The panel; null until there is one.
    TrayPanel* tray() { return tray_.get(); }
    /// Starts the panel of a desktop that came up without one.
    TrayPanel& startTray();
    /// Ends the panel.
    void stopTray() { tray_.reset(); }
    /// The portal; null without one.
    SettingsPortal* portal() { return portal_.get(); }

    /// Ends the message bus, with the panel and the portal, and starts them anew,
    /// the bus at the same address.
    void restartBus();

private:
    void startPortal();

    // In the order of starting; the end takes them down the other way round.
    TemporaryFolder folder_;
    Environment environment_;
    std::optional<SettingsPortal::Scheme> scheme_;
    std::unique_ptr<SessionBus> bus_;
    std::unique_ptr<XServer> server_;
    std::unique_ptr<WindowManager> windowManager_;
    std::unique_ptr<Compositor> compositor_;
    std::unique_ptr<TrayPanel> tray_;
    std::unique_ptr<SettingsPortal> portal_;
    std::unique_ptr<Typist> typist_;
    std::unique_ptr<Screen> screen_;
};

}  // namespace quillmere::support
