#pragma once

#include <string>
#include <string_view>

namespace quillmere::utf8 {

/// Whether `text` is well-formed UTF-8: no overlong forms, no surrogates,
/// nothing beyond U+10FFFF.
bool isWellFormed(std::string_view text);

/// `text` with U+FFFD in place of every byte that belongs to no well-formed
/// sequence; well-formed text comes back unchanged.
std::string repaired(std::string_view text);

/// The first code point of `text` and the bytes it takes. A length of 0 means
/// that `text` is empty or does not begin with a well-formed sequence.
struct CodePoint {
    char32_t value = 0;
    std::size_t length = 0;
};
CodePoint first(std::string_view text);

/// The last code point of `text`, which must be well-formed.
CodePoint last(std::string_view text);

}  // namespace quillmere::utf8
