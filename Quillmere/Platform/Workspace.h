#pragma once

#include <string>
#include <vector>

class QColor;
class QUrl;
class QWidget;

namespace quillmere {

/// What the desktop does for a program. Main thread only.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    /// Opens an address with the user's own handler; false when there is none.
    virtual bool open(const QUrl& url) = 0;

    /// The system's alert sound.
    virtual void beep() = 0;

    /// The user's languages, the preferred one first, as "en-GB" or "uk_UA".
    virtual std::vector<std::string> preferredLanguages() const = 0;

    /// Makes the title bar one surface with the window's background, which is
    /// `light` or, in dark appearance, `dark`; nothing where programs have no say
    /// in it. Once, before the window is shown.
    virtual void blendTitleBar(QWidget& window, const QColor& light, const QColor& dark) = 0;

    /// Activates the program and brings this window to the front.
    virtual void bringToFront(QWidget& window) = 0;
};

}  // namespace quillmere
