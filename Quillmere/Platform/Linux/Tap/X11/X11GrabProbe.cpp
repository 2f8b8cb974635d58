#include "Quillmere/Platform/Linux/Tap/X11/X11GrabProbe.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace quillmere {

namespace {

struct ConnectionDeleter {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, ConnectionDeleter>;

struct FreeDeleter {
    void operator()(void* data) const { std::free(data); }
};

xcb_window_t rootOf(xcb_connection_t* connection, int screenNumber) {
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen.rem > 1 && screenNumber > 0; --screenNumber)
        xcb_screen_next(&screen);
    return screen.data->root;
}

}  // namespace

std::vector<X11KeyCombination> freeCombinations(const std::vector<X11KeyCombination>& combinations) {
    int screenNumber = 0;
    // xcb returns a connection object in any case, an unusable one on failure.
    const Connection connection(xcb_connect(nullptr, &screenNumber));
    if (xcb_connection_has_error(connection.get()) != 0) return {};
    const xcb_window_t root = rootOf(connection.get(), screenNumber);

    // All are sent before the first answer is awaited, so that many shortcuts
    // cost no more waiting than one.
    std::vector<xcb_void_cookie_t> cookies;
    cookies.reserve(combinations.size());
    for (const X11KeyCombination& each : combinations)
        cookies.push_back(xcb_grab_key_checked(connection.get(), 0, root, static_cast<std::uint16_t>(each.modifiers),
                                               static_cast<xcb_keycode_t>(each.keyCode), XCB_GRAB_MODE_ASYNC,
                                               XCB_GRAB_MODE_ASYNC));

    std::vector<X11KeyCombination> result;
    for (std::size_t i = 0; i < combinations.size(); ++i) {
        const std::unique_ptr<xcb_generic_error_t, FreeDeleter> error(xcb_request_check(connection.get(), cookies[i]));
        if (error != nullptr) continue;
        result.push_back(combinations[i]);
        xcb_ungrab_key(connection.get(), static_cast<xcb_keycode_t>(combinations[i].keyCode), root,
                       static_cast<std::uint16_t>(combinations[i].modifiers));
    }
    // The server notices a closed connection in its own time; the grabs must
    // be gone before the real ones are asked for.
    const std::unique_ptr<xcb_get_input_focus_reply_t, FreeDeleter> reply(
        xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
    // A connection that ends meanwhile reports no error for what it asked.
    if (reply == nullptr) return {};
    return result;
}

}  // namespace quillmere
