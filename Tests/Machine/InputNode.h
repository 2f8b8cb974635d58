#pragma once

#include <string>

namespace quillmere::machine {

/// The name of an open input device.
std::string deviceName(int descriptor);

/// Whether an open input device is the tap service's stand-in for another: a
/// virtual one that no test has made.
bool isClone(int descriptor);

}  // namespace quillmere::machine
