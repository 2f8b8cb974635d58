#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/Keys.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace quillmere::support {

/// The built program, running on a desktop.
class Program {
public:
    struct Options {
        Environment additions;          ///< to the desktop's environment
        std::function<void()> prepare;  ///< runs in the child before the program. Only system calls.
    };

    /// Starts it, without waiting for anything.
    Program(const std::filesystem::path& program, Desktop& desktop) : Program(program, desktop, Options{}) {}
    Program(const std::filesystem::path& program, Desktop& desktop, const Options& options);

    ChildProcess& process() { return process_; }

    /// Waits until it holds the X server's grab of this key combination, after
    /// which no press escapes it. `modifiers` are core modifier bits. False
    /// when it does not come to that, or ends.
    bool waitForGrab(Key key, unsigned int modifiers);
    /// Whether some client holds it at this moment.
    bool holdsGrab(Key key, unsigned int modifiers) const;

    /// Waits for its tray icon.
    bool waitForTrayItem();

    /// Its plate's window while that is on the screen; the frame is the plate's
    /// own, without its shadow.
    std::optional<WindowInfo> plate() const;
    bool waitForPlate() const;
    bool waitForNoPlate() const;

private:
    Desktop& desktop_;
    ChildProcess process_;
};

}  // namespace quillmere::support
