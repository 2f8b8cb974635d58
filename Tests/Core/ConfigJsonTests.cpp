#include "QuillmereCore/Config.h"
#include "QuillmereCore/JsonValue.h"
#include "QuillmereCore/Utf8.h"

#include <gtest/gtest.h>
#include <boost/uuid/uuid_io.hpp>

#include <random>
#include <string>

namespace quillmere {
namespace {

using namespace std::string_literals;

const std::string id = R"("id":"0123ABCD-4567-89EF-0123-456789ABCDEF")";
const std::string shortcut = R"("shortcut":{"keyCode":49,"modifiers":12})";
const std::string sources = R"("sourceIDs":["xkb:us","xkb:ua"])";

std::string withGroup(const std::string& members) {
    return R"({"active":true,"groups":[{)" + members + "}]}";
}

std::string withPlate(const std::string& plate) {
    return R"({"active":true,"groups":[],"plate":)" + plate + "}";
}

TEST(ConfigJson, TheWrittenFormIsCompactAndHoldsTheListedKeysAlone) {
    Config config = decodeConfig(withGroup(id + "," + shortcut + "," + sources)).value();
    config.groups.push_back({config.groups[0].id, std::nullopt, {}});
    config.plate = PlateSettings(PlateVisibility::manyOnly, PlateBackground::solid, 0.5);
    EXPECT_EQ(encodeConfig(config),
              R"({"active":true,"groups":[)"
              R"({"id":"0123ABCD-4567-89EF-0123-456789ABCDEF","shortcut":{"keyCode":49,"modifiers":12},)"
              R"("sourceIDs":["xkb:us","xkb:ua"]},)"
              R"({"id":"0123ABCD-4567-89EF-0123-456789ABCDEF","sourceIDs":[]}],)"
              R"("plate":{"visibility":"manyOnly","background":"solid","opacity":5E-1}})");
}

TEST(ConfigJson, AGroupHasAFormOfItsOwn) {
    const auto json = json::parse("{" + id + "," + shortcut + "," + sources + "}").value();
    const auto group = decodeCycleGroup(json);
    ASSERT_TRUE(group);
    EXPECT_EQ(group->shortcut, (Shortcut{49, Modifiers(12)}));
    EXPECT_EQ(group->sourceIDs, (std::vector<std::string>{"xkb:us", "xkb:ua"}));
    EXPECT_EQ(encode(*group), json);
    EXPECT_FALSE(decodeCycleGroup(json::parse("{" + id + "}").value()));
    EXPECT_FALSE(decodeCycleGroup(json::parse("[]").value()));
}

TEST(ConfigJson, AGroupWithoutAShortcutHasNoShortcutKeyAndDecodesBackToNone) {
    Config config;
    config.groups = {{makeUUID(), std::nullopt, {"A"}}};
    const std::string text = encodeConfig(config);
    EXPECT_EQ(text.find("shortcut"), std::string::npos);
    EXPECT_EQ(decodeConfig(text), config);
}

TEST(ConfigJson, ANullShortcutIsNone) {
    const auto config = decodeConfig(withGroup(id + R"(,"shortcut":null,)" + sources));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->groups[0].shortcut, std::nullopt);
}

TEST(ConfigJson, EveryFieldOfAGroupIsRead) {
    const auto config = decodeConfig(withGroup(sources + "," + id + R"(,"name":"ignored",)" + shortcut));
    ASSERT_TRUE(config);
    EXPECT_TRUE(config->active);
    ASSERT_EQ(config->groups.size(), 1U);
    EXPECT_EQ(to_string(config->groups[0].id), "0123abcd-4567-89ef-0123-456789abcdef");
    EXPECT_EQ(config->groups[0].shortcut, (Shortcut{49, Modifiers(12)}));
    EXPECT_EQ(config->groups[0].sourceIDs, (std::vector<std::string>{"xkb:us", "xkb:ua"}));
}

TEST(ConfigJson, GroupsKeepTheirOrder) {
    const auto config = decodeConfig(R"({"active":false,"groups":[{)" + id + R"(,"sourceIDs":["A"]},{)" + id
                                     + R"(,"sourceIDs":["B"]}]})");
    ASSERT_TRUE(config);
    EXPECT_FALSE(config->active);
    ASSERT_EQ(config->groups.size(), 2U);
    EXPECT_EQ(config->groups[0].sourceIDs[0], "A");
    EXPECT_EQ(config->groups[1].sourceIDs[0], "B");
}

TEST(ConfigJson, AMalformedConfigurationIsNoValue) {
    const struct {
        const char* flaw;
        std::string text;
    } cases[] = {
        {"no bytes", ""},
        {"no JSON", "active"},
        {"a property list", "<?xml version=\"1.0\"?><plist/>"},
        {"an array", R"([{"active":true,"groups":[]}])"},
        {"a string", R"("active")"},
        {"null", "null"},
        {"an empty object", "{}"},
        {"cut off", R"({"active":true,"groups":[])"},
        {"text after it", R"({"active":true,"groups":[]} x)"},
        {"a trailing comma", R"({"active":true,"groups":[],})"},
        {"a byte order mark",
         "\xEF\xBB\xBF"
         R"({"active":true,"groups":[]})"},
        {"UTF-16", "{\0\"\0a\0"s},
        {"no active", R"({"groups":[]})"},
        {"active under another name", R"({"Active":true,"groups":[]})"},
        {"active null", R"({"active":null,"groups":[]})"},
        {"active a number", R"({"active":1,"groups":[]})"},
        {"active a string", R"({"active":"true","groups":[]})"},
        {"no groups", R"({"active":true})"},
        {"groups null", R"({"active":true,"groups":null})"},
        {"groups an object", R"({"active":true,"groups":{}})"},
        {"groups a string", R"({"active":true,"groups":"[]"})"},
        {"a group that is a number", R"({"active":true,"groups":[1]})"},
        {"a group that is null", R"({"active":true,"groups":[null]})"},
        {"a group that is an array", R"({"active":true,"groups":[[]]})"},
        {"an empty group", R"({"active":true,"groups":[{}]})"},
        {"a good group and a bad one", R"({"active":true,"groups":[{)" + id + "," + sources + "},{" + id + "}]}"},
        {"no id", withGroup(sources)},
        {"id null", withGroup(R"("id":null,)" + sources)},
        {"id a number", withGroup(R"("id":1,)" + sources)},
        {"shortcut a string", withGroup(id + R"(,"shortcut":"⌃⌥Space",)" + sources)},
        {"shortcut an array", withGroup(id + R"(,"shortcut":[],)" + sources)},
        {"shortcut false", withGroup(id + R"(,"shortcut":false,)" + sources)},
        {"shortcut empty", withGroup(id + R"(,"shortcut":{},)" + sources)},
        {"shortcut without modifiers", withGroup(id + R"(,"shortcut":{"keyCode":49},)" + sources)},
        {"shortcut of a fraction", withGroup(id + R"(,"shortcut":{"keyCode":49.5,"modifiers":12},)" + sources)},
        {"shortcut out of range",
         withGroup(id + R"(,"shortcut":{"keyCode":9223372036854775808,"modifiers":12},)" + sources)},
        {"no sourceIDs", withGroup(id)},
        {"sourceIDs null", withGroup(id + R"(,"sourceIDs":null)")},
        {"sourceIDs a string", withGroup(id + R"(,"sourceIDs":"A")")},
        {"sourceIDs an object", withGroup(id + R"(,"sourceIDs":{"0":"A"})")},
        {"sourceIDs of numbers", withGroup(id + R"(,"sourceIDs":["A",1])")},
        {"sourceIDs with a null", withGroup(id + R"(,"sourceIDs":["A",null])")},
        {"sourceIDs nested", withGroup(id + R"(,"sourceIDs":[["A"]])")},
        {"sourceIDs in invalid UTF-8", withGroup(id + ",\"sourceIDs\":[\"\xC3(\"]")},
        {"sourceIDs with half a surrogate pair", withGroup(id + R"(,"sourceIDs":["\ud800"])")},
        {"the last of two actives is wrong", R"({"active":true,"groups":[],"active":1})"},
        {"nesting without end", R"({"active":true,"groups":)" + std::string(100'000, '[')},
    };
    for (const auto& [flaw, text] : cases)
        EXPECT_FALSE(decodeConfig(text)) << flaw;
}

TEST(ConfigJson, AMegabyteOfJunkIsNoValue) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string junk(1 << 20, '\0');
    for (char& character : junk)
        character = static_cast<char>(byte(random));
    EXPECT_FALSE(decodeConfig(junk));
    EXPECT_FALSE(decodeConfig(R"({"active":true,"groups":[],"junk":")" + junk));
}

TEST(ConfigJson, UnknownKeysAreIgnoredWhateverTheyHold) {
    for (const std::string value : {"null", "[{},[[]]]", "{\"active\":0}", "1e400", "-1e99999999999", "12.5",
                                    "\"\\u0000\"", "18446744073709551616"}) {
        std::string text = R"({"version":)" + value;
        text += R"(,"active":true,"groups":[],"Plate":)" + value + "}";
        EXPECT_EQ(decodeConfig(text), Config()) << value;
    }
}

TEST(ConfigJson, AnUnknownKeyMayHoldAnythingThatIsNotTooDeep) {
    const std::string deep = std::string(511, '[') + std::string(511, ']');
    EXPECT_EQ(decodeConfig(R"({"active":true,"groups":[],"later":)" + deep + "}"), Config());
    EXPECT_FALSE(decodeConfig(R"({"active":true,"groups":[],"later":[)" + deep + "]}"));
}

TEST(ConfigJson, AnIdentifierIsReadInItsCanonicalFormOnly) {
    const struct {
        const char* text;
        bool isAccepted;
    } cases[] = {
        {"0123ABCD-4567-89EF-0123-456789ABCDEF", true},
        {"0123abcd-4567-89ef-0123-456789abcdef", true},
        {"0123AbCd-4567-89eF-0123-456789aBcDeF", true},
        {"00000000-0000-0000-0000-000000000000", true},
        {"", false},
        {"{0123ABCD-4567-89EF-0123-456789ABCDEF}", false},
        {"0123ABCD456789EF0123456789ABCDEF", false},
        {"0123ABCD-456789EF-0123-456789ABCDEF", false},
        {"0123ABC-D4567-89EF-0123-456789ABCDEF", false},
        {"0123ABCD-4567-89EF-0123-456789ABCDE", false},
        {"0123ABCD-4567-89EF-0123-456789ABCDEF0", false},
        {"0123ABCD-4567-89EF-0123-456789ABCDEG", false},
        {"0123ABCD-4567-89EF-0123-456789ABCD-F", false},
        {"0123ABCD:4567:89EF:0123:456789ABCDEF", false},
        {" 0123ABCD-4567-89EF-0123-456789ABCDEF", false},
        {"0123ABCD-4567-89EF-0123-456789ABCDEF ", false},
        {"urn:uuid:0123ABCD-4567-89EF-0123-456789ABCDEF", false},
        {"0123ABCD-4567-89EF-0123-456789ABCDE\\u0000", false},
        {"０123ABCD-4567-89EF-0123-456789ABCD", false},
    };
    for (const auto& [text, isAccepted] : cases)
        EXPECT_EQ(decodeConfig(withGroup(R"("id":")"s + text + "\"," + sources)).has_value(), isAccepted) << text;
}

TEST(ConfigJson, AnIdentifierIsWrittenInUpperCase) {
    Config config;
    config.groups = {{makeUUID(), std::nullopt, {}}};
    std::string upper = to_string(config.groups[0].id);
    for (char& character : upper)
        character = static_cast<char>(std::toupper(character));
    EXPECT_NE(encodeConfig(config).find("\"id\":\"" + upper + "\""), std::string::npos);
}

TEST(ConfigJson, WithoutAReadablePlateTheDefaultsApply) {
    EXPECT_EQ(decodeConfig(R"({"active":true,"groups":[]})"), Config());
    for (const char* plate : {"\"solid\"", "null", "1", "true", "[]", "{}", R"({"visibility":7,"opacity":"1"})"}) {
        const auto config = decodeConfig(withPlate(plate));
        ASSERT_TRUE(config) << plate;
        EXPECT_EQ(config->plate, PlateSettings(PlateVisibility::always)) << plate;
    }
}

TEST(ConfigJson, AReadablePlateIsTaken) {
    EXPECT_EQ(decodeConfig(withPlate(R"({"visibility":"manyOnly","background":"glass","opacity":0.35})"))->plate,
              PlateSettings(PlateVisibility::manyOnly, PlateBackground::glass, 0.35));
    EXPECT_EQ(decodeConfig(withPlate(R"({"opacity":1e99999999999})"))->plate.opacity(), 1.0);
}

TEST(ConfigJson, WhatIsEncodedDecodesToAnEqualConfiguration) {
    std::mt19937 random(42);
    const auto below = [&](unsigned limit) { return static_cast<std::size_t>(random() % limit); };
    const std::string names[] = {"xkb:us", "", "\"\\/\b\f\n\r\t\x01\x7F", "a\0b"s, "Українська", "🌐", "\u2028\uFFFD"};
    for (int round = 0; round < 500; ++round) {
        Config config;
        config.active = below(2) == 0;
        config.plate = PlateSettings(PlateVisibility::allCases[below(2)]);
        if (below(2) == 0) config.plate.background = PlateBackground::allCases[below(2)];
        if (below(2) == 0) config.plate.setOpacity(std::uniform_real_distribution<double>(-0.1, 1.1)(random));
        config.groups.resize(below(5), CycleGroup{makeUUID(), std::nullopt, {}});
        for (CycleGroup& group : config.groups) {
            if (below(3) != 0)
                group.shortcut = Shortcut{static_cast<std::int64_t>(random()) - 1000,
                                          Modifiers(static_cast<std::int64_t>(below(64)))};
            for (std::size_t count = below(6); count > 0; --count)
                group.sourceIDs.push_back(names[below(std::size(names))]);
        }
        ASSERT_EQ(decodeConfig(encodeConfig(config)), config) << encodeConfig(config);
    }
}

TEST(ConfigJson, AnIdentifierInInvalidUtf8IsWrittenWithReplacementCharacters) {
    Config config;
    config.groups = {{makeUUID(), std::nullopt, {"xkb:us", "a\xC3(\xFF"}}};
    const std::string text = encodeConfig(config);
    EXPECT_TRUE(utf8::isWellFormed(text));
    const auto read = decodeConfig(text);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->groups[0].sourceIDs, (std::vector<std::string>{"xkb:us", "a\uFFFD(\uFFFD"}));
}

}  // namespace
}  // namespace quillmere
