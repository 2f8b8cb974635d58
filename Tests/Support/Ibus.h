#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"

#include <QDBusConnection>
#include <QVariant>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::support {

/// The daemon of IBus with engines of the test's choice, as its user would have
/// them in its settings.
class Ibus {
public:
    /// Its panel, which has its own shortcut, too.
    enum class Panel { none, shown };

    /// Starts it and waits until it answers. `environment` holds the desktop and
    /// the bus, to which `bus` is a connection; `folder` receives its files.
    Ibus(const std::filesystem::path& folder, const Environment& environment, const QDBusConnection& bus,
         const std::vector<std::string>& engines, Panel panel = Panel::none);
    ~Ibus();

    /// For XDG_CONFIG_HOME of whoever looks for it.
    const std::string& configHome() const { return environment_.at("XDG_CONFIG_HOME"); }

    /// Starts it anew, with the engines that it had last.
    void start();
    /// Replaces the engines, as its own settings do.
    void setEngines(const std::vector<std::string>& engines);

    /// Whether it leaves the layouts to the desktop. Here it does from the start
    /// on, other than where nobody has chosen.
    void setLeavesLayouts(bool leaves) { set("use-system-keyboard-layout", leaves); }

    /// How long its shortcut is held before the window with the engines comes, in
    /// milliseconds. -1: it never does, and the shortcut switches when it is
    /// pressed, not when the modifier is let go.
    void setDelayOfWindow(int delay) { set("switcher-delay-time", delay); }

    /// What it says is in use; empty for none.
    std::string current();
    /// Makes this one current by IBus's own command.
    void use(const std::string& engine);

    ChildProcess& process() { return *process_; }

private:
    void startSettings(const QDBusConnection& bus);
    void beginWithHangul() const;
    void connect();
    void set(const char* name, const QVariant& value);
    ChildProcess::Options program(const std::vector<std::string>& arguments, const char* output) const;

    std::filesystem::path folder_;
    Environment environment_;
    Panel panel_;
    std::unique_ptr<ChildProcess> settings_;
    std::unique_ptr<ChildProcess> process_;
    std::optional<QDBusConnection> bus_;  ///< the daemon's own
};

}  // namespace quillmere::support
