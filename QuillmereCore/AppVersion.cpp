#include "QuillmereCore/AppVersion.h"

#include "QuillmereCore/Utf8.h"
#include "QuillmereCore/Whitespace.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace quillmere {

namespace {

// Whether a code point joins the character before it. A "-" with an accent on
// it is a character of its own and separates no tag. The marks that any script
// may use are enough: those of one script follow its letters, never a hyphen.
constexpr bool joinsPrevious(char32_t character) {
    constexpr std::pair<char32_t, char32_t> marks[] = {
        {0x0300, 0x036F},   {0x0483, 0x0489},   {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},
        {0x200C, 0x200D},   {0x20D0, 0x20FF},   {0xFE00, 0xFE0F},   {0xFE20, 0xFE2F},
        {0x1F3FB, 0x1F3FF}, {0xE0020, 0xE007F}, {0xE0100, 0xE01EF},
    };
    return std::ranges::any_of(marks,
                               [=](auto range) { return character >= range.first && character <= range.second; });
}

// No sign can get here: the text ends before the first "-", and a "+" is
// nothing that from_chars takes.
std::optional<std::int64_t> parseNumber(std::string_view text) {
    std::int64_t number = 0;
    const char* start = text.data();
    const char* end = start + text.size();
    const auto [stop, error] = std::from_chars(start, end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

std::optional<std::vector<std::int64_t>> parseNumbers(std::string_view text) {
    std::vector<std::int64_t> numbers;
    while (true) {
        const std::size_t dot = text.find('.');
        const std::optional<std::int64_t> number = parseNumber(text.substr(0, dot));
        if (!number) return std::nullopt;
        numbers.push_back(*number);
        if (dot == std::string_view::npos) return numbers;
        text.remove_prefix(dot + 1);
    }
}

}  // namespace

AppVersion::AppVersion(std::vector<std::int64_t> numbers, bool isTagged, std::string description)
    : numbers_(std::move(numbers)), isTagged_(isTagged), description_(std::move(description)) {}

std::optional<AppVersion> AppVersion::parse(std::string_view text) {
    if (!utf8::isWellFormed(text)) return std::nullopt;
    const std::string_view description = trimmed(text, Whitespace::blanks);
    const std::size_t hyphen = description.find('-');
    const bool isTagged = hyphen != std::string_view::npos;
    if (isTagged) {
        const utf8::CodePoint next = utf8::first(description.substr(hyphen + 1));
        if (next.length == 0 || joinsPrevious(next.value)) return std::nullopt;
    }
    std::optional<std::vector<std::int64_t>> numbers = parseNumbers(description.substr(0, hyphen));
    if (!numbers) return std::nullopt;
    return AppVersion(*std::move(numbers), isTagged, std::string(description));
}

std::weak_ordering operator<=>(const AppVersion& a, const AppVersion& b) {
    const auto component = [](const AppVersion& version, std::size_t i) {
        return i < version.numbers_.size() ? version.numbers_[i] : 0;
    };
    for (std::size_t i = 0; i < std::max(a.numbers_.size(), b.numbers_.size()); ++i)
        if (const auto order = component(a, i) <=> component(b, i); order != 0) return order;
    return b.isTagged_ <=> a.isTagged_;  // the tagged one first
}

}  // namespace quillmere
