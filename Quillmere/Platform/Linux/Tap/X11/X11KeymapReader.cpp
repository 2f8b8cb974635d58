#include "Quillmere/Platform/Linux/Tap/X11/X11KeymapReader.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <memory>

namespace quillmere {

namespace {

static_assert(X11Keymap::shift == ShiftMask && X11Keymap::capsLock == LockMask && X11Keymap::control == ControlMask
              && X11Keymap::usualSuper == Mod4Mask);

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

X11Keymap readX11Keymap(_XDisplay* display) {
    constexpr unsigned int parts = XkbVirtualModsMask | XkbModifierMapMask | XkbKeySymsMask | XkbKeyTypesMask;
    const Keyboard keyboard(XkbGetMap(display, parts, XkbUseCoreKbd));
    if (keyboard == nullptr) return {};
    if (XkbGetNames(display, XkbVirtualModNamesMask, keyboard.get()) != Success) return {};
    const auto real = [&](const char* name) { return realModifiers(display, keyboard.get(), name); };
    X11Keymap::Map map{.alt = real("Alt"),
                       .super = real("Super"),
                       .numLock = real("NumLock"),
                       .unusedKeyCode = findUnusedKeyCode(keyboard.get()),
                       .modifierKeys = {}};
    for (unsigned int code = keyboard->min_key_code; code <= keyboard->max_key_code; ++code)
        map.modifierKeys[code] = keyboard->map->modmap[code] != 0;
    return X11Keymap(map);
}

}  // namespace quillmere
