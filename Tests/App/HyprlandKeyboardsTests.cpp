#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandKeyboards.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere {

namespace {

const XkbLayout us{"us", {}};
const XkbLayout ua{"ua", {}};
const XkbLayout dvorak{"de", "dvorak"};

/// One keyboard as older versions write it.
QByteArray keyboard(const QByteArray& name, const QByteArray& layouts, const QByteArray& variants,
                    const QByteArray& more) {
    return R"({"address": "0x1", "name": ")" + name + R"(", "layout": ")" + layouts + R"(", "variant": ")" + variants
           + "\", " + more + "}";
}

class HyprlandKeyboardsTest : public testing::Test {
protected:
    std::optional<HyprlandKeyboards> read(const QByteArray& keyboards) {
        return HyprlandKeyboards::parse(R"({"mice": [], "keyboards": [)" + keyboards + "]}", registry);
    }
    XkbLayoutRegistry registry;
};

TEST_F(HyprlandKeyboardsTest, TheMainKeyboardHasTheDesktopsLayouts) {
    const auto keyboards = read(keyboard("a", "fr", "", R"("active_layout_index": 0, "main": false)") + ","
                                + keyboard("b", "us,ua, de", ",,dvorak", R"("active_layout_index": 2, "main": true)"));
    ASSERT_TRUE(keyboards);
    EXPECT_EQ(keyboards->layouts(), (std::vector{us, ua, dvorak}));
    EXPECT_EQ(keyboards->current(std::nullopt), dvorak);
    EXPECT_TRUE(keyboards->isInUse(dvorak)) << "the other keyboard has other layouts";
    EXPECT_FALSE(keyboards->isInUse(us));
}

TEST_F(HyprlandKeyboardsTest, WhereNoIndexIsToldTheLayoutsNameSaysWhichIsInUse) {
    for (const auto& [name, layout] : {std::pair{"English (US)", us}, {"Ukrainian", ua}, {"German (Dvorak)", dvorak}}) {
        const QByteArray more = QByteArray(R"("active_keymap": ")") + name + R"(", "main": true)";
        const auto keyboards = read(keyboard("a", "us,ua,de", ",,dvorak", more));
        ASSERT_TRUE(keyboards);
        EXPECT_EQ(keyboards->current(std::nullopt), layout);
    }
    const auto unknown = read(keyboard("a", "us,ua", "", R"("active_keymap": "Homemade", "main": true)"));
    ASSERT_TRUE(unknown);
    EXPECT_EQ(unknown->current(std::nullopt), std::nullopt);
    EXPECT_EQ(unknown->layouts().size(), 2U);
}

TEST_F(HyprlandKeyboardsTest, AVariantMayStandInBrackets) {
    const auto keyboards = read(keyboard("a", "us(dvorak),ua", "", R"("active_layout_index": 0, "main": true)"));
    ASSERT_TRUE(keyboards);
    EXPECT_EQ(keyboards->layouts(), (std::vector{XkbLayout{"us", "dvorak"}, ua}));
}

TEST_F(HyprlandKeyboardsTest, OneWithoutAKeymapIsWrittenAsNoJsonAndStillRead) {
    const auto keyboards = read(keyboard("a", "us,ua", "", R"("active_layout_index": none, "active_keymap": "none")")
                                + "," + keyboard("b", "us,ua", "", R"("active_layout_index": 1, "main": true)"));
    ASSERT_TRUE(keyboards);
    EXPECT_EQ(keyboards->current(std::nullopt), ua);
    EXPECT_FALSE(keyboards->isInUse(ua)) << "the first is in none";
}

TEST_F(HyprlandKeyboardsTest, OneRequestReachesKeyboardsOfOneKindAndSeveralThoseThatDiffer) {
    const QByteArray first = keyboard("a", "us,ua", "", R"("active_layout_index": 0, "main": true)");
    const auto same = read(first + "," + keyboard("b", "us,ua", "", R"("active_layout_index": 0)"));
    EXPECT_EQ(same->request(ua), "switchxkblayout all 1");
    EXPECT_EQ(same->request(dvorak), "");
    const auto others = read(first + "," + keyboard("b", "ua,us", "", R"("active_layout_index": 0)") + ","
                             + keyboard("c", "fr", "", R"("active_layout_index": 0)"));
    EXPECT_EQ(others->request(ua), "");
    EXPECT_EQ(others->requests(ua), (std::vector<std::string>{"switchxkblayout a 1", "switchxkblayout b 0"}));
}

TEST_F(HyprlandKeyboardsTest, AProgramsKeyboardDoesNotSpeakForTheDesktopAndIsNotWaitedFor) {
    const QByteArray real = keyboard("a", "us,ua", "", R"("active_layout_index": 1, "main": false)");
    // It is told as having the layouts of the configuration, whatever its keymap is.
    for (const char* layouts : {"us,ua", "fr,us,ua"}) {
        const auto both =
            read(real + ","
                 + keyboard("hl-virtual-keyboard-fcitx5", layouts, "", R"("active_layout_index": 0, "main": true)"));
        EXPECT_EQ(both->layouts(), (std::vector{us, ua})) << layouts;
        EXPECT_EQ(both->current(std::nullopt), ua);
        EXPECT_TRUE(both->isInUse(ua));
        EXPECT_EQ(both->request(us), "switchxkblayout all 0");
        EXPECT_EQ(both->requests(us), std::vector<std::string>{"switchxkblayout a 0"});
    }
    const auto alone = read(keyboard("hl-virtual-keyboard", "us,ua", "", R"("active_layout_index": 1, "main": true)"));
    EXPECT_EQ(alone->current(std::nullopt), ua) << "as on a desktop that is used from afar";
}

TEST_F(HyprlandKeyboardsTest, WhereNoneIsMarkedTheOneWithTheMostLayoutsIsTheMainOne) {
    const auto keyboards = read(keyboard("button", "us", "", R"("active_layout_index": 0)") + ","
                                + keyboard("b", "us,ua", "", R"("active_layout_index": 1)"));
    EXPECT_EQ(keyboards->layouts(), (std::vector{us, ua}));
    EXPECT_EQ(keyboards->current(std::nullopt), ua);
}

TEST_F(HyprlandKeyboardsTest, ANameThatWouldBeReadAsSeveralWordsIsLeftAlone) {
    const auto keyboards = read(keyboard("a 1; dispatch exit", "us,ua", "", R"("active_layout_index": 0)"));
    EXPECT_TRUE(keyboards->requests(ua).empty());
}

TEST_F(HyprlandKeyboardsTest, WhatIsNoListOfKeyboardsIsNone) {
    for (const char* text : {"", "{}", "[]", "null", "{", R"({"keyboards": 1})", R"({"keyboards": [)", "\xff\xfe",
                             "unknown request", "[[[[[[[["})
        EXPECT_FALSE(HyprlandKeyboards::parse(text, registry)) << text;
}

TEST_F(HyprlandKeyboardsTest, KeyboardsThatMakeNoSenseAreLeftOutOrInNoLayout) {
    for (const char* text : {"1", "null", "[]", "{}", R"({"name": 1, "layout": 2})", R"({"layout": " "})"}) {
        const auto keyboards = read(text);
        ASSERT_TRUE(keyboards) << text;
        EXPECT_TRUE(keyboards->layouts().empty()) << text;
        EXPECT_EQ(keyboards->current(us), std::nullopt);
        EXPECT_FALSE(keyboards->isInUse(us));
    }
    for (const char* index : {"-1", "2", "1e300", "\"1\"", "null", "[]", "0.5"}) {
        const auto keyboards =
            read(keyboard("a", "us,ua", "", QByteArray(R"("active_layout_index": )") + index + R"(, "main": true)"));
        ASSERT_TRUE(keyboards) << index;
        EXPECT_EQ(keyboards->current(us), std::nullopt) << index;
    }
}

}  // namespace

}  // namespace quillmere
