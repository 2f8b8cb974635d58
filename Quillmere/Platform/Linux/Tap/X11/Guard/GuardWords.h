#pragma once

/// What the tap and its guard say to each other: one byte each.
namespace quillmere::guard {

/// Guard to tap: are you there?
inline constexpr char question = '?';
/// Tap to guard: I am.
inline constexpr char answer = '!';
/// Tap to guard: from now on the tap has the whole keyboard; not any more.
inline constexpr char recording = 'R';
inline constexpr char recorded = 'r';

}  // namespace quillmere::guard
