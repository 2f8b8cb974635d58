#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"
#include "Quillmere/Platform/Linux/Tap/ModifierBits.h"

#include <algorithm>
#include <span>
#include <utility>

#include <xkbcommon/xkbcommon.h>

namespace quillmere {

namespace {

// Without and with Shift, in nearly every layout.
constexpr xkb_level_index_t plainLevel = 0;
constexpr xkb_level_index_t shiftedLevel = 1;

bool types(xkb_keymap* keymap, xkb_keycode_t code, xkb_level_index_t level, xkb_keysym_t wanted) {
    const xkb_layout_index_t count = xkb_keymap_num_layouts_for_key(keymap, code);
    for (xkb_layout_index_t layout = 0; layout < count; ++layout) {
        const xkb_keysym_t* symbols = nullptr;
        const int length = xkb_keymap_key_get_syms_by_level(keymap, code, layout, level, &symbols);
        for (const xkb_keysym_t symbol : std::span(symbols, static_cast<std::size_t>(length)))
            if (xkb_keysym_to_lower(symbol) == xkb_keysym_to_lower(wanted)) return true;
    }
    return false;
}

}  // namespace

ReservedKeys::ReservedKeys(std::vector<ReservedCombination> combinations) : combinations_(std::move(combinations)) {}

bool ReservedKeys::has(const Shortcut& shortcut, const std::vector<std::string>& layoutIDs) {
    if (!keymap_ || layoutIDs != layoutIDs_) keymap_.emplace(layoutIDs);
    layoutIDs_ = layoutIDs;
    const unsigned int modifiers = modifierBits::of(shortcut.modifiers);
    const std::vector<KeyCodes::EvdevCode> codes = KeyCodes::evdevCodes(shortcut.keyCode);
    return std::ranges::any_of(combinations_, [&](const ReservedCombination& combination) {
        return std::ranges::any_of(codes, [&](KeyCodes::EvdevCode code) {
            return isPressedBy(combination, code + KeyCodes::x11Offset, modifiers);
        });
    });
}

/// By what a key types a compositor takes a press both as it is without its modifiers
/// and as Shift makes it: "Ctrl+Shift+1" and "Ctrl+exclam" are one.
bool ReservedKeys::isPressedBy(const ReservedCombination& combination, unsigned int keyCode,
                               unsigned int modifiers) const {
    if (combination.keys.size() != 1) return false;
    const std::string& key = combination.keys.front();
    if (combination.isByCode) return combination.modifiers == modifiers && key == std::to_string(keyCode);
    const xkb_keysym_t symbol = xkb_keysym_from_name(key.c_str(), XKB_KEYSYM_CASE_INSENSITIVE);
    if (symbol == XKB_KEY_NoSymbol || keymap_->get() == nullptr) return false;
    if (combination.modifiers == modifiers && types(keymap_->get(), keyCode, plainLevel, symbol)) return true;
    const bool isShifted = (modifiers & modifierBits::shift) != 0;
    return isShifted && (combination.modifiers | modifierBits::shift) == modifiers
           && types(keymap_->get(), keyCode, shiftedLevel, symbol);
}

}  // namespace quillmere
