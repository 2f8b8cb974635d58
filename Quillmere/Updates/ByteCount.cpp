#include "Quillmere/Updates/ByteCount.h"

#include <algorithm>
#include <array>

namespace quillmere {

namespace {

constexpr std::int64_t thousand = 1000;
constexpr std::array units = {"kB", "MB", "GB", "TB", "PB", "EB"};

/// `bytes` in tenths of `unit`, rounded half up without leaving the integers,
/// so that no size is a hair beside what it says.
constexpr std::int64_t tenths(std::int64_t bytes, std::int64_t unit) {
    const std::int64_t tenth = unit / 10;
    return bytes / tenth + (bytes % tenth >= tenth / 2 ? 1 : 0);
}

}  // namespace

std::string byteCountText(std::int64_t bytes) {
    bytes = std::max<std::int64_t>(bytes, 0);
    if (bytes < thousand) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    std::int64_t unit = thousand;
    std::size_t index = 0;
    // Compared after rounding: 999,950 bytes are 1.0 MB, not 1000.0 kB.
    while (tenths(bytes, unit) >= thousand * 10 && index + 1 < units.size()) {
        unit *= thousand;
        ++index;
    }
    const std::int64_t amount = tenths(bytes, unit);
    return std::to_string(amount / 10) + "." + std::to_string(amount % 10) + " " + units[index];
}

}  // namespace quillmere
