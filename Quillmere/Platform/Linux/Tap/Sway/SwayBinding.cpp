#include "Quillmere/Platform/Linux/Tap/Sway/SwayBinding.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"
#include "Quillmere/Platform/Linux/Tap/ModifierBits.h"
#include "QuillmereCore/Config.h"

#include <algorithm>

namespace quillmere {

namespace {

// As many as a keymap can hold.
constexpr std::size_t maxLayouts = 4;

std::size_t indexOf(const std::vector<std::string>& ids, const std::string& id) {
    return static_cast<std::size_t>(std::ranges::find(ids, id) - ids.begin());
}

}  // namespace

std::string SwayBinding::combination() const {
    return "Group" + std::to_string(from + 1) + '+' + modifierBits::text(modifiers) + std::to_string(keyCode);
}

std::string SwayBinding::action() const {
    return "input type:keyboard xkb_switch_layout " + std::to_string(to);
}

std::string SwayBinding::command() const {
    // Held, it would go round and round.
    return "bindcode --no-warn --no-repeat " + combination() + ' ' + action();
}

std::vector<SwayBinding> swayBindings(const ArmedShortcut& shortcut, const std::vector<std::string>& layoutIDs) {
    std::vector<SwayBinding> bindings;
    CycleGroup group{.id = {}, .shortcut = shortcut.shortcut, .sourceIDs = shortcut.sourceIDs};
    std::erase_if(group.sourceIDs, [&](const std::string& id) { return indexOf(layoutIDs, id) == layoutIDs.size(); });
    if (group.sourceIDs.empty() || shortcut.shortcut.isFnAlone()) return bindings;
    const std::size_t count = std::min(layoutIDs.size(), maxLayouts);
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.shortcut.keyCode))
        for (std::size_t from = 0; from < count; ++from) {
            const std::string next = group.next(layoutIDs[from]).value_or(std::string());
            bindings.push_back({.keyCode = code + KeyCodes::x11Offset,
                                .modifiers = modifierBits::of(shortcut.shortcut.modifiers),
                                .from = from,
                                .to = indexOf(layoutIDs, next),
                                .shortcut = shortcut.shortcut,
                                .sourceID = next});
        }
    return bindings;
}

}  // namespace quillmere
