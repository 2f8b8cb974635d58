#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeAccelerators.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <array>
#include <cstdio>

namespace quillmere::gnomeAccelerators {

namespace {

// The compositor reads two digits.
constexpr unsigned int lastNumber = 0xff;

std::string textOf(Modifiers modifiers) {
    std::string text;
    if (modifiers.contains(Modifiers::control)) text += "<Control>";
    if (modifiers.contains(Modifiers::option)) text += "<Alt>";
    if (modifiers.contains(Modifiers::shift)) text += "<Shift>";
    if (modifiers.contains(Modifiers::command)) text += "<Super>";
    return text;
}

}  // namespace

std::vector<std::string> of(const Shortcut& shortcut) {
    std::vector<std::string> accelerators;
    // Its lone tap is no key press to the compositor.
    if (shortcut.isFnAlone()) return accelerators;
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.keyCode)) {
        const unsigned int number = code + KeyCodes::x11Offset;
        if (number > lastNumber) continue;
        std::array<char, sizeof "0xff"> text{};
        std::snprintf(text.data(), text.size(), "0x%02x", number);
        accelerators.push_back(textOf(shortcut.modifiers) + text.data());
    }
    return accelerators;
}

}  // namespace quillmere::gnomeAccelerators
