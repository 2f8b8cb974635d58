#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"

#include <QDBusConnection>

#include <filesystem>
#include <memory>
#include <string>

namespace quillmere::support {

/// A Wayland desktop of one's own: KDE's compositor KWin.
class Kwin {
public:
    struct Options {
        std::string layouts = "us,ua,de";
        std::string variants;  ///< ",dvorak,"; empty for none
        /// The X server (":7") in whose window it is; without a screen when empty.
        std::string display;
        bool hasXwayland = false;
    };

    /// Starts it on this bus, and waits until it has its names there and
    /// serves clients. `folder` receives its files.
    Kwin(const std::filesystem::path& folder, const Environment& environment, const std::string& busAddress,
         const QDBusConnection& bus, const Options& options);
    ~Kwin();

    /// Starts it again, once it was killed.
    void start();

    /// What the user does in the desktop's settings: replaces the layouts.
    void setLayouts(const std::string& layouts, const std::string& variants = {});
    /// The index of the layout in use; -1 when it tells none.
    int layoutInUse() const;
    /// What a user's own shortcut does: puts this layout into use.
    void useLayout(unsigned int index) const;

    /// For WAYLAND_DISPLAY: an absolute path.
    std::string waylandDisplay() const;
    /// For DISPLAY, of its Xwayland; empty without one.
    const std::string& xDisplay() const { return xDisplay_; }
    /// For HOME and XDG_CONFIG_HOME of what runs on this desktop.
    std::filesystem::path configHome() const { return folder_ / "config"; }

    ChildProcess& process() { return *process_; }

private:
    void writeLayouts(const std::string& layouts, const std::string& variants) const;
    std::string displayTeller() const;
    void waitForXwayland();

    std::filesystem::path folder_;
    Environment environment_;
    QDBusConnection bus_;
    Options options_;
    std::unique_ptr<ChildProcess> process_;
    std::string xDisplay_;
};

}  // namespace quillmere::support
