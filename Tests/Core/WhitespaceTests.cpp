#include "QuillmereCore/Whitespace.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere {
namespace {

using namespace std::string_literals;

std::string between(const std::string& spaces) {
    std::string text = spaces + "a";
    return text += spaces;
}

TEST(Whitespace, BlanksAreTrimmedAtBothEndsOnly) {
    EXPECT_EQ(trimmed(" \t a \t b\t ", Whitespace::blanks), "a \t b");
    EXPECT_EQ(trimmed("a", Whitespace::blanks), "a");
    EXPECT_EQ(trimmed("", Whitespace::blanks), "");
    EXPECT_EQ(trimmed(" \t ", Whitespace::blanks), "");
}

TEST(Whitespace, EverySpaceOfUnicodeIsABlank) {
    for (const std::string space :
         {"\t", " ", "\u00A0", "\u1680", "\u2000", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000"}) {
        const std::string text = between(space);
        EXPECT_EQ(trimmed(text, Whitespace::blanks), "a") << space;
        EXPECT_EQ(trimmed(text, Whitespace::blanksAndNewlines), "a") << space;
        EXPECT_EQ(trimmed(space + space, Whitespace::blanks), "") << space;
    }
}

TEST(Whitespace, LineBreaksAreTrimmedOnlyWhenAskedFor) {
    for (const std::string newline : {"\n", "\v", "\f", "\r", "\r\n", "\u0085", "\u2028", "\u2029"}) {
        const std::string text = between(newline);
        EXPECT_EQ(trimmed(text, Whitespace::blanks), text) << newline;
        EXPECT_EQ(trimmed(text, Whitespace::blanksAndNewlines), "a") << newline;
    }
}

TEST(Whitespace, OtherInvisibleCharactersStay) {
    for (const std::string& text : {"\0a\0"s, "\u200B"s, "\uFEFF"s, "\u180E"s, "\x1F"s, "\x7F"s, "\x08"s})
        EXPECT_EQ(trimmed(text, Whitespace::blanksAndNewlines), text);
}

}  // namespace
}  // namespace quillmere
