#include "Tests/Support/SwayKeyboard.h"

#include "Tests/Support/KeyMovements.h"
#include "Tests/Support/SupportError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace quillmere::support {

namespace {

// The part of virtual-keyboard-unstable-v1 that is used here: libwayland needs
// each interface as a table.

constexpr std::uint32_t keymapRequest = 0;
constexpr std::uint32_t keyRequest = 1;
constexpr std::uint32_t modifiersRequest = 2;
constexpr std::uint32_t createRequest = 0;

const std::array<wl_message, 3> keyboardRequests{
    {{"keymap", "uhu", nullptr}, {"key", "uuu", nullptr}, {"modifiers", "uuuu", nullptr}}};
const wl_interface keyboardInterface{"zwp_virtual_keyboard_v1", 1, static_cast<int>(keyboardRequests.size()),
                                     keyboardRequests.data(),   0, nullptr};

std::array<const wl_interface*, 2> createTypes{&wl_seat_interface, &keyboardInterface};
const std::array<wl_message, 1> managerRequests{{{"create_virtual_keyboard", "on", createTypes.data()}}};
const wl_interface managerInterface{
    "zwp_virtual_keyboard_manager_v1", 1, static_cast<int>(managerRequests.size()), managerRequests.data(), 0, nullptr};

struct ModifierKey {
    std::uint32_t code;
    std::uint32_t bit;  ///< in every keymap of the usual rules
    bool isLock = false;
};

constexpr auto modifierKeys = std::to_array<ModifierKey>({
    {KEY_LEFTSHIFT, 1U << 0},
    {KEY_CAPSLOCK, 1U << 1, true},
    {KEY_LEFTCTRL, 1U << 2},
    {KEY_LEFTALT, 1U << 3},
    {KEY_NUMLOCK, 1U << 4, true},
    {KEY_LEFTMETA, 1U << 6},
});

}  // namespace

struct SwayKeyboard::Client {
    wl_display* display = nullptr;
    wl_seat* seat = nullptr;
    wl_proxy* manager = nullptr;
    wl_proxy* keyboard = nullptr;
    std::uint32_t held = 0;    ///< modifiers
    std::uint32_t locked = 0;  ///< modifiers

    explicit Client(const std::string& name) : display(wl_display_connect(name.c_str())) {
        if (display == nullptr) throw SupportError("no Wayland display " + name, errno);
        static constexpr wl_registry_listener listener{.global = &Client::bind,
                                                       .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display), &listener, this);
        roundTrip();
        if (seat == nullptr || manager == nullptr) throw SupportError("no virtual keyboards on " + name);
        keyboard = wl_proxy_marshal_constructor(manager, createRequest, &keyboardInterface, seat, nullptr);
        roundTrip();
    }
    ~Client() {
        if (display != nullptr) wl_display_disconnect(display);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void setKeymap(const std::string& text) const {
        const int descriptor = memfd_create("keymap", MFD_CLOEXEC);
        const auto size = static_cast<std::uint32_t>(text.size() + 1);
        if (write(descriptor, text.c_str(), size) != static_cast<ssize_t>(size)) throw SupportError("no keymap", errno);
        wl_proxy_marshal(keyboard, keymapRequest, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, descriptor, size);
        roundTrip();
        close(descriptor);
    }

    void move(const KeyMovement& key, int layout) {
        wl_proxy_marshal(keyboard, keyRequest, std::uint32_t{0}, key.code, std::uint32_t{key.isPress});
        const auto modifier = std::ranges::find(modifierKeys, key.code, &ModifierKey::code);
        if (modifier == modifierKeys.end()) return;
        held = key.isPress ? held | modifier->bit : held & ~modifier->bit;
        if (key.isPress && modifier->isLock) locked ^= modifier->bit;
        wl_proxy_marshal(keyboard, modifiersRequest, held, std::uint32_t{0}, locked,
                         static_cast<std::uint32_t>(layout));
    }

    void roundTrip() const {
        if (wl_display_roundtrip(display) < 0) throw SupportError("the Wayland display is gone");
    }

    static void bind(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t /*version*/) {
        auto* client = static_cast<Client*>(self);
        const std::string_view wanted = interface;
        if (wanted == wl_seat_interface.name)
            client->seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        if (wanted == managerInterface.name)
            client->manager = static_cast<wl_proxy*>(wl_registry_bind(registry, name, &managerInterface, 1));
    }
};

SwayKeyboard::SwayKeyboard(const std::string& waylandDisplay, const std::string& keymap)
    : client_(std::make_unique<Client>(waylandDisplay)) {
    client_->setKeymap(keymap);
}

SwayKeyboard::~SwayKeyboard() = default;

void SwayKeyboard::type(std::string_view movements, int layout) {
    for (const KeyMovement& movement : keyMovements(movements))
        client_->move(movement, layout);
    client_->roundTrip();
}

std::string SwayKeyboard::keymap(const std::string& layouts, const std::string& variants) {
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    const xkb_rule_names names{"evdev", "pc105", layouts.c_str(), variants.c_str(), ""};
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (keymap == nullptr) throw SupportError("no keymap of " + layouts);
    char* text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    std::string result = text;
    free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

}  // namespace quillmere::support
