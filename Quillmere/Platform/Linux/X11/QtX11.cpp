#include "Quillmere/Platform/Linux/X11/QtX11.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

// Last: its macros break Qt's headers.
#include <X11/Xlib.h>

namespace quillmere {

namespace {

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

/// A property that has been asked for, and is not waited for yet.
class PropertyQuestion {
public:
    PropertyQuestion(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property)
        : connection_(connection),
          cookie_(xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, maxWords)) {}

    auto reply() const { return owned(xcb_get_property_reply(connection_, cookie_, nullptr)); }

    std::vector<std::uint32_t> numbers() const {
        const auto answer = reply();
        if (!answer || answer->format != 32) return {};
        const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
        return {first, first + answer->value_len};
    }

private:
    static constexpr std::uint32_t maxWords = 4096;

    xcb_connection_t* connection_;
    xcb_get_property_cookie_t cookie_;
};

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
    return atoms(std::array{name}).front();
}

void QtX11::internAtoms(std::span<const char* const> names, std::span<xcb_atom_t> result) const {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* name : names)
        cookies.push_back(xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name));
    std::ranges::transform(cookies, result.begin(), [this](xcb_intern_atom_cookie_t cookie) {
        const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    });
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
    const auto manager = numbers(root_, atom("_NET_SUPPORTING_WM_CHECK"));
    if (manager.empty()) return {};
    const auto reply = PropertyQuestion(connection_, manager.front(), atom("_NET_WM_NAME")).reply();
    if (!reply) return {};
    const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
    return {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::vector<std::uint32_t> QtX11::numbers(xcb_window_t window, xcb_atom_t property) const {
    return PropertyQuestion(connection_, window, property).numbers();
}

std::vector<std::vector<std::uint32_t>> QtX11::numbers(std::span<const xcb_window_t> windows,
                                                       xcb_atom_t property) const {
    std::vector<PropertyQuestion> questions;
    for (const xcb_window_t window : windows)
        questions.emplace_back(connection_, window, property);
    std::vector<std::vector<std::uint32_t>> answers;
    std::ranges::transform(questions, std::back_inserter(answers), &PropertyQuestion::numbers);
    return answers;
}

std::optional<QRect> QtX11::frame(xcb_window_t window) const {
    if (window == XCB_WINDOW_NONE) return std::nullopt;
    const auto sizeCookie = xcb_get_geometry(connection_, window);
    const auto placeCookie = xcb_translate_coordinates(connection_, window, root_, 0, 0);
    const auto size = owned(xcb_get_geometry_reply(connection_, sizeCookie, nullptr));
    const auto place = owned(xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
    if (!size || !place) return std::nullopt;
    return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

xcb_window_t QtX11::focusedWindow() const {
    const auto reply = owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    const bool isWindow = reply && reply->focus != root_ && reply->focus != XCB_INPUT_FOCUS_POINTER_ROOT;
    return isWindow ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

}  // namespace quillmere
