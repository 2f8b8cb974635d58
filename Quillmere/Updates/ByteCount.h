#pragma once

#include <cstdint>
#include <string>

namespace quillmere {

/// A file's size as file managers show it: decimal units, one decimal from the
/// kilobyte on ("0 bytes", "1 byte", "999 bytes", "1.0 kB", "2.3 MB"). Sizes
/// below zero count as zero.
std::string byteCountText(std::int64_t bytes);

}  // namespace quillmere
