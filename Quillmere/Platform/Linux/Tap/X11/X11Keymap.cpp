#include "Quillmere/Platform/Linux/Tap/X11/X11Keymap.h"

#include "Quillmere/Platform/KeyEvent.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

namespace quillmere {

namespace {

struct KeyboardDeleter {
    void operator()(XkbDescPtr keyboard) const { XkbFreeKeyboard(keyboard, XkbAllComponentsMask, True); }
};
using Keyboard = std::unique_ptr<XkbDescRec, KeyboardDeleter>;

/// The real modifiers that the virtual modifier of this name is bound to.
unsigned int realModifiers(Display* display, XkbDescPtr keyboard, const char* name) {
    const Atom wanted = XInternAtom(display, name, True);
    if (wanted == None || keyboard->names == nullptr) return 0;
    for (unsigned int i = 0; i < XkbNumVirtualMods; ++i) {
        if (keyboard->names->vmods[i] != wanted) continue;
        unsigned int real = 0;
        return XkbVirtualModsToReal(keyboard, 1U << i, &real) == 0 ? 0 : real;
    }
    return 0;
}

unsigned int findUnusedKeyCode(XkbDescPtr keyboard) {
    // From the end, where no real key is.
    for (unsigned int code = keyboard->max_key_code; code > keyboard->min_key_code; --code)
        if (XkbKeyNumGroups(keyboard, code) == 0 && keyboard->map->modmap[code] == 0) return code;
    return 0;
}

}  // namespace

X11Keymap X11Keymap::read(_XDisplay* display) {
    X11Keymap result;
    constexpr unsigned int parts = XkbVirtualModsMask | XkbModifierMapMask | XkbKeySymsMask | XkbKeyTypesMask;
    const Keyboard keyboard(XkbGetMap(display, parts, XkbUseCoreKbd));
    if (keyboard == nullptr) return result;
    if (XkbGetNames(display, XkbVirtualModNamesMask, keyboard.get()) != Success) return result;
    const auto real = [&](const char* name) { return realModifiers(display, keyboard.get(), name); };
    constexpr unsigned int fixed = ShiftMask | ControlMask | LockMask;
    result.command_ = real("Super") & ~fixed;
    if (result.command_ == 0) result.command_ = Mod4Mask;
    // Where both share a modifier (an option puts Alt on the Super keys as
    // well), the shared one is Command and Option keeps its own.
    result.option_ = real("Alt") & ~fixed & ~result.command_;
    result.numLock_ = real("NumLock") & ~fixed & ~result.command_ & ~result.option_;
    result.unusedKeyCode_ = findUnusedKeyCode(keyboard.get());
    for (unsigned int code = keyboard->min_key_code; code <= keyboard->max_key_code; ++code)
        result.modifierKeys_[code] = keyboard->map->modmap[code] != 0;
    return result;
}

std::uint64_t X11Keymap::flags(unsigned int realModifiers) const {
    std::uint64_t result = 0;
    if ((realModifiers & LockMask) != 0) result |= KeyEventFlags::capsLock;
    if ((realModifiers & ShiftMask) != 0) result |= KeyEventFlags::shift;
    if ((realModifiers & ControlMask) != 0) result |= KeyEventFlags::control;
    if ((realModifiers & option_) != 0) result |= KeyEventFlags::option;
    if ((realModifiers & command_) != 0) result |= KeyEventFlags::command;
    return result;
}

bool X11Keymap::isPlain(unsigned int realModifiers) const {
    return (realModifiers & ~(ShiftMask | ControlMask | LockMask | option_ | command_ | numLock_)) == 0;
}

bool X11Keymap::hasOptionOrCommand(unsigned int realModifiers) const {
    return (realModifiers & (option_ | command_)) != 0;
}

}  // namespace quillmere
