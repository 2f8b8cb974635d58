#pragma once

#include <string_view>

/// The sets of characters of RFC 3986, appendix A.
namespace quillmere::addressText {

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

constexpr bool isHexDigit(char character) {
    return isDigit(character) || (character >= 'A' && character <= 'F') || (character >= 'a' && character <= 'f');
}

/// "unreserved": letters, digits and what means nothing anywhere.
constexpr bool isUnreserved(char character) {
    return isDigit(character) || (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z')
           || std::string_view("-._~").contains(character);
}

/// "unreserved" and "sub-delims".
constexpr bool isPlain(char character) {
    return isUnreserved(character) || std::string_view("!$&'()*+,;=").contains(character);
}

/// "pchar" but for the percent-encoded ones: what a component of a path holds.
constexpr bool isPathCharacter(char character) {
    return isPlain(character) || character == ':' || character == '@';
}

}  // namespace quillmere::addressText
