#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include <wayland-client.h>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace quillmere {

/// The keyboard of a Wayland compositor, as long as a surface of the same
/// connection has it. Main thread only.
class WaylandKeyboard {
public:
    /// A key has gone down or up: its number in the Linux input layer. Those
    /// that were down when the keyboard came are not told.
    using OnKey = std::function<void(unsigned int code, bool isPress)>;

    /// `seat` has a keyboard.
    WaylandKeyboard(wl_seat* seat, OnKey onKey);
    ~WaylandKeyboard();
    WaylandKeyboard(const WaylandKeyboard&) = delete;
    WaylandKeyboard& operator=(const WaylandKeyboard&) = delete;

    /// The modifiers that count at this moment, as the desktop has them: a flag
    /// word (KeyEventFlags).
    std::uint64_t flags() const;

private:
    struct Deleter {
        void operator()(xkb_context* context) const;
        void operator()(xkb_keymap* keymap) const;
        void operator()(xkb_state* state) const;
    };

    static const wl_keyboard_listener listener;

    void takeKeymap(std::uint32_t format, int descriptor, std::uint32_t size);
    bool isActive(const char* modifier) const;

    wl_keyboard* keyboard_;
    OnKey onKey_;
    std::unique_ptr<xkb_context, Deleter> context_;
    std::unique_ptr<xkb_state, Deleter> state_;  ///< null before the keymap, and without a readable one
};

}  // namespace quillmere
