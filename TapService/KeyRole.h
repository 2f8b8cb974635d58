#pragma once

#include "TapService/TapProtocol.h"

#include <linux/input-event-codes.h>

#include <cstdint>

namespace quillmere::tap {

/// What a key code means to the service.
enum class KeyRole {
    key,       ///< may be (part of) a shortcut
    modifier,  ///< changes the flags, or only the characters; always passes
    fn,        ///< always passes
    power,     ///< turns the computer off or sends it to sleep; always passes, never told by name
    button,    ///< of a pointer or a game pad; always passes, never told
};

constexpr KeyRole roleOf(std::uint16_t code) {
    switch (code) {
        case KEY_LEFTSHIFT:
        case KEY_RIGHTSHIFT:
        case KEY_LEFTCTRL:
        case KEY_RIGHTCTRL:
        case KEY_LEFTALT:
        case KEY_RIGHTALT:
        case KEY_LEFTMETA:
        case KEY_RIGHTMETA:
        case KEY_CAPSLOCK:
            return KeyRole::modifier;
        case KEY_FN:
        // The globe key of newer keyboards.
        case KEY_KBD_LAYOUT_NEXT:
        // What many laptops send for their Fn key.
        case KEY_WAKEUP:
            return KeyRole::fn;
        case KEY_POWER:
        case KEY_POWER2:
        case KEY_SLEEP:
        case KEY_SUSPEND:
        case KEY_RESTART:
            return KeyRole::power;
        default:
            break;
    }
    const bool isButton = (code >= BTN_MISC && code < KEY_OK) || (code >= BTN_DPAD_UP && code <= BTN_DPAD_RIGHT)
                          || code >= BTN_TRIGGER_HAPPY;
    return isButton ? KeyRole::button : KeyRole::key;
}

/// The flag that a held key sets; 0 for one that sets none.
constexpr std::uint8_t flagOf(std::uint16_t code) {
    switch (code) {
        case KEY_LEFTSHIFT:
        case KEY_RIGHTSHIFT:
            return Flags::shift;
        case KEY_LEFTCTRL:
        case KEY_RIGHTCTRL:
            return Flags::control;
        case KEY_LEFTALT:
            return Flags::option;
        case KEY_LEFTMETA:
        case KEY_RIGHTMETA:
            return Flags::command;
        default:
            return roleOf(code) == KeyRole::fn ? Flags::fn : std::uint8_t{0};
    }
}

/// Every key whose `flagOf` is not 0.
inline constexpr std::uint16_t flagKeys[] = {
    KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTCTRL, KEY_RIGHTCTRL,       KEY_LEFTALT,
    KEY_LEFTMETA,  KEY_RIGHTMETA,  KEY_FN,       KEY_KBD_LAYOUT_NEXT, KEY_WAKEUP,
};

/// Whether a device with this key is there to type on, as opposed to the power
/// button or the volume keys of a headset.
constexpr bool isTypingKey(std::uint16_t code) {
    return (code >= KEY_ESC && code <= KEY_F12 && roleOf(code) == KeyRole::key) || (code >= KEY_F13 && code <= KEY_F24);
}

}  // namespace quillmere::tap
