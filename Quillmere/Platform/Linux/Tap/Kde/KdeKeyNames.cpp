#include "Quillmere/Platform/Linux/Tap/Kde/KdeKeyNames.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <Qt>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

namespace quillmere {

namespace {

constexpr xkb_keysym_t lastLatin1 = 0xff;

struct Named {
    xkb_keysym_t symbol;
    Qt::Key key;
};

constexpr auto table = std::to_array<Named>({
    {XKB_KEY_Escape, Qt::Key_Escape},    {XKB_KEY_Tab, Qt::Key_Tab},
    {XKB_KEY_ISO_Left_Tab, Qt::Key_Tab}, {XKB_KEY_BackSpace, Qt::Key_Backspace},
    {XKB_KEY_Return, Qt::Key_Return},    {XKB_KEY_Insert, Qt::Key_Insert},
    {XKB_KEY_Delete, Qt::Key_Delete},    {XKB_KEY_Print, Qt::Key_Print},
    {XKB_KEY_Sys_Req, Qt::Key_SysReq},   {XKB_KEY_Pause, Qt::Key_Pause},
    {XKB_KEY_Home, Qt::Key_Home},        {XKB_KEY_End, Qt::Key_End},
    {XKB_KEY_Left, Qt::Key_Left},        {XKB_KEY_Up, Qt::Key_Up},
    {XKB_KEY_Right, Qt::Key_Right},      {XKB_KEY_Down, Qt::Key_Down},
    {XKB_KEY_Prior, Qt::Key_PageUp},     {XKB_KEY_Next, Qt::Key_PageDown},
    {XKB_KEY_Menu, Qt::Key_Menu},        {XKB_KEY_Scroll_Lock, Qt::Key_ScrollLock},
});

bool isLatin1(xkb_keysym_t symbol) {
    return symbol >= XKB_KEY_space && symbol <= lastLatin1;
}

bool isLetter(xkb_keysym_t symbol) {
    return xkb_keysym_to_upper(symbol) != xkb_keysym_to_lower(symbol);
}

std::optional<int> keyOf(xkb_keysym_t symbol) {
    if (isLatin1(symbol)) return static_cast<int>(xkb_keysym_to_upper(symbol));
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F35) return Qt::Key_F1 + static_cast<int>(symbol - XKB_KEY_F1);
    const auto found = std::ranges::find(table, symbol, &Named::symbol);
    if (found == table.end()) return std::nullopt;
    return found->key;
}

/// What a key types, and whether Shift has gone into that.
struct Typed {
    xkb_keysym_t symbol = XKB_KEY_NoSymbol;
    bool hasUsedShift = false;
};

Typed type(xkb_keymap* keymap, xkb_keycode_t code, bool isShifted, xkb_layout_index_t layout) {
    const std::unique_ptr<xkb_state, decltype(&xkb_state_unref)> state(xkb_state_new(keymap), xkb_state_unref);
    const xkb_mod_index_t shift = xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_SHIFT);
    xkb_state_update_mask(state.get(), isShifted ? 1U << shift : 0, 0, 0, 0, 0, layout);
    return {xkb_state_key_get_one_sym(state.get(), code),
            isShifted && xkb_state_mod_index_is_consumed(state.get(), code, shift) > 0};
}

int modifiersOf(Modifiers modifiers) {
    Qt::KeyboardModifiers result;
    if (modifiers.contains(Modifiers::command)) result |= Qt::MetaModifier;
    if (modifiers.contains(Modifiers::control)) result |= Qt::ControlModifier;
    if (modifiers.contains(Modifiers::option)) result |= Qt::AltModifier;
    return static_cast<int>(result.toInt());
}

}  // namespace

KdeKeyNames::KdeKeyNames(const std::vector<std::string>& sourceIDs) : keymap_(sourceIDs) {}

std::vector<int> KdeKeyNames::names(const Shortcut& shortcut, const std::optional<std::string>& current) const {
    std::vector<int> result;
    if (keymap_.get() == nullptr || shortcut.isFnAlone()) return result;
    const std::vector<std::string>& ids = keymap_.ids();
    const auto found = std::ranges::find(ids, current);
    const auto layout = found == ids.end() ? 0U : static_cast<unsigned int>(found - ids.begin());
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.keyCode)) {
        const std::optional<int> one = name(code, shortcut.modifiers, layout);
        if (one && std::ranges::find(result, *one) == result.end()) result.push_back(*one);
    }
    return result;
}

std::optional<int> KdeKeyNames::name(unsigned int evdevCode, Modifiers modifiers, unsigned int layout) const {
    const bool isShifted = modifiers.contains(Modifiers::shift);
    const xkb_keycode_t code = evdevCode + KeyCodes::x11Offset;
    Typed typed = type(keymap_.get(), code, isShifted, layout);
    // A letter of another script goes by the first of its key's that is Latin.
    const xkb_layout_index_t count = xkb_keymap_num_layouts(keymap_.get());
    for (xkb_layout_index_t other = 0; other < count && !keyOf(typed.symbol); ++other)
        typed = type(keymap_.get(), code, isShifted, other);
    const std::optional<int> key = keyOf(typed.symbol);
    if (!key) return std::nullopt;
    // "Shift and 1" is "!", but "Shift and a" is "Shift and A".
    const bool keepsShift =
        isShifted && (!typed.hasUsedShift || isLetter(typed.symbol) || typed.symbol == XKB_KEY_ISO_Left_Tab);
    return *key | modifiersOf(modifiers) | (keepsShift ? static_cast<int>(Qt::ShiftModifier) : 0);
}

}  // namespace quillmere
