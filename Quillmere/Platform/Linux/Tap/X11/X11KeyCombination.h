#pragma once

#include <compare>

namespace quillmere {

/// A key by its X11 number together with the real modifiers that must be held,
/// exactly these.
struct X11KeyCombination {
    unsigned int keyCode = 0;
    unsigned int modifiers = 0;

    friend auto operator<=>(const X11KeyCombination&, const X11KeyCombination&) = default;
};

}  // namespace quillmere
