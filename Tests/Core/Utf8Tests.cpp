#include "QuillmereCore/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere {
namespace {

using namespace std::string_literals;

TEST(Utf8, WellFormedTextIsRecognisedAndLeftAlone) {
    const std::string texts[] = {
        "",
        "plain",
        "a\0b"s,
        "Українська",
        "⌃⌥",
        "🌐",
        "\x7F",
        "\xC2\x80",
        "\xDF\xBF",
        "\xE0\xA0\x80",
        "\xED\x9F\xBF",
        "\xEE\x80\x80",
        "\xEF\xBF\xBF",
        "\xF0\x90\x80\x80",
        "\xF4\x8F\xBF\xBF",
    };
    for (const std::string& text : texts) {
        EXPECT_TRUE(utf8::isWellFormed(text)) << text;
        EXPECT_EQ(utf8::repaired(text), text);
    }
}

TEST(Utf8, EveryByteOutsideACharacterIsReplaced) {
    const struct {
        const char* flaw;
        std::string text;
        std::string repaired;
    } cases[] = {
        {"a lone continuation", "a\x80z", "a\uFFFDz"},
        {"a sequence cut at the end", "a\xE2\x8C", "a\uFFFD\uFFFD"},
        {"a sequence cut by a letter", "\xC3(", "\uFFFD("},
        {"a sequence cut by another", "\xE2\x8C⌥", "\uFFFD\uFFFD⌥"},
        {"an overlong slash", "\xC0\xAF", "\uFFFD\uFFFD"},
        {"an overlong three-byte form", "\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},
        {"an overlong four-byte form", "\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"a surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"a code point beyond the last", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"bytes that never occur", "\xF5\xFE\xFF", "\uFFFD\uFFFD\uFFFD"},
    };
    for (const auto& [flaw, text, repaired] : cases) {
        EXPECT_FALSE(utf8::isWellFormed(text)) << flaw;
        EXPECT_EQ(utf8::repaired(text), repaired) << flaw;
    }
}

TEST(Utf8, TheFirstAndTheLastCodePointAreFound) {
    const std::string_view text = "⌃a🌐";
    EXPECT_EQ(utf8::first(text).value, U'⌃');
    EXPECT_EQ(utf8::first(text).length, 3U);
    EXPECT_EQ(utf8::last(text).value, U'🌐');
    EXPECT_EQ(utf8::last(text).length, 4U);
    EXPECT_EQ(utf8::first("").length, 0U);
    EXPECT_EQ(utf8::last("").length, 0U);
    EXPECT_EQ(utf8::first("\x80").length, 0U);
}

}  // namespace
}  // namespace quillmere
