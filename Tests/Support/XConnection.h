#pragma once

#include <QRect>

#include <optional>
#include <string>
#include <vector>

// Xlib is kept out of this header, since its macros break other headers.
struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): so Xlib names it

namespace quillmere::support {

/// A top-level or deeper window as the server describes it.
struct WindowInfo {
    unsigned long id = 0;
    std::string title;
    std::string className;
    QRect frame;  ///< on the screen, in pixels
    bool isMapped = false;
    bool isOverrideRedirect = false;
    double opacity = 1;  ///< what it asks of a compositor

    friend bool operator==(const WindowInfo&, const WindowInfo&) = default;
};

/// One client's connection to an X server. An error that the server reports is
/// kept for `takeError` instead of ending the process, because windows of
/// other programs vanish at any time. One thread.
class XConnection {
public:
    /// `display` as ":7"; throws when there is no such server.
    explicit XConnection(const std::string& display);
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    _XDisplay* display() const { return display_; }
    unsigned long root() const;
    QSize screenSize() const;

    /// Waits until the server has processed everything sent so far.
    void synchronize() const;

    /// Synchronizes; the code of the last error that the server has reported
    /// to this process since the last call, 0 without one.
    int takeError() const;

    unsigned long atom(const char* name) const;

    /// Whether some client owns this selection.
    bool isSelectionOwned(const char* name) const;

    /// Up to `limit` elements of a window's 32-bit property.
    std::vector<unsigned long> numbers(unsigned long window, const char* property, int limit) const;
    /// The first element of a window's 32-bit property.
    std::optional<unsigned long> number(unsigned long window, const char* property) const;
    /// The bytes of a window's 8-bit property.
    std::optional<std::string> text(unsigned long window, const char* property) const;

    /// All windows of the server, the lowest first, parents before children.
    std::vector<WindowInfo> windows() const;
    /// The topmost mapped window with this title; no value when there is none.
    std::optional<WindowInfo> visibleWindow(const std::string& title) const;
    /// The window with the keyboard focus.
    unsigned long focusedWindow() const;
    /// Where the pointer is.
    QPoint pointer() const;
    /// Whether the first window is above the second; both top-level.
    bool isAbove(unsigned long upper, unsigned long lower) const;

private:
    std::optional<WindowInfo> describe(unsigned long window) const;
    void collect(unsigned long parent, std::vector<WindowInfo>& into) const;

    _XDisplay* display_;
};

}  // namespace quillmere::support
