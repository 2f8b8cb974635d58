#pragma once

namespace quillmere::SystemVersion {

/// The first versions of macOS that have what the program can do without.
inline constexpr long loginItems = 13;
inline constexpr long glass = 26;

/// Whether this system is of the `major` version or later.
bool isAtLeast(long major);

}  // namespace quillmere::SystemVersion
