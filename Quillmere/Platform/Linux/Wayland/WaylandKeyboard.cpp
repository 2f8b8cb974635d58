#include "Quillmere/Platform/Linux/Wayland/WaylandKeyboard.h"

#include "Quillmere/Platform/KeyEvent.h"

#include <cstring>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace quillmere {

void WaylandKeyboard::Deleter::operator()(xkb_context* context) const {
    xkb_context_unref(context);
}

void WaylandKeyboard::Deleter::operator()(xkb_keymap* keymap) const {
    xkb_keymap_unref(keymap);
}

void WaylandKeyboard::Deleter::operator()(xkb_state* state) const {
    xkb_state_unref(state);
}

const wl_keyboard_listener WaylandKeyboard::listener{
    .keymap = [](void* self, wl_keyboard*, std::uint32_t format, int descriptor,
                 std::uint32_t size) { static_cast<WaylandKeyboard*>(self)->takeKeymap(format, descriptor, size); },
    .enter = [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
    .leave = [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
    .key =
        [](void* self, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t code, std::uint32_t state) {
            static_cast<WaylandKeyboard*>(self)->onKey_(code, state == WL_KEYBOARD_KEY_STATE_PRESSED);
        },
    .modifiers =
        [](void* self, wl_keyboard*, std::uint32_t, std::uint32_t depressed, std::uint32_t latched,
           std::uint32_t locked, std::uint32_t group) {
            xkb_state* state = static_cast<WaylandKeyboard*>(self)->state_.get();
            if (state != nullptr) xkb_state_update_mask(state, depressed, latched, locked, 0, 0, group);
        },
    // Of later versions than the one in use.
    .repeat_info = nullptr,
};

WaylandKeyboard::WaylandKeyboard(wl_seat* seat, OnKey onKey)
    : keyboard_(wl_seat_get_keyboard(seat)), onKey_(std::move(onKey)), context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {
    wl_keyboard_add_listener(keyboard_, &listener, this);
}

WaylandKeyboard::~WaylandKeyboard() {
    wl_keyboard_destroy(keyboard_);
}

void WaylandKeyboard::takeKeymap(std::uint32_t format, int descriptor, std::uint32_t size) {
    state_.reset();
    void* text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    close(descriptor);
    if (text == MAP_FAILED) return;
    if (context_ && format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        const auto* letters = static_cast<const char*>(text);
        const std::unique_ptr<xkb_keymap, Deleter> keymap(xkb_keymap_new_from_buffer(
            context_.get(), letters, strnlen(letters, size), XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
        if (keymap) state_.reset(xkb_state_new(keymap.get()));
    }
    munmap(text, size);
}

bool WaylandKeyboard::isActive(const char* modifier) const {
    return state_ && xkb_state_mod_name_is_active(state_.get(), modifier, XKB_STATE_MODS_EFFECTIVE) > 0;
}

std::uint64_t WaylandKeyboard::flags() const {
    std::uint64_t word = 0;
    if (isActive(XKB_MOD_NAME_LOGO)) word |= KeyEventFlags::command;
    if (isActive(XKB_MOD_NAME_SHIFT)) word |= KeyEventFlags::shift;
    if (isActive(XKB_MOD_NAME_ALT)) word |= KeyEventFlags::option;
    if (isActive(XKB_MOD_NAME_CTRL)) word |= KeyEventFlags::control;
    return word;
}

}  // namespace quillmere
