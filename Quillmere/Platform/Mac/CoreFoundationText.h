#pragma once

#include "Quillmere/Platform/Mac/Retained.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// `object` as UTF-8; absent when it is null or no string. What of it is no
/// Unicode text becomes question marks.
std::optional<std::string> textOf(CFTypeRef object);

/// Never null: what is no UTF-8 gives the empty string.
Retained<CFStringRef> makeString(std::string_view text);

}  // namespace quillmere
