#include "Quillmere/Platform/Linux/Tap/Service/TapServiceEvents.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <algorithm>

namespace quillmere::TapServiceEvents {

namespace {

// The service's modifiers are numbered as the program's.
static_assert(Modifiers::command.rawValue == tap::Flags::command);
static_assert(Modifiers::shift.rawValue == tap::Flags::shift);
static_assert(Modifiers::option.rawValue == tap::Flags::option);
static_assert(Modifiers::control.rawValue == tap::Flags::control);

void add(const Shortcut& shortcut, tap::Interest& interest) {
    if (shortcut.isFnAlone()) {
        interest.wantsFn = true;
        return;
    }
    // Bits of a stored shortcut that mean nothing to this program: it is never
    // pressed.
    if (!shortcut.modifiers.isSubset(Modifiers(tap::Flags::modifiers))) return;
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.keyCode)) {
        if (KeyCodes::isModifier(code) || KeyCodes::isFn(code)) continue;
        const tap::TapShortcut wanted{static_cast<std::uint16_t>(code),
                                      static_cast<std::uint8_t>(shortcut.modifiers.rawValue)};
        if (!wanted.isToldOf()) continue;
        if (std::ranges::find(interest.shortcuts, wanted) == interest.shortcuts.end())
            interest.shortcuts.push_back(wanted);
    }
}

std::uint64_t flagWord(std::uint8_t flags) {
    std::uint64_t word = 0;
    if ((flags & tap::Flags::command) != 0) word |= KeyEventFlags::command;
    if ((flags & tap::Flags::shift) != 0) word |= KeyEventFlags::shift;
    if ((flags & tap::Flags::option) != 0) word |= KeyEventFlags::option;
    if ((flags & tap::Flags::control) != 0) word |= KeyEventFlags::control;
    if ((flags & tap::Flags::fn) != 0) word |= KeyEventFlags::secondaryFn;
    return word;
}

}  // namespace

tap::Interest interest(const KeyInterest& interest) {
    tap::Interest result{.everyKey = interest.everyKey, .wantsFn = false, .shortcuts = {}};
    for (const Shortcut& shortcut : interest.shortcuts)
        add(shortcut, result);
    return result;
}

std::optional<KeyEventFields> fields(const tap::KeyEvent& event) {
    KeyEventFields fields{.flags = flagWord(event.flags), .timestamp = event.time};
    const std::optional<std::int64_t> key = KeyCodes::virtualKey(event.code);
    switch (event.kind) {
        case tap::KeyEventKind::press:
        case tap::KeyEventKind::repeat:
            fields.type = key ? KeyEventType::keyDown : KeyEventType::systemDefined;
            fields.keyCode = key.value_or(0);
            fields.autorepeat = event.kind == tap::KeyEventKind::repeat ? 1 : 0;
            return fields;
        case tap::KeyEventKind::release:
            fields.type = KeyEventType::keyUp;
            fields.keyCode = key.value_or(0);
            return key ? std::optional(fields) : std::nullopt;
        case tap::KeyEventKind::flags:
            fields.type = KeyEventType::flagsChanged;
            return fields;
        case tap::KeyEventKind::other:
            fields.type = KeyEventType::systemDefined;
            return fields;
    }
    return std::nullopt;
}

}  // namespace quillmere::TapServiceEvents
