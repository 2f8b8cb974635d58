#include "QuillmereCore/AppVersion.h"

#include "QuillmereCore/Characters.h"
#include "QuillmereCore/Utf8.h"
#include "QuillmereCore/Whitespace.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace quillmere {

namespace {

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
        // A "-" with an accent on it is a character of its own and separates no tag.
        const std::string_view tag = description.substr(hyphen + 1);
        if (tag.empty() || characters::joinsPrevious(tag)) return std::nullopt;
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
