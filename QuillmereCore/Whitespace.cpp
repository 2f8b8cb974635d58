#include "QuillmereCore/Whitespace.h"

#include "QuillmereCore/Utf8.h"

namespace quillmere {

namespace {

// Unicode's general category Zs, and the tab.
constexpr bool isBlank(char32_t character) {
    return character == U'\t' || character == U' ' || character == 0xA0 || character == 0x1680
           || (character >= 0x2000 && character <= 0x200A) || character == 0x202F || character == 0x205F
           || character == 0x3000;
}

constexpr bool isNewline(char32_t character) {
    return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == 0x2028 || character == 0x2029;
}

constexpr bool isTrimmed(utf8::CodePoint character, Whitespace whitespace) {
    if (character.length == 0) return false;
    return isBlank(character.value) || (whitespace == Whitespace::blanksAndNewlines && isNewline(character.value));
}

}  // namespace

std::string_view trimmed(std::string_view text, Whitespace whitespace) {
    for (auto start = utf8::first(text); isTrimmed(start, whitespace); start = utf8::first(text))
        text.remove_prefix(start.length);
    for (auto end = utf8::last(text); isTrimmed(end, whitespace); end = utf8::last(text))
        text.remove_suffix(end.length);
    return text;
}

}  // namespace quillmere
