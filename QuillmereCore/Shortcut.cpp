#include "QuillmereCore/Shortcut.h"

#include "QuillmereCore/JsonValue.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

using KeyName = std::pair<std::int64_t, std::string_view>;

// Sorted by code. Deliberately the printable keys, the arrows, Tab, Return,
// Space and F1 to F12 only; every other key shows its number.
constexpr std::array keyNames{
    KeyName{0, "A"},       KeyName{1, "S"},     KeyName{2, "D"},     KeyName{3, "F"},      KeyName{4, "H"},
    KeyName{5, "G"},       KeyName{6, "Z"},     KeyName{7, "X"},     KeyName{8, "C"},      KeyName{9, "V"},
    KeyName{11, "B"},      KeyName{12, "Q"},    KeyName{13, "W"},    KeyName{14, "E"},     KeyName{15, "R"},
    KeyName{16, "Y"},      KeyName{17, "T"},    KeyName{18, "1"},    KeyName{19, "2"},     KeyName{20, "3"},
    KeyName{21, "4"},      KeyName{22, "6"},    KeyName{23, "5"},    KeyName{24, "="},     KeyName{25, "9"},
    KeyName{26, "7"},      KeyName{27, "-"},    KeyName{28, "8"},    KeyName{29, "0"},     KeyName{30, "]"},
    KeyName{31, "O"},      KeyName{32, "U"},    KeyName{33, "["},    KeyName{34, "I"},     KeyName{35, "P"},
    KeyName{36, "Return"}, KeyName{37, "L"},    KeyName{38, "J"},    KeyName{39, "'"},     KeyName{40, "K"},
    KeyName{41, ";"},      KeyName{42, "\\"},   KeyName{43, ","},    KeyName{44, "/"},     KeyName{45, "N"},
    KeyName{46, "M"},      KeyName{47, "."},    KeyName{48, "Tab"},  KeyName{49, "Space"}, KeyName{50, "`"},
    KeyName{96, "F5"},     KeyName{97, "F6"},   KeyName{98, "F7"},   KeyName{99, "F3"},    KeyName{100, "F8"},
    KeyName{101, "F9"},    KeyName{103, "F11"}, KeyName{109, "F10"}, KeyName{111, "F12"},  KeyName{118, "F4"},
    KeyName{120, "F2"},    KeyName{122, "F1"},  KeyName{123, "←"},   KeyName{124, "→"},    KeyName{125, "↓"},
    KeyName{126, "↑"},
};
static_assert(keyNames.size() == 66);
static_assert(std::ranges::is_sorted(keyNames, {}, &KeyName::first));

std::string keyText(std::int64_t keyCode) {
    const auto name = std::ranges::lower_bound(keyNames, keyCode, {}, &KeyName::first);
    if (name != keyNames.end() && name->first == keyCode) return std::string(name->second);
    return "Key " + std::to_string(keyCode);
}

}  // namespace

std::string Shortcut::displayString() const {
    if (isFnAlone()) return "🌐 Fn";
    std::string text;
    if (modifiers.contains(Modifiers::control)) text += "⌃";
    if (modifiers.contains(Modifiers::option)) text += "⌥";
    if (modifiers.contains(Modifiers::shift)) text += "⇧";
    if (modifiers.contains(Modifiers::command)) text += "⌘";
    return text + keyText(keyCode);
}

boost::json::value encode(Modifiers modifiers) {
    return modifiers.rawValue;
}

std::optional<Modifiers> decodeModifiers(const boost::json::value& json) {
    return json::integer(json).transform([](std::int64_t rawValue) { return Modifiers(rawValue); });
}

boost::json::value encode(const Shortcut& shortcut) {
    return {{"keyCode", shortcut.keyCode}, {"modifiers", encode(shortcut.modifiers)}};
}

std::optional<Shortcut> decodeShortcut(const boost::json::value& json) {
    const boost::json::value* keyCode = json::member(json, "keyCode");
    const boost::json::value* modifiers = json::member(json, "modifiers");
    if (!keyCode || !modifiers) return std::nullopt;
    const std::optional<std::int64_t> code = json::integer(*keyCode);
    const std::optional<Modifiers> set = decodeModifiers(*modifiers);
    if (!code || !set) return std::nullopt;
    return Shortcut{*code, *set};
}

}  // namespace quillmere
