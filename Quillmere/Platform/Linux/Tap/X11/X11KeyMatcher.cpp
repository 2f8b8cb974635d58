#include "Quillmere/Platform/Linux/Tap/X11/X11KeyMatcher.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <algorithm>
#include <optional>

namespace quillmere {

namespace {

constexpr unsigned int realModifierSets = 1U << 8;

KeyCodes::EvdevCode evdevCode(unsigned int keyCode) {
    return keyCode - KeyCodes::x11Offset;
}

}  // namespace

bool X11KeyMatcher::wantsFn() const {
    return interest_.everyKey || wantsShortcut(Shortcut::fn);
}

bool X11KeyMatcher::wantsShortcut(const Shortcut& shortcut) const {
    return std::ranges::find(interest_.shortcuts, shortcut) != interest_.shortcuts.end();
}

bool X11KeyMatcher::wantsPress(unsigned int keyCode, unsigned int modifiers) const {
    if (isFlagKey(keyCode)) return false;
    const std::optional<std::int64_t> key = KeyCodes::virtualKey(evdevCode(keyCode));
    if (!key) return false;
    if (interest_.everyKey) return true;
    return keymap_.isPlain(modifiers) && wantsShortcut({*key, Modifiers::fromFlags(keymap_.flags(modifiers))});
}

bool X11KeyMatcher::isAnyShortcutBegun(unsigned int modifiers) const {
    // Shift types capitals, and no shortcut is made of it alone.
    const Modifiers held = Modifiers::fromFlags(keymap_.flags(modifiers)).subtracting(Modifiers::shift);
    return std::ranges::any_of(interest_.shortcuts,
                               [held](const Shortcut& each) { return !held.isDisjoint(each.modifiers); });
}

std::vector<X11KeyCombination> X11KeyMatcher::combinations() const {
    std::vector<X11KeyCombination> result;
    for (const Shortcut& shortcut : interest_.shortcuts)
        appendCombinations(shortcut, result);
    return result;
}

void X11KeyMatcher::appendCombinations(const Shortcut& shortcut, std::vector<X11KeyCombination>& result) const {
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.keyCode)) {
        const unsigned int keyCode = code + KeyCodes::x11Offset;
        if (keyCode > KeyCodes::maxX11KeyCode || isFlagKey(keyCode)) continue;
        for (unsigned int modifiers = 0; modifiers < realModifierSets; ++modifiers)
            if (keymap_.isPlain(modifiers) && Modifiers::fromFlags(keymap_.flags(modifiers)) == shortcut.modifiers)
                result.push_back({.keyCode = keyCode, .modifiers = modifiers});
    }
}

bool X11KeyMatcher::isFlagKey(unsigned int keyCode) const {
    return keymap_.isModifier(keyCode) || isFn(keyCode);
}

bool X11KeyMatcher::isFn(unsigned int keyCode) {
    return KeyCodes::isFn(evdevCode(keyCode));
}

std::int64_t X11KeyMatcher::virtualKey(unsigned int keyCode) {
    return KeyCodes::virtualKey(evdevCode(keyCode)).value_or(0);
}

}  // namespace quillmere
