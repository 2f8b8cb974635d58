#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Desktop.h"

#include <QRect>

#include <memory>

namespace quillmere::support {

/// A panel as people use it, with nothing on it but a place for tray icons.
class RealPanel {
public:
    enum class Kind {
        xfce,    ///< asks icons over the bus and draws them itself
        trayer,  ///< lends icons a window to draw into
    };

    /// Whether there is such a panel on this machine.
    static bool isInstalled(Kind kind);

    /// Starts it on a desktop without a tray and waits until icons have their
    /// place. `desktop` must outlive this.
    RealPanel(Kind kind, bool isDark, Desktop& desktop);

    /// Where it is on the screen, in pixels.
    QRect frame() const;

private:
    void startXfce(bool isDark);
    void startTrayer(bool isDark);
    std::unique_ptr<ChildProcess> start(std::vector<std::string> arguments);

    Desktop& desktop_;
    const char* title_ = "";  ///< of its window
    std::unique_ptr<ChildProcess> settings_;
    std::unique_ptr<ChildProcess> panel_;
};

}  // namespace quillmere::support
