#pragma once

#include "TapService/TapProtocol.h"

#include <bitset>

namespace quillmere::tap {

/// A set of the kernel's key codes.
using KeySet = std::bitset<keyCodeLimit>;

}  // namespace quillmere::tap
