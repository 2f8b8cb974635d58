#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/XConnection.h"

namespace quillmere::support {

/// A real window manager (openbox), with no shortcuts of its own.
class WindowManager {
public:
    /// Starts it and waits until it manages the screen. `environment` holds
    /// the display; `folder` receives its configuration and output.
    WindowManager(const std::filesystem::path& folder, const Environment& environment, XConnection& connection);

private:
    ChildProcess process_;
};

}  // namespace quillmere::support
