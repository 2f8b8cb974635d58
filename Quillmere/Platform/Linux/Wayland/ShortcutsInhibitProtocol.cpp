#include "Quillmere/Platform/Linux/Wayland/ShortcutsInhibitProtocol.h"

#include <array>
#include <cstdint>

namespace quillmere::shortcutsinhibit {

namespace {

// The protocol's numbers: a request's is its place in the tables below.
constexpr std::uint32_t inhibitRequest = 1;
constexpr std::uint32_t destroyRequest = 0;

const std::array<wl_message, 1> inhibitorRequests{{{"destroy", "", nullptr}}};
const std::array<wl_message, 2> inhibitorEvents{{{"active", "", nullptr}, {"inactive", "", nullptr}}};

const wl_interface inhibitorInterface{"zwp_keyboard_shortcuts_inhibitor_v1",      1,
                                      static_cast<int>(inhibitorRequests.size()), inhibitorRequests.data(),
                                      static_cast<int>(inhibitorEvents.size()),   inhibitorEvents.data()};

std::array<const wl_interface*, 3> inhibitTypes{&inhibitorInterface, &wl_surface_interface, &wl_seat_interface};

const std::array<wl_message, 2> managerRequests{{
    {"destroy", "", nullptr},
    {"inhibit_shortcuts", "noo", inhibitTypes.data()},
}};

}  // namespace

const wl_interface managerInterface{"zwp_keyboard_shortcuts_inhibit_manager_v1",
                                    1,
                                    static_cast<int>(managerRequests.size()),
                                    managerRequests.data(),
                                    0,
                                    nullptr};

wl_proxy* inhibit(wl_proxy* manager, wl_surface* surface, wl_seat* seat) {
    return wl_proxy_marshal_constructor(manager, inhibitRequest, &inhibitorInterface, nullptr, surface, seat);
}

void release(wl_proxy* inhibition) {
    wl_proxy_marshal(inhibition, destroyRequest);
    wl_proxy_destroy(inhibition);
}

}  // namespace quillmere::shortcutsinhibit
