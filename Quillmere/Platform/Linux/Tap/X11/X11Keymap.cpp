#include "Quillmere/Platform/Linux/Tap/X11/X11Keymap.h"

#include "Quillmere/Platform/KeyEvent.h"

namespace quillmere {

namespace {

constexpr unsigned int fixed = X11Keymap::shift | X11Keymap::control | X11Keymap::capsLock;

}  // namespace

X11Keymap::X11Keymap(const Map& map) : unusedKeyCode_(map.unusedKeyCode), modifierKeys_(map.modifierKeys) {
    command_ = map.super & ~fixed;
    if (command_ == 0) command_ = usualSuper;
    // Where both share a modifier (an option puts Alt on the Super keys as
    // well), the shared one is Command and Option keeps its own.
    option_ = map.alt & ~fixed & ~command_;
    numLock_ = map.numLock & ~fixed & ~command_ & ~option_;
}

std::uint64_t X11Keymap::flags(unsigned int realModifiers) const {
    std::uint64_t result = 0;
    if ((realModifiers & capsLock) != 0) result |= KeyEventFlags::capsLock;
    if ((realModifiers & shift) != 0) result |= KeyEventFlags::shift;
    if ((realModifiers & control) != 0) result |= KeyEventFlags::control;
    if ((realModifiers & option_) != 0) result |= KeyEventFlags::option;
    if ((realModifiers & command_) != 0) result |= KeyEventFlags::command;
    return result;
}

bool X11Keymap::isPlain(unsigned int realModifiers) const {
    return (realModifiers & ~(fixed | option_ | command_ | numLock_)) == 0;
}

bool X11Keymap::hasOptionOrCommand(unsigned int realModifiers) const {
    return (realModifiers & (option_ | command_)) != 0;
}

}  // namespace quillmere
