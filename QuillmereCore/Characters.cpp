#include "QuillmereCore/Characters.h"

#include "QuillmereCore/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include <utf8proc.h>

namespace quillmere::characters {

namespace {

std::string encoded(utf8proc_int32_t character) {
    std::array<utf8proc_uint8_t, 4> bytes{};
    const utf8proc_ssize_t length = utf8proc_encode_char(character, bytes.data());
    return {bytes.begin(), bytes.begin() + length};
}

}  // namespace

bool joinsPrevious(std::string_view text) {
    const utf8::CodePoint next = utf8::first(text);
    return next.length > 0 && !utf8proc_grapheme_break('-', static_cast<utf8proc_int32_t>(next.value));
}

bool hasPrefix(std::string_view text, std::string_view prefix) {
    return text.starts_with(prefix) && !joinsPrevious(text.substr(prefix.size()));
}

std::string lowercased(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const utf8::CodePoint next = utf8::first(text);
        if (next.length == 0)
            result += text.front();
        else
            result += encoded(utf8proc_tolower(static_cast<utf8proc_int32_t>(next.value)));
        text.remove_prefix(std::max<std::size_t>(next.length, 1));
    }
    return result;
}

}  // namespace quillmere::characters
