#include "QuillmereCore/IPLiteral.h"

#include "QuillmereCore/AddressText.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace quillmere {

namespace {

// 0 to 255, without zeros in front.
bool isByte(std::string_view text) {
    if (text.empty() || text.size() > 3 || !std::ranges::all_of(text, addressText::isDigit)) return false;
    return text.size() == 1 || (text.front() != '0' && (text.size() == 2 || text <= "255"));
}

bool isIPv4(std::string_view text) {
    for (int i = 0; i < 3; ++i) {
        const std::size_t dot = text.find('.');
        if (dot == std::string_view::npos || !isByte(text.substr(0, dot))) return false;
        text.remove_prefix(dot + 1);
    }
    return isByte(text);
}

bool isGroup(std::string_view text) {
    return !text.empty() && text.size() <= 4 && std::ranges::all_of(text, addressText::isHexDigit);
}

// How many groups of two bytes stand in `text`, with colons between them; none
// in the empty text. The last may be an IPv4 address, which counts as two.
std::optional<int> countGroups(std::string_view text, bool mayEndInIPv4) {
    if (text.empty()) return 0;
    int count = 0;
    while (true) {
        const std::size_t colon = text.find(':');
        const bool isLast = colon == std::string_view::npos;
        if (isLast && mayEndInIPv4 && isIPv4(text)) return count + 2;
        if (!isGroup(text.substr(0, colon))) return std::nullopt;
        ++count;
        if (isLast) return count;
        text.remove_prefix(colon + 1);
    }
}

bool isIPv6(std::string_view text) {
    constexpr int groups = 8;
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) return countGroups(text, true) == groups;
    const std::optional<int> before = countGroups(text.substr(0, gap), false);
    const std::optional<int> after = countGroups(text.substr(gap + 2), true);
    // The gap stands for one group at least.
    return before && after && *before + *after < groups;
}

bool isLaterVersion(std::string_view text) {
    if (text.empty() || (text.front() != 'v' && text.front() != 'V')) return false;
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos) return false;
    const std::string_view version = text.substr(1, dot - 1);
    const std::string_view address = text.substr(dot + 1);
    const auto isAddressCharacter = [](char character) { return addressText::isPlain(character) || character == ':'; };
    return !version.empty() && std::ranges::all_of(version, addressText::isHexDigit) && !address.empty()
           && std::ranges::all_of(address, isAddressCharacter);
}

}  // namespace

bool isIPLiteral(std::string_view text) {
    return isIPv6(text) || isLaterVersion(text);
}

}  // namespace quillmere
