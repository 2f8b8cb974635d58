#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"

#include <QJsonArray>
#include <QJsonObject>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::support {

/// A Wayland desktop of one's own: the compositor sway. It runs as a user
/// without rights where the tests are root, since it refuses root.
class Sway {
public:
    struct Options {
        std::string layouts = "us,ua,de";
        std::string variants;
        /// The X server (":7") in whose window it runs, with that server's
        /// keyboard as its own; nowhere and with no keyboard when empty.
        std::string display;
        bool hasXwayland = false;
        std::string configuration;  ///< further lines
    };

    /// Starts it and waits until it answers. `folder` receives its files.
    Sway(const std::filesystem::path& folder, const Environment& environment, const Options& options);

    /// For SWAYSOCK.
    std::string socket() const;
    /// For WAYLAND_DISPLAY: an absolute path.
    const std::string& waylandDisplay() const { return waylandDisplay_; }
    /// For DISPLAY, of its Xwayland; empty without one.
    const std::string& xDisplay() const { return xDisplay_; }

    /// Runs a command of its own language, as a user's key binding would.
    /// False when it reports a failure.
    bool command(const std::string& text) const;

    /// What it tells of its input devices.
    QJsonArray inputs() const;
    /// How a kind of keyboards is called, in older and in newer versions.
    using KeyboardNames = std::array<std::string_view, 2>;
    /// The layout in use on each of the keyboards of a kind, newest first.
    std::vector<int> layoutsInUse(const KeyboardNames& names) const;
    /// Whether it has a window with this title.
    bool showsTitle(const std::string& title) const;
    /// The title of the window with the keyboard focus; empty when none has it.
    std::string focusedTitle() const;

    ChildProcess& process() { return *process_; }

    /// The keyboard of the X server, and one that a program has made.
    static constexpr KeyboardNames serverKeyboard{"0:0:X11_keyboard", "0:0:x11-keyboard"};
    static constexpr KeyboardNames virtualKeyboard{"0:0:virtual_keyboard", "0:0:wlr_virtual_keyboard_v1"};

private:
    void writeConfiguration(const Options& options) const;
    void takeEnvironment();
    QJsonObject tree() const;
    /// Runs swaymsg; its output in `reply`. The exit code.
    int message(const std::vector<std::string>& arguments, const std::filesystem::path& reply) const;

    std::filesystem::path folder_;
    Environment environment_;
    std::unique_ptr<ChildProcess> process_;
    std::string waylandDisplay_;
    std::string xDisplay_;
};

}  // namespace quillmere::support
