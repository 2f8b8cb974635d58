#pragma once

#include <string>
#include <vector>

namespace quillmere::support {

/// A cycle group as it is stored, written without the program's own encoder.
struct StoredGroup {
    int keyCode = 49;                  ///< virtual key code: 49 = Space, 63 = Fn
    int modifiers = 12;                ///< 1 Command, 2 Shift, 4 Option, 8 Control
    std::vector<std::string> sources;  ///< identifiers, as "xkb:us"
};

/// The stored JSON of a configuration. `plate` is a JSON object.
std::string configurationText(const std::vector<StoredGroup>& groups, bool active = true,
                              const std::string& plate = R"({"visibility":"always"})");

}  // namespace quillmere::support
