#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"
#include "Tests/Support/Keys.h"
#include "Tests/Support/XConnection.h"

#include <QRect>
#include <QSize>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::support {

/// A virtual X server with a keyboard of its own (Xvfb), on a display number
/// that it picks itself.
class XServer {
public:
    /// Starts it and waits until it answers. `folder` receives its output and
    /// must outlive this.
    XServer(const std::filesystem::path& folder, const Environment& environment, QSize screen);

    /// ":7"
    const std::string& display() const { return display_; }

    /// Replaces the keyboard's layouts, as a user would: "us,ua,de", variants
    /// as ",,nodeadkeys" (empty for none).
    void setLayouts(const std::string& layouts, const std::string& variants = {});

    /// Divides the screen among several monitors, in place of an earlier division;
    /// none: one that fills it. The first is the primary one.
    void setMonitors(const std::vector<QRect>& frames);

    /// The index of the layout in use.
    int group();
    void setGroup(int group);

    /// Software repeat of held keys, in milliseconds.
    void setRepeat(unsigned int delay, unsigned int interval);

    /// Whether some client holds the grab of this key combination at this
    /// moment. `modifiers` are core modifier bits.
    bool isGrabbed(Key key, unsigned int modifiers) const;

    XConnection& connection() { return *connection_; }

private:
    void xrandr(const std::vector<std::string>& arguments) const;

    Environment environment_;
    std::unique_ptr<ChildProcess> process_;
    std::string display_;
    std::unique_ptr<XConnection> connection_;
    std::size_t monitors_ = 0;  ///< how many the screen is divided among; none undivided
};

}  // namespace quillmere::support
