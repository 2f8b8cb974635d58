#pragma once

#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// What the keyboard's map was made from, as the property _XKB_RULES_NAMES of
/// the root window tells it.
struct XkbRulesNames {
    std::string rules;               ///< "evdev"
    std::vector<XkbLayout> layouts;  ///< in the order of the groups, at most four

    /// Reads the property's value: rules, model, layouts, variants and
    /// options, each ended by a zero byte, the lists separated by commas.
    /// Whatever is missing is empty.
    static XkbRulesNames parse(std::string_view property);

    friend bool operator==(const XkbRulesNames&, const XkbRulesNames&) = default;
};

}  // namespace quillmere
