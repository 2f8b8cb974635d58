#include "Tests/Support/KwinTypist.h"

#include "Tests/Support/KeyMovements.h"
#include "Tests/Support/SupportError.h"

#include <array>
#include <cerrno>
#include <cstdint>

#include <linux/input-event-codes.h>
#include <wayland-client.h>

namespace quillmere::support {

namespace {

// The part of fake-input that is used here: libwayland needs the interface as a
// table, in which the requests before a used one have their places, too.

constexpr std::uint32_t authenticateRequest = 0;
constexpr std::uint32_t buttonRequest = 2;
constexpr std::uint32_t moveRequest = 9;
constexpr std::uint32_t keyRequest = 10;
constexpr std::uint32_t versionWithKeys = 4;

const std::array<wl_message, 11> requests{{{"authenticate", "ss", nullptr},
                                           {"pointer_motion", "ff", nullptr},
                                           {"button", "uu", nullptr},
                                           {"axis", "uf", nullptr},
                                           {"touch_down", "2uff", nullptr},
                                           {"touch_motion", "2uff", nullptr},
                                           {"touch_up", "2u", nullptr},
                                           {"touch_cancel", "2", nullptr},
                                           {"touch_frame", "2", nullptr},
                                           {"pointer_motion_absolute", "3ff", nullptr},
                                           {"keyboard_key", "4uu", nullptr}}};
const wl_interface fakeInputInterface{
    "org_kde_kwin_fake_input", versionWithKeys, static_cast<int>(requests.size()), requests.data(), 0, nullptr};

}  // namespace

struct KwinTypist::Client {
    wl_display* display = nullptr;
    wl_proxy* input = nullptr;

    explicit Client(const std::string& name) : display(wl_display_connect(name.c_str())) {
        if (display == nullptr) throw SupportError("no Wayland display " + name, errno);
        static constexpr wl_registry_listener listener{.global = &Client::bind,
                                                       .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display), &listener, this);
        roundTrip();
        if (input == nullptr) throw SupportError("nobody can play the keyboard of " + name);
        wl_proxy_marshal(input, authenticateRequest, "tests", "to be the keyboard");
        roundTrip();
    }
    ~Client() {
        if (display != nullptr) wl_display_disconnect(display);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void roundTrip() const {
        if (wl_display_roundtrip(display) < 0) throw SupportError("the Wayland display is gone");
    }

    static void bind(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t version) {
        if (std::string_view(interface) != fakeInputInterface.name || version < versionWithKeys) return;
        static_cast<Client*>(self)->input =
            static_cast<wl_proxy*>(wl_registry_bind(registry, name, &fakeInputInterface, versionWithKeys));
    }
};

KwinTypist::KwinTypist(const std::string& waylandDisplay) : client_(std::make_unique<Client>(waylandDisplay)) {}

KwinTypist::~KwinTypist() = default;

void KwinTypist::type(std::string_view movements) {
    for (const auto& [code, isPress] : keyMovements(movements))
        wl_proxy_marshal(client_->input, keyRequest, code, isPress ? 1U : 0U);
    flush();
}

void KwinTypist::click(QPoint at) {
    wl_proxy_marshal(client_->input, moveRequest, wl_fixed_from_int(at.x()), wl_fixed_from_int(at.y()));
    for (const std::uint32_t isPress : {1U, 0U})
        wl_proxy_marshal(client_->input, buttonRequest, std::uint32_t{BTN_LEFT}, isPress);
    flush();
}

void KwinTypist::flush() const {
    if (wl_display_flush(client_->display) < 0) throw SupportError("the Wayland display is gone", errno);
}

}  // namespace quillmere::support
