#include "Quillmere/Platform/Linux/Wayland/LayerShellProtocol.h"

#include <array>

namespace quillmere::layershell {

namespace {

// The protocol's numbers. A request's or an event's number is its place in the
// tables below, which may leave out what follows the last one in use.
constexpr std::uint32_t getLayerSurfaceRequest = 0;
constexpr std::uint32_t setSizeRequest = 0;
constexpr std::uint32_t setKeyboardInteractivityRequest = 4;
constexpr std::uint32_t ackConfigureRequest = 6;
constexpr std::uint32_t destroyRequest = 7;
constexpr std::uint32_t overlayLayer = 3;
constexpr std::uint32_t exclusiveKeyboard = 1;

// Where an argument is an object or makes one, its interface; elsewhere none.
std::array<const wl_interface*, 5> layerSurfaceTypes{&surfaceInterface, &wl_surface_interface, &wl_output_interface,
                                                     nullptr, nullptr};
std::array<const wl_interface*, 4> noTypes{};

const std::array<wl_message, 1> shellRequests{{{"get_layer_surface", "no?ous", layerSurfaceTypes.data()}}};

const std::array<wl_message, 8> surfaceRequests{{
    {"set_size", "uu", noTypes.data()},
    {"set_anchor", "u", noTypes.data()},
    {"set_exclusive_zone", "i", noTypes.data()},
    {"set_margin", "iiii", noTypes.data()},
    {"set_keyboard_interactivity", "u", noTypes.data()},
    {"get_popup", "o", noTypes.data()},
    {"ack_configure", "u", noTypes.data()},
    {"destroy", "", noTypes.data()},
}};

const std::array<wl_message, 2> surfaceEvents{{
    {"configure", "uuu", noTypes.data()},
    {"closed", "", noTypes.data()},
}};

}  // namespace

const wl_interface shellInterface{"zwlr_layer_shell_v1", 1, static_cast<int>(shellRequests.size()),
                                  shellRequests.data(),  0, nullptr};
const wl_interface surfaceInterface{"zwlr_layer_surface_v1",
                                    1,
                                    static_cast<int>(surfaceRequests.size()),
                                    surfaceRequests.data(),
                                    static_cast<int>(surfaceEvents.size()),
                                    surfaceEvents.data()};

wl_proxy* makeOverlay(wl_proxy* shell, wl_surface* surface, const char* purpose) {
    constexpr wl_output* chosenByCompositor = nullptr;
    return wl_proxy_marshal_constructor(shell, getLayerSurfaceRequest, &surfaceInterface, nullptr, surface,
                                        chosenByCompositor, overlayLayer, purpose);
}

void listen(wl_proxy* surface, const SurfaceListener& listener, void* data) {
    // libwayland takes any listener as an array of functions, and only reads it.
    using Functions = void (**)();
    wl_proxy_add_listener(surface, reinterpret_cast<Functions>(const_cast<SurfaceListener*>(&listener)), data);
}

void takeKeyboard(wl_proxy* surface) {
    wl_proxy_marshal(surface, setKeyboardInteractivityRequest, exclusiveKeyboard);
}

void setSize(wl_proxy* surface, std::uint32_t width, std::uint32_t height) {
    wl_proxy_marshal(surface, setSizeRequest, width, height);
}

void acknowledge(wl_proxy* surface, std::uint32_t serial) {
    wl_proxy_marshal(surface, ackConfigureRequest, serial);
}

void destroy(wl_proxy* surface) {
    wl_proxy_marshal(surface, destroyRequest);
    wl_proxy_destroy(surface);
}

}  // namespace quillmere::layershell
