#include "QuillmereCore/Utf8.h"

#include <algorithm>

namespace quillmere::utf8 {

namespace {

struct Lead {
    std::size_t length;
    char32_t bits;
    char32_t smallest;  // anything below it in this length is an overlong form
};

Lead lead(unsigned char byte) {
    if (byte < 0x80) return {1, byte, 0};
    if (byte >= 0xC2 && byte < 0xE0) return {2, byte & 0x1FU, 0x80};
    if (byte >= 0xE0 && byte < 0xF0) return {3, byte & 0x0FU, 0x800};
    if (byte >= 0xF0 && byte < 0xF5) return {4, byte & 0x07U, 0x10000};
    return {0, 0, 0};
}

constexpr bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

CodePoint first(std::string_view text) {
    if (text.empty()) return {};
    const Lead start = lead(static_cast<unsigned char>(text.front()));
    if (start.length == 0 || start.length > text.size()) return {};
    char32_t value = start.bits;
    for (const char byte : text.substr(1, start.length - 1)) {
        if (!isContinuation(byte)) return {};
        value = (value << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < start.smallest || isSurrogate || value > 0x10FFFF) return {};
    return {value, start.length};
}

CodePoint last(std::string_view text) {
    if (text.empty()) return {};
    std::size_t start = text.size() - 1;
    while (start > 0 && isContinuation(text[start]))
        --start;
    return first(text.substr(start));
}

bool isWellFormed(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = first(text).length;
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string repaired(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = first(text).length;
        if (length == 0)
            result += "\uFFFD";
        else
            result += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

}  // namespace quillmere::utf8
