#include "QuillmereCore/JsonValue.h"

#include <gtest/gtest.h>
#include <boost/json/serialize.hpp>

#include <limits>
#include <random>
#include <string>

#include <pthread.h>

namespace quillmere {
namespace {

using namespace std::string_literals;

std::string nested(std::size_t depth, const std::string& open, const std::string& close, const std::string& core = "") {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i)
        text += open;
    text += core;
    for (std::size_t i = 0; i < depth; ++i)
        text += close;
    return text;
}

TEST(JsonValue, WhatIsNotStrictJsonIsNoValue) {
    const std::string texts[] = {
        "",
        " ",
        "{",
        "[1,]",
        "{\"a\":1,}",
        "{a:1}",
        "{'a':1}",
        "{} x",
        "{}{}",
        "{}\0"s,
        "// comment\n{}",
        "/* */{}",
        "01",
        "+1",
        ".5",
        "1.",
        "1e",
        "NaN",
        "Infinity",
        "nul",
        "TRUE",
        "\xEF\xBB\xBF{}",
        "\"tab\there\"",
        "\"nul\0here\""s,
        "\"\\x41\"",
        "\"\\u12\"",
        "\"open",
        "1e99999999999x",
        "[1e99999999999",
    };
    for (const std::string& text : texts)
        EXPECT_FALSE(json::parse(text)) << text;
}

TEST(JsonValue, InvalidUtf8IsNoValue) {
    for (const std::string text :
         {"\"\xC3(\"", "\"\xED\xA0\x80\"", "\"\xF4\x90\x80\x80\"", "\"\xC0\x80\"", "\"\xFF\"", "{\"\x80\":1}"})
        EXPECT_FALSE(json::parse(text)) << text;
}

TEST(JsonValue, HalfASurrogatePairIsNoValue) {
    for (const char* text : {R"("\ud800")", R"("\udc00")", R"("\ud800\u0041")", R"("\ud800x")", R"({"\udfff":1})"})
        EXPECT_FALSE(json::parse(text)) << text;
    EXPECT_EQ(json::string(json::parse(R"("\ud83c\udf10")").value()), "🌐");
}

TEST(JsonValue, AnEscapedNulIsPartOfTheString) {
    EXPECT_EQ(json::string(json::parse("\"a\\u0000b\"").value()), "a\0b"s);
}

TEST(JsonValue, WhitespaceAroundTheDocumentIsAllowed) {
    EXPECT_TRUE(json::parse(" \t\r\n{ } \t\r\n"));
}

TEST(JsonValue, NestingIsAcceptedDownToTheMaximumDepthAndNoFurther) {
    EXPECT_TRUE(json::parse(nested(json::maximumDepth, "[", "]")));
    EXPECT_FALSE(json::parse(nested(json::maximumDepth + 1, "[", "]")));
    EXPECT_FALSE(json::parse(nested(json::maximumDepth + 1, "{\"a\":", "}")));
    EXPECT_FALSE(json::parse(std::string(1'000'000, '[')));
}

TEST(JsonValue, FiveHundredAndTwelveLevelsAreAcceptedWhereverTheyStand) {
    EXPECT_TRUE(json::parse(nested(512, "[", "]")));
    EXPECT_FALSE(json::parse(nested(513, "[", "]")));
    for (const std::string level : {"[", "[0,", "{\"a\":"}) {
        const std::string end = level.starts_with('[') ? "]" : "}";
        EXPECT_TRUE(json::parse(level + nested(511, "[", "]") + end)) << level;
        EXPECT_FALSE(json::parse(level + nested(512, "[", "]") + end)) << level;
    }
}

// A thread's stack where it is smallest: a feed is evaluated on the network's.
constexpr std::size_t smallStack = std::size_t{512} * 1024;

TEST(JsonValue, TheDeepestDocumentIsReadCopiedAndDestroyedOnASmallStack) {
    const auto work = [](void*) -> void* {
        const std::string texts[] = {
            nested(json::maximumDepth, "[", "]"),
            nested(json::maximumDepth / 2, "[{\"a\":", "}]", "0"),
            nested(json::maximumDepth + 1, "[", "]"),
        };
        for (const std::string& text : texts) {
            const std::optional<boost::json::value> document = json::parse(text);
            std::optional<boost::json::value> copy;
            copy = document;
            EXPECT_EQ(copy, document);
        }
        return nullptr;
    };
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, smallStack), 0);
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, &attributes, work, nullptr), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

TEST(JsonValue, OfDuplicateKeysTheLastWins) {
    const boost::json::value document = json::parse(R"({"a":1,"a":{},"b":0,"a":3})").value();
    EXPECT_EQ(json::integer(*json::member(document, "a")), 3);
}

TEST(JsonValue, AMemberIsFoundInAnObjectOnly) {
    const boost::json::value object = json::parse(R"({"a":null})").value();
    ASSERT_NE(json::member(object, "a"), nullptr);
    EXPECT_TRUE(json::member(object, "a")->is_null());
    EXPECT_EQ(json::member(object, "A"), nullptr);
    for (const char* text : {"[\"a\"]", "\"a\"", "1", "null", "true"})
        EXPECT_EQ(json::member(json::parse(text).value(), "a"), nullptr) << text;
}

TEST(JsonValue, WholeNumbersAreIntegersHoweverTheyAreWritten) {
    const struct {
        const char* text;
        std::optional<std::int64_t> integer;
    } cases[] = {
        {"0", 0},
        {"-0", 0},
        {"-0.0", 0},
        {"12", 12},
        {"12.0", 12},
        {"1.2e1", 12},
        {"120E-1", 12},
        {"1e18", 1'000'000'000'000'000'000},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
        {"-9223372036854774784.0", -9223372036854774784},
        {"9223372036854774784.0", 9223372036854774784},
        {"9223372036854775808", std::nullopt},
        {"9223372036854775808.0", std::nullopt},
        {"9223372036854775807.0", std::nullopt},
        {"-9223372036854775809", std::nullopt},
        {"-9223372036854775808.5", std::nullopt},
        {"18446744073709551615", std::nullopt},
        {"18446744073709551616", std::nullopt},
        {"12.5", std::nullopt},
        {"1e-1", std::nullopt},
        {"1e400", std::nullopt},
        {"-1e400", std::nullopt},
        {"1e99999999999", std::nullopt},
        {"\"12\"", std::nullopt},
        {"true", std::nullopt},
        {"null", std::nullopt},
        {"[12]", std::nullopt},
        {"{}", std::nullopt},
    };
    for (const auto& [text, integer] : cases)
        EXPECT_EQ(json::integer(json::parse(text).value()), integer) << text;
}

TEST(JsonValue, OnlyAStringIsAString) {
    EXPECT_EQ(json::string(json::parse("\"\"").value()), "");
    EXPECT_EQ(json::string(json::parse(R"("\"\\\/\b\f\n\r\t")").value()), "\"\\/\b\f\n\r\t");
    for (const char* text : {"1", "null", "true", "[\"a\"]", "{\"a\":\"b\"}"})
        EXPECT_FALSE(json::string(json::parse(text).value())) << text;
}

TEST(JsonValue, ANumberTooLargeForADoubleFailsNothingElse) {
    for (const char* number : {"1e400", "-1e400", "1e2147483647", "1e2147483648", "1e99999999999999999999",
                               "1E+9999999999", "-1e99999999999"}) {
        const auto document =
            json::parse(R"({"odd":)"s + number + R"(,"name":"1e99999999999\"e99999999999","next":1})");
        ASSERT_TRUE(document) << number;
        EXPECT_TRUE(std::isinf(json::member(*document, "odd")->as_double())) << number;
        EXPECT_EQ(json::string(*json::member(*document, "name")), "1e99999999999\"e99999999999") << number;
        EXPECT_EQ(json::integer(*json::member(*document, "next")), 1) << number;
    }
}

TEST(JsonValue, ANumberTooSmallForADoubleIsZero) {
    for (const char* number : {"1e-400", "1e-99999999999", "0e99999999999", "-1e-99999999999"})
        EXPECT_EQ(json::parse(number).value().as_double(), 0.0) << number;
}

TEST(JsonValue, AnExponentWithManyZerosInFrontIsTheSmallNumberItIs) {
    EXPECT_EQ(json::parse("[1e00000000000000000002,1e99999999999]").value().at(0).as_double(), 100.0);
}

TEST(JsonValue, ADoubleComesBackAsItWasWritten) {
    std::mt19937_64 random(20240607);
    std::uniform_real_distribution<double> between(0.0, 1.0);
    for (int i = 0; i < 10'000; ++i) {
        const double value = between(random);
        ASSERT_EQ(json::parse(boost::json::serialize(boost::json::value(value))).value().as_double(), value);
    }
}

TEST(JsonValue, AMegabyteOfJunkIsNoValue) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string junk(1 << 20, '\0');
    for (char& character : junk)
        character = static_cast<char>(byte(random));
    EXPECT_FALSE(json::parse(junk));
    EXPECT_FALSE(json::parse("{" + junk));
    EXPECT_FALSE(json::parse("[\"" + junk));
    EXPECT_FALSE(json::parse(std::string(1 << 20, '"')));
    EXPECT_FALSE(json::parse(std::string(1 << 20, 'e')));
}

TEST(JsonValue, AMegabyteOfGoodJsonIsRead) {
    const boost::json::value document = json::parse("[\"" + std::string(1 << 20, 'x') + "\"]").value();
    EXPECT_EQ(json::string(document.at(0)).value().size(), 1U << 20);
}

}  // namespace
}  // namespace quillmere
