#pragma once

/// The key-tap service on the system bus.
namespace quillmere::TapServiceNames {

inline constexpr const char* service = "org.quillmere.KeyTap1";
inline constexpr const char* path = "/org/quillmere/KeyTap1";
inline constexpr const char* interface = "org.quillmere.KeyTap1";

/// The user is being asked already.
inline constexpr const char* busy = "org.quillmere.KeyTap1.Error.Busy";

}  // namespace quillmere::TapServiceNames
