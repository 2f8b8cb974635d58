#include "Tests/Support/KeyMovements.h"

#include "Tests/Support/SupportError.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include <linux/input-event-codes.h>

namespace quillmere::support {

namespace {

struct Named {
    std::string_view name;
    std::uint32_t code;
};

constexpr auto keyNames = std::to_array<Named>({
    {"ctrl", KEY_LEFTCTRL},
    {"alt", KEY_LEFTALT},
    {"shift", KEY_LEFTSHIFT},
    {"super", KEY_LEFTMETA},
    {"caps", KEY_CAPSLOCK},
    {"num", KEY_NUMLOCK},
    {"space", KEY_SPACE},
    {"tab", KEY_TAB},
    {"escape", KEY_ESC},
    {"a", KEY_A},
    {"k", KEY_K},
    {"q", KEY_Q},
});

std::uint32_t codeOf(std::string_view name) {
    const auto found = std::ranges::find(keyNames, name, &Named::name);
    if (found == keyNames.end()) throw SupportError("no key " + std::string(name));
    return found->code;
}

}  // namespace

std::vector<KeyMovement> keyMovements(std::string_view text) {
    std::vector<KeyMovement> movements;
    std::istringstream stream{std::string(text)};
    for (std::string word; stream >> word;)
        movements.push_back({.code = codeOf(std::string_view(word).substr(1)), .isPress = word.front() == '+'});
    return movements;
}

}  // namespace quillmere::support
