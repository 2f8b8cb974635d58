#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"
#include "Tests/Desktop/ListedSources.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <string_view>

namespace quillmere::support {

namespace {

using namespace std::string_view_literals;

using Layouts = std::vector<XkbLayout>;

TEST(XkbRulesNames, TheListsOfLayoutsAndVariantsBelongTogether) {
    const auto names = XkbRulesNames::parse("evdev\0pc105\0us,us,de\0,dvorak,\0grp:caps_toggle\0"sv);
    EXPECT_EQ(names.rules, "evdev");
    EXPECT_EQ(names.layouts, (Layouts{{"us", ""}, {"us", "dvorak"}, {"de", ""}}));
}

TEST(XkbRulesNames, AnOldSpellingPutsTheVariantInBrackets) {
    EXPECT_EQ(XkbRulesNames::parse("base\0pc105\0us(dvorak),ua\0\0\0"sv).layouts,
              (Layouts{{"us", "dvorak"}, {"ua", ""}}));
}

TEST(XkbRulesNames, TheKeyboardHasFourGroups) {
    EXPECT_EQ(XkbRulesNames::parse("evdev\0pc105\0us,ua,de,fr,pl\0\0\0"sv).layouts.size(), 4U);
}

TEST(XkbRulesNames, WhateverIsMissingIsEmpty) {
    for (const std::string_view text : {""sv, "evdev"sv, "evdev\0"sv, "evdev\0pc105\0\0\0\0"sv}) {
        EXPECT_TRUE(XkbRulesNames::parse(text).layouts.empty());
    }
    EXPECT_EQ(XkbRulesNames::parse("evdev\0pc105\0us"sv).layouts, (Layouts{{"us", ""}}));
}

/// Writes the property that tells the layouts, without changing the keyboard.
void setRulesNames(XConnection& connection, std::string_view value) {
    XChangeProperty(connection.display(), connection.root(), connection.atom("_XKB_RULES_NAMES"), XA_STRING, 8,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(value.data()),
                    static_cast<int>(value.size()));
    connection.synchronize();
}

class XkbInputSourcesTest : public testing::Test {
protected:
    XkbInputSourcesTest() : server(folder.path(), baseEnvironment(folder.makeFolder("home")), QSize(640, 480)) {
        qputenv("DISPLAY", server.display().c_str());
        server.setLayouts("us,us,ua", ",dvorak,");
        sources = XkbInputSources::create();
    }
    ~XkbInputSourcesTest() override { qunsetenv("DISPLAY"); }

    std::vector<std::string> ids() const {
        std::vector<std::string> result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    int select(const char* id) const { return sources->select({.id = id}); }

    TemporaryFolder folder;
    XServer server;
    std::unique_ptr<XkbInputSources> sources;
};

TEST_F(XkbInputSourcesTest, ListsTheLayoutsInTheirOrderWithNamesAndLanguages) {
    ASSERT_NE(sources, nullptr);
    expectEnglishDvorakAndUkrainian(sources->sources());
}

TEST_F(XkbInputSourcesTest, ARareLayoutHasItsNameToo) {
    server.setLayouts("us", "intl-unicode");
    ASSERT_EQ(ids(), std::vector<std::string>{"xkb:us+intl-unicode"});
    EXPECT_TRUE(sources->sources()[0].localizedName.has_value());
}

TEST_F(XkbInputSourcesTest, SelectingLocksTheGroupAtOnce) {
    EXPECT_EQ(sources->currentID(), "xkb:us");
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(server.group(), 2);
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    EXPECT_EQ(select("xkb:us+dvorak"), 0);
    EXPECT_EQ(server.group(), 1);
    EXPECT_EQ(select("xkb:us+dvorak"), 0) << "the current one can be selected again";
}

TEST_F(XkbInputSourcesTest, WhatIsNotThereIsRefusedAndChangesNothing) {
    server.setGroup(1);
    EXPECT_NE(select("xkb:de"), 0);
    EXPECT_NE(select(""), 0);
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(server.group(), 1);
}

TEST_F(XkbInputSourcesTest, ALayoutThatIsUsedAloneIsKnownToBeThereAtOnceEachTime) {
    server.setLayouts("us");
    for (int round = 0; round < 20; ++round) {
        // Each is a switch of its own.
        SwitchWait::renew();
        const char* const layout = round % 2 == 0 ? "ua" : "us";
        EXPECT_TRUE(sources->useAlone({.layout = layout, .variant = {}})) << "in round " << round;
        EXPECT_EQ(sources->currentID(), std::string("xkb:") + layout);
    }
}

TEST_F(XkbInputSourcesTest, TheCurrentOneIsTheServersWhoeverHasChosenIt) {
    for (const auto& [group, id] : {std::pair{2, "xkb:ua"}, {1, "xkb:us+dvorak"}, {0, "xkb:us"}}) {
        server.setGroup(group);
        EXPECT_EQ(sources->currentID(), id);
    }
}

TEST_F(XkbInputSourcesTest, EveryAnswerKnowsOfTheLastChangeOfTheLayouts) {
    ASSERT_EQ(ids().size(), 3U);
    server.setLayouts("ua,us");
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    server.setLayouts("us,ua,fr");
    EXPECT_EQ(select("xkb:fr"), 0);
    EXPECT_EQ(server.group(), 2);
    server.setLayouts("fr,ua");
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(server.group(), 1);
    server.setLayouts("ua,fr");
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(server.group(), 0);
    server.setLayouts("de");
    EXPECT_EQ(ids(), std::vector<std::string>{"xkb:de"});
    EXPECT_NE(select("xkb:ua"), 0);
}

TEST_F(XkbInputSourcesTest, AGroupThatTheListNoLongerReachesIsNoSource) {
    server.setGroup(2);
    server.setLayouts("us,ua");
    // The server keeps the locked group; the one in effect wraps.
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_EQ(select("xkb:us"), 0);
    EXPECT_EQ(sources->currentID(), "xkb:us");
}

TEST_F(XkbInputSourcesTest, AKeyboardThatIsPluggedInTakesNoLayoutsFromTheOthers) {
    const std::vector<std::string> layouts{"xkb:us", "xkb:us+dvorak", "xkb:ua"};
    ASSERT_EQ(ids(), layouts);
    // What the server writes for a keyboard that it did not know before.
    setRulesNames(server.connection(), "evdev\0pc105\0us\0\0\0"sv);
    EXPECT_EQ(ids(), layouts);
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(server.group(), 2);
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    // Nor from a program that starts after that.
    sources = XkbInputSources::create();
    EXPECT_EQ(ids(), layouts);
    EXPECT_EQ(sources->currentID(), "xkb:ua");
}

TEST_F(XkbInputSourcesTest, ALayoutThatTheSystemDoesNotDescribeHasNoName) {
    server.setLayouts("us,ua");
    // What a hand-made map leaves behind: the property names an unknown layout.
    setRulesNames(server.connection(), "evdev\0pc105\0us,homemade\0,\0\0"sv);
    EXPECT_EQ(ids(), (std::vector<std::string>{"xkb:us", "xkb:homemade"}));
    EXPECT_EQ(sources->sources()[1].localizedName, std::nullopt);
    EXPECT_TRUE(sources->sources()[1].languages.empty());
}

TEST_F(XkbInputSourcesTest, AnIndexBeyondTheKeyboardsGroupsIsRefused) {
    server.setLayouts("us,ua");
    setRulesNames(server.connection(), "evdev\0pc105\0us,ua,de\0,,\0\0"sv);
    EXPECT_NE(select("xkb:de"), 0);
}

TEST_F(XkbInputSourcesTest, WithoutAServerThereIsNoService) {
    qputenv("DISPLAY", ":999");
    EXPECT_EQ(XkbInputSources::create(), nullptr);
}

TEST_F(XkbInputSourcesTest, AMapWithoutAWordOnItsMakingIsListedByTheNamesOfItsGroups) {
    setRulesNames(server.connection(), ""sv);
    expectEnglishDvorakAndUkrainian(sources->sources());
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(server.group(), 2);
}

}  // namespace

}  // namespace quillmere::support
