#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace quillmere::support {

/// One key going down or up.
struct KeyMovement {
    std::uint32_t code = 0;  ///< as the kernel has it (linux/input-event-codes.h)
    bool isPress = false;
};

/// Reads a sequence of keys: "+ctrl +alt +space -space -alt -ctrl". The names
/// are ctrl, alt, shift, super, caps, num, space, tab, escape and some letters;
/// throws at another.
std::vector<KeyMovement> keyMovements(std::string_view text);

}  // namespace quillmere::support
