#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// One input source as GNOME knows it: a layout ("xkb", "us+dvorak") or an
/// input method of IBus ("ibus", "libpinyin").
struct GnomeSource {
    std::string type;
    std::string id;

    friend bool operator==(const GnomeSource&, const GnomeSource&) = default;
};

/// The user's list, in its order.
using GnomeSourceList = std::vector<GnomeSource>;

inline bool contains(const GnomeSourceList& list, const GnomeSource& source) {
    return std::ranges::find(list, source) != list.end();
}

}  // namespace quillmere
