#include "QuillmereCore/AppVersion.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quillmere {
namespace {

using namespace std::string_literals;
using Numbers = std::vector<std::int64_t>;

AppVersion version(std::string_view text) {
    return AppVersion::parse(text).value();
}

TEST(AppVersion, DottedNumbersWithAnOptionalTagAreRead) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    const struct {
        std::string text;
        Numbers numbers;
        bool isTagged;
        std::string description;
    } cases[] = {
        {"1.2.3", {1, 2, 3}, false, "1.2.3"},
        {" 1.2.3\t", {1, 2, 3}, false, "1.2.3"},
        {"\t \u00A01.2.3\u3000", {1, 2, 3}, false, "1.2.3"},
        {" 2.10-beta ", {2, 10}, true, "2.10-beta"},
        {"2.0-b", {2, 0}, true, "2.0-b"},
        {"2.0-beta-2.1", {2, 0}, true, "2.0-beta-2.1"},
        {"2.0--", {2, 0}, true, "2.0--"},
        {"2.0-.", {2, 0}, true, "2.0-."},
        {"2.0- rc", {2, 0}, true, "2.0- rc"},
        {"2.0-\n", {2, 0}, true, "2.0-\n"},
        {"2.0-a\0b"s, {2, 0}, true, "2.0-a\0b"s},
        {"2.0-Київ", {2, 0}, true, "2.0-Київ"},
        {"10", {10}, false, "10"},
        {"0", {0}, false, "0"},
        {"01.002", {1, 2}, false, "01.002"},
        {"1.0.0", {1, 0, 0}, false, "1.0.0"},
        {"9223372036854775807", {largest}, false, "9223372036854775807"},
        {"00000000000000000000000000000007", {7}, false, "00000000000000000000000000000007"},
        {"1.2.3.4.5.6.7.8.9", {1, 2, 3, 4, 5, 6, 7, 8, 9}, false, "1.2.3.4.5.6.7.8.9"},
    };
    for (const auto& [text, numbers, isTagged, description] : cases) {
        const auto parsed = AppVersion::parse(text);
        ASSERT_TRUE(parsed) << text;
        EXPECT_EQ(parsed->numbers(), numbers) << text;
        EXPECT_EQ(parsed->isTagged(), isTagged) << text;
        EXPECT_EQ(parsed->description(), description) << text;
    }
}

TEST(AppVersion, WhatIsNoVersionIsNoValue) {
    const std::string texts[] = {
        "",
        "   ",
        "\t",
        ".",
        "1..2",
        "1.2.",
        ".1",
        "-",
        "-beta",
        "-1",
        "-rc1",
        "2.0-",
        "2.0- ",
        "v1.2",
        "1.2b",
        "1.2.3\n",
        "\n1.2.3",
        "1.2.3\r\n",
        "1. 2",
        "1 .2",
        "1 2",
        "+1.2",
        "1.+2",
        "1.-2",
        "1,2",
        "0x10",
        "1e3",
        "1_000",
        "１.２",
        "1.٣",
        "1.²",
        "1.2\u0301",
        "1\u200B.2",
        "1\0"s,
        "\0001"s,
        "1.2\0-beta"s,
        "2.0-\u0301beta",
        "2.0-\u200Dbeta",
        "2.0-\uFE0F",
        "9223372036854775808",
        "1.9223372036854775808",
        "99999999999999999999999999999999",
        "1.2-\xFF",
        "1.2-a\xFF",
        "1.2\x80",
    };
    for (const std::string& text : texts)
        EXPECT_FALSE(AppVersion::parse(text)) << text;
}

TEST(AppVersion, AHyphenThatCarriesAMarkOfAnyScriptSeparatesNoTag) {
    const std::string marks[] = {
        "\u0301",      // combining acute accent
        "\u05B0",      // Hebrew point sheva
        "\u064B",      // Arabic fathatan
        "\u093C",      // Devanagari sign nukta
        "\u093E",      // Devanagari vowel sign aa, which takes a place of its own
        "\u0E31",      // Thai character mai han-akat
        "\u1ABF",      // combining Latin small letter w below
        "\u200D",      // zero-width joiner
        "\u3099",      // combining katakana-hiragana voiced sound mark
        "\uFE0F",      // variation selector-16
        "\U0001D165",  // musical symbol combining stem
        "\U0001F3FB",  // emoji modifier
        "\U000E0067",  // tag latin small letter g
    };
    for (const std::string& mark : marks) {
        EXPECT_FALSE(AppVersion::parse("1.2-" + mark)) << mark;
        EXPECT_FALSE(AppVersion::parse("1.2-" + mark + "rc")) << mark;
        EXPECT_FALSE(AppVersion::parse("1.2-" + mark + "-rc")) << mark;
        EXPECT_TRUE(AppVersion::parse("1.2-rc" + mark)) << mark;
        EXPECT_TRUE(AppVersion::parse("1.2-rc-" + mark)) << mark;
    }
}

TEST(AppVersion, ATagMayBeginWithWhateverStandsByItself) {
    for (const char* tag : {"\u05D0", "\u0915", "\u1100", "\u200B", "\u3042", "\U0001F1FA\U0001F1E6", "\u00AD", "\r\n"})
        EXPECT_TRUE(AppVersion::parse(std::string("1.2-") + tag)) << tag;
}

TEST(AppVersion, NumbersWithoutEndAreRead) {
    std::string text = "1";
    for (int i = 0; i < 100'000; ++i)
        text += ".0";
    EXPECT_EQ(version(text), version("1"));
    EXPECT_FALSE(AppVersion::parse(text + "."));
}

TEST(AppVersion, ATagAndOnlyItsPresenceOrdersAfterTheNumbers) {
    const struct {
        const char* smaller;
        const char* larger;
    } cases[] = {
        {"1.9", "1.10"},       {"1.2", "1.2.0.1"},    {"2.9.9", "3.0-rc1"},
        {"3.0-rc1", "3.0"},    {"1.2-beta", "1.2"},   {"1.2", "1.2.1-alpha"},
        {"1.2-beta", "1.2.0"}, {"1.2.0-beta", "1.2"}, {"0-a", "0.0.0"},
        {"0", "0.0.1-a"},      {"1", "2-a"},          {"1.9223372036854775806", "1.9223372036854775807"},
    };
    for (const auto& [smallerText, largerText] : cases) {
        const AppVersion smaller = version(smallerText);
        const AppVersion larger = version(largerText);
        EXPECT_TRUE(smaller < larger) << smallerText << " " << largerText;
        EXPECT_TRUE(smaller <= larger) << smallerText << " " << largerText;
        EXPECT_TRUE(larger > smaller) << smallerText << " " << largerText;
        EXPECT_TRUE(larger >= smaller) << smallerText << " " << largerText;
        EXPECT_FALSE(larger < smaller) << smallerText << " " << largerText;
        EXPECT_FALSE(larger <= smaller) << smallerText << " " << largerText;
        EXPECT_TRUE(smaller != larger) << smallerText << " " << largerText;
    }
}

TEST(AppVersion, TrailingZerosLeadingZerosAndTheTagsTextDoNotMatter) {
    const std::pair<const char*, const char*> cases[] = {
        {"1.2", "1.2.0"}, {"1.2", "1.2.0.0"},     {"1.2-beta", "1.2-rc1"}, {"3.0-rc1", "3.0-rc2"},
        {"01.2", "1.2"},  {"0", "0.0"},           {"0-a", "0.0.0-b"},      {"1.2-beta", "1.2.0-beta"},
        {" 1.2 ", "1.2"}, {"1.2-a\nb", "1.2- c"},
    };
    for (const auto& [oneText, otherText] : cases) {
        const AppVersion one = version(oneText);
        const AppVersion other = version(otherText);
        EXPECT_TRUE(one == other) << oneText << " " << otherText;
        EXPECT_FALSE(one < other || other < one || one != other) << oneText << " " << otherText;
        EXPECT_TRUE(one <= other && one >= other) << oneText << " " << otherText;
    }
}

TEST(AppVersion, EqualVersionsKeepTheirOwnDescriptions) {
    EXPECT_EQ(version("01.2"), version("1.2"));
    EXPECT_NE(version("01.2").description(), version("1.2").description());
}

// Few distinct numbers, so that equal and nearly equal versions are common.
AppVersion randomVersion(std::mt19937& random) {
    constexpr std::int64_t numbers[] = {0, 0, 0, 1, 2, 10, std::numeric_limits<std::int64_t>::max()};
    std::string text;
    for (std::size_t count = 1 + random() % 4; count > 0; --count) {
        text += random() % 8 == 0 ? "0" : "";
        text += std::to_string(numbers[random() % std::size(numbers)]) + (count > 1 ? "." : "");
    }
    const char* tags[] = {"", "", "-a", "-b.2"};
    return version(text + tags[random() % std::size(tags)]);
}

TEST(AppVersion, TheOrderIsAStrictWeakOrder) {
    std::mt19937 random(20240607);
    int equal = 0;
    for (int i = 0; i < 10'000; ++i) {
        const AppVersion a = randomVersion(random);
        const AppVersion b = randomVersion(random);
        const AppVersion c = randomVersion(random);
        const std::string triple = a.description() + " " + b.description() + " " + c.description();
        const auto isEquivalent = [](const AppVersion& x, const AppVersion& y) { return !(x < y) && !(y < x); };
        ASSERT_FALSE(a < a) << triple;
        ASSERT_FALSE(a < b && b < a) << triple;
        ASSERT_TRUE(!(a < b && b < c) || a < c) << triple;
        ASSERT_TRUE(!(isEquivalent(a, b) && isEquivalent(b, c)) || isEquivalent(a, c)) << triple;
        ASSERT_EQ(a == b, isEquivalent(a, b)) << triple;
        ASSERT_EQ(a != b, !isEquivalent(a, b)) << triple;
        ASSERT_EQ(a <= b, !(b < a)) << triple;
        ASSERT_EQ(a > b, b < a) << triple;
        ASSERT_EQ(a >= b, !(a < b)) << triple;
        equal += a == b ? 1 : 0;
    }
    EXPECT_GT(equal, 100) << "the triples must contain enough equal versions to be worth anything";
}

}  // namespace
}  // namespace quillmere
