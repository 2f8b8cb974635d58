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

/// From each layout to the group's next, among those that the desktop has.
std::vector<SwayBinding::Step> stepsOf(const ArmedShortcut& shortcut, const std::vector<std::string>& layoutIDs) {
    CycleGroup group{.id = {}, .shortcut = shortcut.shortcut, .sourceIDs = shortcut.sourceIDs};
    std::erase_if(group.sourceIDs, [&](const std::string& id) { return indexOf(layoutIDs, id) == layoutIDs.size(); });
    std::vector<SwayBinding::Step> steps;
    if (group.sourceIDs.empty()) return steps;
    const std::size_t count = std::min(layoutIDs.size(), maxLayouts);
    for (std::size_t from = 0; from < count; ++from) {
        const std::string next = group.next(layoutIDs[from]).value_or(std::string());
        steps.push_back({.from = from, .to = indexOf(layoutIDs, next), .sourceID = next});
    }
    return steps;
}

}  // namespace

std::string SwayBinding::combination() const {
    const std::string keys = modifierBits::text(modifiers) + std::to_string(keyCode);
    return step ? "Group" + std::to_string(step->from + 1) + '+' + keys : keys;
}

std::string SwayBinding::action() const {
    // The word tells them from the user's own.
    return step ? "input type:keyboard xkb_switch_layout " + std::to_string(step->to) : "nop quillmere";
}

std::string SwayBinding::command() const {
    // Held, it would go round and round.
    return "bindcode --no-warn --no-repeat " + combination() + ' ' + action();
}

std::vector<SwayBinding> swayBindings(const ArmedShortcut& shortcut, const std::vector<std::string>& layoutIDs) {
    std::vector<SwayBinding> bindings;
    if (shortcut.shortcut.isFnAlone()) return bindings;
    const bool isOnlySwallowed = shortcut.sourceIDs.empty();
    const std::vector<SwayBinding::Step> steps = stepsOf(shortcut, layoutIDs);
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.shortcut.keyCode)) {
        SwayBinding binding{.keyCode = code + KeyCodes::x11Offset,
                            .modifiers = modifierBits::of(shortcut.shortcut.modifiers),
                            .shortcut = shortcut.shortcut,
                            .step = std::nullopt};
        if (isOnlySwallowed) bindings.push_back(binding);
        for (const SwayBinding::Step& step : steps) {
            binding.step = step;
            bindings.push_back(binding);
        }
    }
    return bindings;
}

}  // namespace quillmere
