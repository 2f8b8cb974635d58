#include "Fuzz/Require.h"
#include "QuillmereCore/AppVersion.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace quillmere {
namespace {

void checkVersion(const AppVersion& version, std::string_view text) {
    require(!version.numbers().empty(), "a version has a number");
    require(std::ranges::all_of(version.numbers(), [](std::int64_t number) { return number >= 0; }),
            "a number is not negative");
    require(text.find(version.description()) != std::string_view::npos, "the description is part of the text");
    const auto again = AppVersion::parse(version.description());
    require(again == version && again->description() == version.description() && again->numbers() == version.numbers(),
            "the description reads back as the version");
    require(version.isTagged() == version.description().contains('-'), "a hyphen makes the tag");
    require(version.isTagged() || AppVersion::parse(version.description() + ".0") == version, "zeros do not matter");
    require(version.isTagged() || AppVersion::parse(version.description() + "-a") < version, "a tag comes before");
    require(version.isTagged() || version < AppVersion::parse(version.description() + ".1-a"), "a number comes after");
}

void checkOrder(const AppVersion& a, const AppVersion& b, const AppVersion& c) {
    const auto isEquivalent = [](const AppVersion& x, const AppVersion& y) { return !(x < y) && !(y < x); };
    require(!(a < a), "nothing comes before itself");
    require(!(a < b && b < a), "the order has one direction");
    require(!(a < b && b < c) || a < c, "the order is transitive");
    require(!(isEquivalent(a, b) && isEquivalent(b, c)) || isEquivalent(a, c), "equivalence is transitive");
    require((a == b) == isEquivalent(a, b), "equality is equivalence");
    require((a <= b) == !(b < a) && (a > b) == (b < a) && (a >= b) == !(a < b), "the operators agree");
}

// The input's first lines as versions; a line break can be no part of the
// numbers, and the tag after it may well be lost.
void check(std::string_view bytes) {
    std::vector<AppVersion> versions;
    for (int line = 0; line < 4; ++line) {
        const std::string_view text = bytes.substr(0, bytes.find('\n'));
        bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
        if (const auto version = AppVersion::parse(text)) {
            checkVersion(*version, text);
            versions.push_back(*version);
        }
    }
    for (const AppVersion& a : versions)
        for (const AppVersion& b : versions)
            for (const AppVersion& c : versions)
                checkOrder(a, b, c);
}

}  // namespace
}  // namespace quillmere

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    quillmere::check({data, size});
    return 0;
}
