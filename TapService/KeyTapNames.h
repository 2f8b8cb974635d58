#pragma once

/// The service on the system bus, as both sides call it.
namespace quillmere::tap::KeyTapNames {

inline constexpr const char* service = "org.quillmere.KeyTap1";
inline constexpr const char* path = "/org/quillmere/KeyTap1";
inline constexpr const char* interface = "org.quillmere.KeyTap1";

/// What polkit is asked for.
inline constexpr const char* action = "org.quillmere.KeyTap1.grant";

/// Names of errors.
namespace Error {
/// The user has not been given access.
inline constexpr const char* notGranted = "org.quillmere.KeyTap1.Error.NotGranted";
/// The caller does not belong to the active session of this computer's seat.
inline constexpr const char* notActive = "org.quillmere.KeyTap1.Error.NotActive";
/// The user is being asked already.
inline constexpr const char* busy = "org.quillmere.KeyTap1.Error.Busy";
/// The user's programs have opened too many taps in a short time.
inline constexpr const char* tooOften = "org.quillmere.KeyTap1.Error.TooOften";
/// polkit does not answer, or something has run out.
inline constexpr const char* failed = "org.quillmere.KeyTap1.Error.Failed";
}  // namespace Error

}  // namespace quillmere::tap::KeyTapNames
