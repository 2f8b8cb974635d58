#include "Quillmere/Platform/Linux/Tap/ModifierBits.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace quillmere::modifierBits {

namespace {

struct Named {
    std::string_view name;
    unsigned int bit;
};

// By sway(5), and i3's names that it takes as well. The first of a bit is the
// one that sway itself writes.
constexpr auto table = std::to_array<Named>({
    {"Shift", shift},
    {"Lock", lock},
    {"Caps", lock},
    {"Control", control},
    {"Ctrl", control},
    {"Mod1", mod1},
    {"Alt", mod1},
    {"Mod2", mod2},
    {"Num", mod2},
    {"Mod3", mod3},
    {"Mod4", mod4},
    {"Super", mod4},
    {"Logo", mod4},
    {"Mod5", mod5},
});

bool isSame(std::string_view left, std::string_view right) {
    const auto lower = [](char letter) { return std::tolower(static_cast<unsigned char>(letter)); };
    return std::ranges::equal(left, right, {}, lower, lower);
}

}  // namespace

std::optional<unsigned int> named(std::string_view name) {
    const auto found = std::ranges::find_if(table, [&](const Named& entry) { return isSame(entry.name, name); });
    if (found == table.end()) return std::nullopt;
    return found->bit;
}

unsigned int of(Modifiers modifiers) {
    unsigned int bits = 0;
    if (modifiers.contains(Modifiers::shift)) bits |= shift;
    if (modifiers.contains(Modifiers::control)) bits |= control;
    if (modifiers.contains(Modifiers::option)) bits |= mod1;
    if (modifiers.contains(Modifiers::command)) bits |= mod4;
    return bits;
}

std::string text(unsigned int modifiers) {
    std::string result;
    for (const Named& entry : table) {
        if ((modifiers & entry.bit) == 0) continue;
        result += entry.name;
        result += '+';
        modifiers &= ~entry.bit;
    }
    return result;
}

}  // namespace quillmere::modifierBits
