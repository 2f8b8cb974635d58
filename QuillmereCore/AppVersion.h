#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// A dotted numeric version with an optional pre-release tag ("1.4.0",
/// "2.0-beta"). An immutable value, made by `parse` alone.
///
/// Versions are ordered by their numbers, missing ones counting as 0; of equal
/// numbers a tagged version comes before the untagged one. Neither the tag's
/// text nor the way the numbers are written matters, so that "1.2-beta" equals
/// "1.2.0-rc1" although their descriptions differ.
class AppVersion {
public:
    /// Reads `text` (UTF-8; blanks and tabs around it are ignored, line breaks
    /// are not): numbers of ASCII digits, each within a signed 64-bit integer,
    /// separated by single dots, then perhaps "-" and a tag of any text. No
    /// value for anything else.
    static std::optional<AppVersion> parse(std::string_view text);

    /// The numbers as written; at least one, none negative.
    const std::vector<std::int64_t>& numbers() const { return numbers_; }

    /// Whether a pre-release tag follows the numbers.
    bool isTagged() const { return isTagged_; }

    /// The text this version was read from, without the blanks around it.
    const std::string& description() const { return description_; }

    friend std::weak_ordering operator<=>(const AppVersion& a, const AppVersion& b);
    friend bool operator==(const AppVersion& a, const AppVersion& b) { return (a <=> b) == 0; }

private:
    AppVersion(std::vector<std::int64_t> numbers, bool isTagged, std::string description);

    std::vector<std::int64_t> numbers_;
    bool isTagged_;
    std::string description_;
};

}  // namespace quillmere
