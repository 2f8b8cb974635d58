#include "Tests/Support/XConnection.h"

#include "Tests/Support/SupportError.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <memory>
#include <ranges>

namespace quillmere::support {

namespace {

int lastError = 0;

int rememberError(Display* /*display*/, XErrorEvent* event) {
    lastError = event->error_code;
    return 0;
}

struct XDeleter {
    void operator()(void* data) const { XFree(data); }
};
template <typename T>
using XOwned = std::unique_ptr<T, XDeleter>;

constexpr double fullOpacity = 0xFFFFFFFF;

}  // namespace

XConnection::XConnection(const std::string& display) : display_(XOpenDisplay(display.c_str())) {
    if (display_ == nullptr) throw SupportError("no X server at " + display);
    XSetErrorHandler(rememberError);
}

XConnection::~XConnection() {
    XCloseDisplay(display_);
}

unsigned long XConnection::root() const {
    return DefaultRootWindow(display_);
}

QSize XConnection::screenSize() const {
    const int screen = DefaultScreen(display_);
    return {DisplayWidth(display_, screen), DisplayHeight(display_, screen)};
}

void XConnection::synchronize() const {
    XSync(display_, False);
}

int XConnection::takeError() const {
    synchronize();
    return std::exchange(lastError, 0);
}

unsigned long XConnection::atom(const char* name) const {
    return XInternAtom(display_, name, False);
}

bool XConnection::isSelectionOwned(const char* name) const {
    return XGetSelectionOwner(display_, atom(name)) != None;
}

std::vector<unsigned long> XConnection::numbers(unsigned long window, const char* property, int limit) const {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display_, window, atom(property), 0, limit, False, AnyPropertyType, &type, &format, &count,
                       &left, &data);
    const XOwned<unsigned char> owned(data);
    if (data == nullptr || format != 32) return {};
    // Xlib hands 32-bit properties out as an array of long.
    const auto* elements = reinterpret_cast<const unsigned long*>(data);
    return {elements, elements + count};
}

std::optional<unsigned long> XConnection::number(unsigned long window, const char* property) const {
    const std::vector<unsigned long> elements = numbers(window, property, 1);
    return elements.empty() ? std::nullopt : std::optional(elements.front());
}

std::optional<std::string> XConnection::text(unsigned long window, const char* property) const {
    constexpr long limitInWords = 1024;
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display_, window, atom(property), 0, limitInWords, False, AnyPropertyType, &type, &format,
                       &count, &left, &data);
    const XOwned<unsigned char> owned(data);
    if (data == nullptr || format != 8) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(data), count);
}

std::vector<WindowInfo> XConnection::windows() const {
    std::vector<WindowInfo> result;
    collect(root(), result);
    return result;
}

std::optional<WindowInfo> XConnection::visibleWindow(const std::string& title) const {
    const std::vector<WindowInfo> all = windows();
    for (const WindowInfo& window : all | std::views::reverse)
        if (window.isMapped && window.title == title) return window;
    return std::nullopt;
}

unsigned long XConnection::focusedWindow() const {
    Window focused = None;
    int revertTo = 0;
    XGetInputFocus(display_, &focused, &revertTo);
    return focused;
}

QPoint XConnection::pointer() const {
    Window ignoredWindow = None;
    int x = 0;
    int y = 0;
    int ignored = 0;
    unsigned int ignoredMask = 0;
    XQueryPointer(display_, root(), &ignoredWindow, &ignoredWindow, &x, &y, &ignored, &ignored, &ignoredMask);
    return {x, y};
}

bool XConnection::isAbove(unsigned long upper, unsigned long lower) const {
    const std::vector<WindowInfo> all = windows();
    const auto upperAt = std::ranges::find(all, upper, &WindowInfo::id);
    const auto lowerAt = std::ranges::find(all, lower, &WindowInfo::id);
    return upperAt != all.end() && lowerAt != all.end() && upperAt > lowerAt;
}

std::optional<WindowInfo> XConnection::describe(unsigned long window) const {
    XWindowAttributes attributes;
    if (XGetWindowAttributes(display_, window, &attributes) == 0) return std::nullopt;
    int x = 0;
    int y = 0;
    Window ignored = None;
    if (XTranslateCoordinates(display_, window, root(), 0, 0, &x, &y, &ignored) == 0) return std::nullopt;
    WindowInfo info;
    info.id = window;
    info.frame = QRect(x, y, attributes.width, attributes.height);
    info.isMapped = attributes.map_state == IsViewable;
    info.isOverrideRedirect = attributes.override_redirect != 0;
    info.title = text(window, "_NET_WM_NAME").value_or(text(window, "WM_NAME").value_or(""));
    info.className = text(window, "WM_CLASS").value_or("");
    if (const auto opacity = number(window, "_NET_WM_WINDOW_OPACITY"))
        info.opacity = static_cast<double>(*opacity & 0xFFFFFFFFUL) / fullOpacity;
    return info;
}

void XConnection::collect(unsigned long parent, std::vector<WindowInfo>& into) const {
    Window ignored = None;
    Window* children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display_, parent, &ignored, &ignored, &children, &count) == 0) return;
    const XOwned<Window> owned(children);
    for (unsigned int i = 0; i < count; ++i) {
        const Window child = children[i];
        if (const auto info = describe(child)) into.push_back(*info);
        collect(child, into);
    }
}

}  // namespace quillmere::support
