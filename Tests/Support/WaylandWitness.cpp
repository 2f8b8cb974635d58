#include "Tests/Support/WaylandWitness.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace quillmere::support {

namespace {

// The part of xdg-shell that is used here: libwayland needs each interface as a
// table, in which the requests before a used one have their places, too.

constexpr std::uint32_t getSurfaceRequest = 2;
constexpr std::uint32_t pongRequest = 3;
constexpr std::uint32_t getToplevelRequest = 1;
constexpr std::uint32_t acknowledgeRequest = 4;
constexpr std::uint32_t setTitleRequest = 2;

const std::array<wl_message, 3> toplevelRequests{
    {{"destroy", "", nullptr}, {"set_parent", "?o", nullptr}, {"set_title", "s", nullptr}}};
const std::array<wl_message, 2> toplevelEvents{{{"configure", "iia", nullptr}, {"close", "", nullptr}}};
const wl_interface toplevelInterface{"xdg_toplevel",
                                     1,
                                     static_cast<int>(toplevelRequests.size()),
                                     toplevelRequests.data(),
                                     static_cast<int>(toplevelEvents.size()),
                                     toplevelEvents.data()};

std::array<const wl_interface*, 4> noTypes{};
std::array<const wl_interface*, 1> toplevelTypes{&toplevelInterface};
const std::array<wl_message, 5> surfaceRequests{{{"destroy", "", nullptr},
                                                 {"get_toplevel", "n", toplevelTypes.data()},
                                                 {"get_popup", "n?oo", noTypes.data()},
                                                 {"set_window_geometry", "iiii", noTypes.data()},
                                                 {"ack_configure", "u", noTypes.data()}}};
const std::array<wl_message, 1> surfaceEvents{{{"configure", "u", noTypes.data()}}};
const wl_interface surfaceInterface{"xdg_surface",
                                    1,
                                    static_cast<int>(surfaceRequests.size()),
                                    surfaceRequests.data(),
                                    static_cast<int>(surfaceEvents.size()),
                                    surfaceEvents.data()};

std::array<const wl_interface*, 2> surfaceTypes{&surfaceInterface, &wl_surface_interface};
const std::array<wl_message, 4> baseRequests{{{"destroy", "", nullptr},
                                              {"create_positioner", "n", noTypes.data()},
                                              {"get_xdg_surface", "no", surfaceTypes.data()},
                                              {"pong", "u", noTypes.data()}}};
const std::array<wl_message, 1> baseEvents{{{"ping", "u", noTypes.data()}}};
const wl_interface baseInterface{"xdg_wm_base",
                                 1,
                                 static_cast<int>(baseRequests.size()),
                                 baseRequests.data(),
                                 static_cast<int>(baseEvents.size()),
                                 baseEvents.data()};

struct BaseListener {
    void (*ping)(void*, wl_proxy*, std::uint32_t);
};
struct SurfaceListener {
    void (*configure)(void*, wl_proxy*, std::uint32_t);
};
struct ToplevelListener {
    void (*configure)(void*, wl_proxy*, std::int32_t, std::int32_t, wl_array*);
    void (*close)(void*, wl_proxy*);
};

template <typename Listener>
void listen(wl_proxy* proxy, const Listener& listener, void* data) {
    // As the protocol's generated headers do; nobody writes to it.
    auto* functions = reinterpret_cast<void (**)()>(const_cast<Listener*>(&listener));
    wl_proxy_add_listener(proxy, functions, data);
}

constexpr int width = 400;
constexpr int height = 300;
constexpr std::size_t pictureBytes = std::size_t{4} * width * height;

}  // namespace

struct WaylandWitness::Client {
    wl_display* display = nullptr;
    wl_compositor* compositor = nullptr;
    wl_shm* memory = nullptr;
    wl_seat* seat = nullptr;
    wl_proxy* base = nullptr;
    wl_keyboard* keyboard = nullptr;
    wl_surface* surface = nullptr;
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_keymap* keymap = nullptr;
    xkb_state* state = nullptr;
    bool isFocused = false;
    std::vector<SeenKey> keys;

    explicit Client(const std::string& name) : display(wl_display_connect(name.c_str())) {
        if (display == nullptr) throw SupportError("no Wayland display " + name, errno);
        static constexpr wl_registry_listener listener{.global = &Client::bind,
                                                       .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display), &listener, this);
        roundTrip();
        if (compositor == nullptr || memory == nullptr || seat == nullptr || base == nullptr)
            throw SupportError("no windows or no keyboard on " + name);
        static constexpr wl_seat_listener seatListener{
            .capabilities = [](void* self, wl_seat*,
                               std::uint32_t value) { static_cast<Client*>(self)->takeKeyboard(value); },
            .name = [](void*, wl_seat*, const char*) {}};
        wl_seat_add_listener(seat, &seatListener, this);
        openWindow();
        roundTrip();
    }
    ~Client() {
        xkb_state_unref(state);
        xkb_keymap_unref(keymap);
        xkb_context_unref(context);
        if (display != nullptr) wl_display_disconnect(display);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void roundTrip() const {
        if (wl_display_roundtrip(display) < 0) throw SupportError("the Wayland display is gone");
    }

    void openWindow() {
        static constexpr BaseListener baseListener{
            .ping = [](void*, wl_proxy* proxy, std::uint32_t serial) { wl_proxy_marshal(proxy, pongRequest, serial); }};
        static constexpr SurfaceListener surfaceListener{
            .configure = [](void* self, wl_proxy* proxy, std::uint32_t serial) {
                wl_proxy_marshal(proxy, acknowledgeRequest, serial);
                static_cast<Client*>(self)->paint();
            }};
        static constexpr ToplevelListener toplevelListener{
            .configure = [](void*, wl_proxy*, std::int32_t, std::int32_t, wl_array*) {},
            .close = [](void*, wl_proxy*) {}};
        listen(base, baseListener, this);
        surface = wl_compositor_create_surface(compositor);
        wl_proxy* window = wl_proxy_marshal_constructor(base, getSurfaceRequest, &surfaceInterface, nullptr, surface);
        listen(window, surfaceListener, this);
        wl_proxy* toplevel = wl_proxy_marshal_constructor(window, getToplevelRequest, &toplevelInterface, nullptr);
        listen(toplevel, toplevelListener, this);
        wl_proxy_marshal(toplevel, setTitleRequest, "witness");
        wl_surface_commit(surface);
    }

    /// A window without a picture is not shown.
    void paint() const {
        const int descriptor = memfd_create("picture", MFD_CLOEXEC);
        if (ftruncate(descriptor, pictureBytes) != 0) throw SupportError("no picture", errno);
        wl_shm_pool* pool = wl_shm_create_pool(memory, descriptor, pictureBytes);
        wl_buffer* buffer = wl_shm_pool_create_buffer(pool, 0, width, height, 4 * width, WL_SHM_FORMAT_XRGB8888);
        wl_shm_pool_destroy(pool);
        close(descriptor);
        wl_surface_attach(surface, buffer, 0, 0);
        wl_surface_damage(surface, 0, 0, width, height);
        wl_surface_commit(surface);
    }

    /// Takes in what has arrived, without waiting for more.
    void readEvents() const {
        while (wl_display_prepare_read(display) != 0)
            wl_display_dispatch_pending(display);
        wl_display_flush(display);
        pollfd waiting{.fd = wl_display_get_fd(display), .events = POLLIN, .revents = 0};
        if (poll(&waiting, 1, 0) > 0) {
            wl_display_read_events(display);
        } else {
            wl_display_cancel_read(display);
        }
        if (wl_display_dispatch_pending(display) < 0) throw SupportError("the Wayland display is gone");
    }

    void takeKeymap(int descriptor, std::uint32_t size) {
        auto* text = static_cast<char*>(mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0));
        close(descriptor);
        if (text == MAP_FAILED) throw SupportError("no keymap", errno);
        xkb_state_unref(state);
        xkb_keymap_unref(keymap);
        keymap = xkb_keymap_new_from_string(context, text, XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
        state = xkb_state_new(keymap);
        munmap(text, size);
    }

    int layout() const { return static_cast<int>(xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE)); }

    void noteKey(std::uint32_t code, bool isPress) {
        const Key key = code + 8;
        std::array<char, 16> text{};
        xkb_state_key_get_utf8(state, key, text.data(), text.size());
        const bool isControlCharacter = static_cast<unsigned char>(text[0]) < ' ';
        keys.push_back({.isPress = isPress,
                        .key = key,
                        .modifiers = xkb_state_serialize_mods(state, XKB_STATE_MODS_EFFECTIVE),
                        .group = layout(),
                        .text = isControlCharacter ? std::string() : std::string(text.data())});
    }

    /// A desktop has a keyboard only while one is plugged in.
    void takeKeyboard(std::uint32_t capabilities) {
        if (keyboard != nullptr || (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0) return;
        static constexpr wl_keyboard_listener listener{
            .keymap = [](void* self, wl_keyboard*, std::uint32_t, std::int32_t descriptor,
                         std::uint32_t size) { static_cast<Client*>(self)->takeKeymap(descriptor, size); },
            .enter = [](void* self, wl_keyboard*, std::uint32_t, wl_surface*,
                        wl_array*) { static_cast<Client*>(self)->isFocused = true; },
            .leave = [](void* self, wl_keyboard*, std::uint32_t,
                        wl_surface*) { static_cast<Client*>(self)->isFocused = false; },
            .key = [](void* self, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t code,
                      std::uint32_t isPress) { static_cast<Client*>(self)->noteKey(code, isPress != 0); },
            .modifiers =
                [](void* self, wl_keyboard*, std::uint32_t, std::uint32_t depressed, std::uint32_t latched,
                   std::uint32_t locked, std::uint32_t group) {
                    xkb_state_update_mask(static_cast<Client*>(self)->state, depressed, latched, locked, 0, 0, group);
                },
            .repeat_info = [](void*, wl_keyboard*, std::int32_t, std::int32_t) {}};
        keyboard = wl_seat_get_keyboard(seat);
        wl_keyboard_add_listener(keyboard, &listener, this);
    }

    static void bind(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t /*version*/) {
        auto* client = static_cast<Client*>(self);
        const std::string_view offered = interface;
        const auto take = [&](auto*& object, const wl_interface& wanted) {
            if (offered == wanted.name)
                object = static_cast<std::remove_reference_t<decltype(object)>>(
                    wl_registry_bind(registry, name, &wanted, 1));
        };
        take(client->compositor, wl_compositor_interface);
        take(client->memory, wl_shm_interface);
        take(client->base, baseInterface);
        take(client->seat, wl_seat_interface);
    }
};

WaylandWitness::WaylandWitness(const std::string& waylandDisplay) : client_(std::make_unique<Client>(waylandDisplay)) {
    if (!waitUntil([this] { return hasFocus(); })) throw SupportError("the witness gets no keyboard focus");
    clear();
}

WaylandWitness::~WaylandWitness() = default;

bool WaylandWitness::hasFocus() {
    client_->readEvents();
    return client_->isFocused;
}

int WaylandWitness::layout() {
    client_->readEvents();
    return client_->state == nullptr ? -1 : client_->layout();
}

void WaylandWitness::waitForNews(std::chrono::milliseconds deadline) const {
    pollfd waiting{.fd = wl_display_get_fd(client_->display), .events = POLLIN, .revents = 0};
    poll(&waiting, 1, static_cast<int>(deadline.count()));
}

const std::vector<SeenKey>& WaylandWitness::keys() {
    client_->readEvents();
    return client_->keys;
}

std::size_t WaylandWitness::presses(Key key) {
    return static_cast<std::size_t>(
        std::ranges::count_if(keys(), [key](const SeenKey& seen) { return seen.isPress && seen.key == key; }));
}

std::string WaylandWitness::text() {
    std::string result;
    for (const SeenKey& seen : keys())
        if (seen.isPress) result += seen.text;
    return result;
}

bool WaylandWitness::saw(Key key) {
    return std::ranges::any_of(keys(), [key](const SeenKey& seen) { return seen.key == key; });
}

void WaylandWitness::clear() {
    client_->readEvents();
    client_->keys.clear();
}

}  // namespace quillmere::support
