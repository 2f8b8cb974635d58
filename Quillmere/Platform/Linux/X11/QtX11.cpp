#include "Quillmere/Platform/Linux/X11/QtX11.h"

#include <QGuiApplication>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

// Last: its macros break Qt's headers.
#include <X11/Xlib.h>

namespace quillmere {

namespace {

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

}  // namespace

QtX11::QtX11(xcb_connection_t* connection, int screenNumber, xcb_window_t root)
    : connection_(connection), screenNumber_(screenNumber), root_(root) {}

std::optional<QtX11> QtX11::current() {
    const auto* application = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!application || !application->display() || !application->connection()) return std::nullopt;
    const int number = XDefaultScreen(application->display());
    const auto root = static_cast<xcb_window_t>(XRootWindow(application->display(), number));
    return QtX11(application->connection(), number, root);
}

xcb_atom_t QtX11::atom(const char* name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_atom_t QtX11::screenSelection(const char* prefix) const {
    return atom((prefix + std::to_string(screenNumber_)).c_str());
}

bool QtX11::isOwned(xcb_atom_t selection) const {
    if (selection == XCB_ATOM_NONE) return false;
    const auto cookie = xcb_get_selection_owner(connection_, selection);
    const auto reply = owned(xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

std::string QtX11::windowManagerName() const {
    const std::string window = property(root_, "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t manager = XCB_WINDOW_NONE;
    if (window.size() != sizeof manager) return {};
    std::memcpy(&manager, window.data(), sizeof manager);
    return property(manager, "_NET_WM_NAME");
}

/// The first bytes of the property's value, whatever it is.
std::string QtX11::property(xcb_window_t window, const char* name) const {
    constexpr std::uint32_t maxWords = 64;
    const auto cookie = xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, maxWords);
    const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply) return {};
    const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
    return {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

}  // namespace quillmere
