#include "QuillmereCore/UpdateFeed.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quillmere {
namespace {

using namespace std::string_literals;
using Items = std::vector<std::string>;

std::string with(const std::string& member) {
    return R"({"version":"1.0",)" + member + "}";
}

TEST(UpdateFeed, EveryMemberIsRead) {
    const auto feed =
        decodeUpdateFeed(R"({"version":"1.4.0","file":"app.zip","size":2300000,)"
                         R"("downloadURL":"https://h/a","notes":{"en":["Fix","Add"],"uk":[]},"other":{}})");
    ASSERT_TRUE(feed);
    EXPECT_EQ(feed->version, "1.4.0");
    EXPECT_EQ(feed->file, "app.zip");
    EXPECT_EQ(feed->size, 2300000);
    EXPECT_EQ(feed->downloadURL, "https://h/a");
    EXPECT_EQ(feed->notes, (decltype(feed->notes){{"en", {"Fix", "Add"}}, {"uk", {}}}));
}

TEST(UpdateFeed, OnlyTheVersionIsRequired) {
    EXPECT_EQ(decodeUpdateFeed(R"({"version":""})"), (UpdateFeed{"", {}, {}, {}, {}}));
    for (const char* text : {"", "null", "1", "\"1.0\"", "[]", "{}", R"({"Version":"1.0"})", R"({"version":null})",
                             R"({"version":1.0})", R"({"version":["1.0"]})", R"({"version":"1.0")",
                             R"([{"version":"1.0"}])", R"({"version":"1.0","version":2})"})
        EXPECT_FALSE(decodeUpdateFeed(text)) << text;
}

TEST(UpdateFeed, ATextOfTheWrongTypeIsLeftOut) {
    for (const std::string key : {R"("file":)", R"("downloadURL":)"})
        for (const std::string value : {"null", "1", "1e400", "true", "[\"a\"]", "{}"})
            EXPECT_EQ(decodeUpdateFeed(with(key + value)), (UpdateFeed{"1.0", {}, {}, {}, {}})) << key << value;
}

TEST(UpdateFeed, ASizeIsAnIntegerOrLeftOut) {
    const struct {
        const char* text;
        std::optional<std::int64_t> size;
    } cases[] = {
        {"0", 0},
        {"-5", -5},
        {"1", 1},
        {"12.0", 12},
        {"1.5", std::nullopt},
        {"\"12\"", std::nullopt},
        {"null", std::nullopt},
        {"true", std::nullopt},
        {"[1]", std::nullopt},
        {"1e400", std::nullopt},
        {"1e99999999999", std::nullopt},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"9223372036854775808", std::nullopt},
    };
    for (const auto& [text, size] : cases)
        EXPECT_EQ(decodeUpdateFeed(with("\"size\":"s + text)).value().size, size) << text;
}

TEST(UpdateFeed, OneBadItemDropsTheNotesWhole) {
    for (const char* notes : {"null", "1", "\"Fix\"", "[\"Fix\"]", R"({"en":["a",1]})", R"({"en":["a"],"uk":null})",
                              R"({"en":["a"],"uk":"b"})", R"({"en":["a"],"de":{}})", R"({"en":["a"],"de":[["b"]]})",
                              R"({"en":["a"],"de":[null]})", "{}"}) {
        const auto feed = decodeUpdateFeed(with("\"notes\":"s + notes));
        ASSERT_TRUE(feed) << notes;
        EXPECT_TRUE(feed->notes.empty()) << notes;
    }
}

TEST(UpdateFeed, NotesOfAnyLanguageAreKept) {
    const auto feed = decodeUpdateFeed(with(R"("notes":{"":["x"],"pt-BR":[" a ",""],"uk":["б"]})"));
    ASSERT_TRUE(feed);
    EXPECT_EQ(feed->notes, (decltype(feed->notes){{"", {"x"}}, {"pt-BR", {" a ", ""}}, {"uk", {"б"}}}));
}

}  // namespace
}  // namespace quillmere
