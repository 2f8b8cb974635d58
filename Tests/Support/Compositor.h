#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/XConnection.h"

namespace quillmere::support {

/// A real compositor (picom), without fades or any other effect of its own but
/// shadows, if wanted: what is on the screen is what the windows drew.
class Compositor {
public:
    /// Starts it and waits until it composites. `environment` holds the
    /// display; `folder` receives the output.
    Compositor(const std::filesystem::path& folder, const Environment& environment, XConnection& connection,
               bool drawsShadows);

private:
    ChildProcess process_;
};

}  // namespace quillmere::support
