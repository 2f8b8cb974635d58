#pragma once

#include <string>
#include <string_view>

/// Text as its readers see it, by the Unicode tables of libutf8proc. Bytes
/// that belong to no well-formed UTF-8 sequence are letters to none of these,
/// and stay as they are. Pure functions for any thread.
namespace quillmere::characters {

/// Whether `text` begins with something that is no character of its own but
/// part of the one before it, as an accent is, when that is an ASCII one.
bool joinsPrevious(std::string_view text);

/// Whether `text` begins with the ASCII text `prefix`, nothing of what follows
/// being part of its last character.
bool hasPrefix(std::string_view text, std::string_view prefix);

/// `text` with the small letter in place of every capital that has one.
std::string lowercased(std::string_view text);

}  // namespace quillmere::characters
