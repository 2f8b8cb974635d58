#include "Quillmere/Platform/Linux/Sources/Xkb/XkbRulesNames.h"

#include <algorithm>
#include <cstddef>

namespace quillmere {

namespace {

// XKB has no more groups; further layouts are listed but never reached.
constexpr std::size_t maxGroups = 4;

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> result;
    for (;;) {
        const std::size_t end = text.find(separator);
        result.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return result;
        text.remove_prefix(end + 1);
    }
}

/// An element of the list; empty beyond its end.
std::string_view at(const std::vector<std::string_view>& list, std::size_t index) {
    return index < list.size() ? list[index] : std::string_view{};
}

/// The variant is in the variants' list or, as an old spelling has it, in
/// brackets: "us(dvorak)".
XkbLayout layoutOf(std::string_view name, std::string_view variant) {
    const std::size_t bracket = name.find('(');
    if (bracket != std::string_view::npos && name.ends_with(')')) {
        if (variant.empty()) variant = name.substr(bracket + 1, name.size() - bracket - 2);
        name = name.substr(0, bracket);
    }
    return {std::string(name), std::string(variant)};
}

}  // namespace

XkbRulesNames XkbRulesNames::parse(std::string_view property) {
    const std::vector<std::string_view> fields = split(property, '\0');
    XkbRulesNames result{.rules = std::string(at(fields, 0)), .layouts = {}};
    const std::string_view layoutList = at(fields, 2);
    if (layoutList.empty()) return result;
    const std::vector<std::string_view> layouts = split(layoutList, ',');
    const std::vector<std::string_view> variants = split(at(fields, 3), ',');
    for (std::size_t i = 0; i < std::min(layouts.size(), maxGroups); ++i)
        result.layouts.push_back(layoutOf(layouts[i], at(variants, i)));
    return result;
}

}  // namespace quillmere
