#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBind.h"
#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBindList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere {

namespace {

constexpr Shortcut controlOptionSpace{Shortcut::space, {Modifiers::control, Modifiers::option}};
constexpr Shortcut commandShiftK{40, {Modifiers::command, Modifiers::shift}};

TEST(HyprlandBindTest, IsOnTheKeysNumberAndTellsOfItselfInEitherLanguage) {
    const std::vector<HyprlandBind> binds = hyprlandBinds(controlOptionSpace);
    ASSERT_EQ(binds.size(), 1U);
    EXPECT_EQ(binds[0].event(), "quillmere 65 12");
    EXPECT_EQ(binds[0].keyword(), "keyword bind CTRL ALT,code:65,event,quillmere 65 12");
    EXPECT_EQ(binds[0].unbindKeyword(), "keyword unbind CTRL ALT,code:65");
    EXPECT_EQ(binds[0].lua(),
              R"(eval quillmere = quillmere or {} quillmere["CTRL + ALT + code:65"] = hl.bind("CTRL + ALT + code:65", )"
              R"(hl.dsp.event("quillmere 65 12"), { description = "Quillmere" }))");
    EXPECT_EQ(binds[0].unbindLua(),
              R"(eval quillmere["CTRL + ALT + code:65"]:remove() quillmere["CTRL + ALT + code:65"] = nil)");
    EXPECT_EQ(hyprlandBinds(commandShiftK)[0].unbindKeyword(), "keyword unbind SHIFT SUPER,code:45");
}

TEST(HyprlandBindTest, ALoneFnAndAKeyThatNobodyHasAreNone) {
    EXPECT_TRUE(hyprlandBinds(Shortcut::fn).empty());
    EXPECT_TRUE(hyprlandBinds({9999, {Modifiers::control}}).empty());
}

TEST(HyprlandBindListTest, TellsTheUsersBindsFromThisProgramsInEitherLanguage) {
    const auto list = HyprlandBindList::parse(R"([
        {"modmask": 12, "submap": "", "key": "space", "keycode": 0, "dispatcher": "exec", "arg": "menu"},
        {"modmask": 64, "submap": "", "key": "", "keycode": 45, "dispatcher": "__lua", "arg": "7"},
        {"modmask": 4, "key": "code:30", "keycode": 0, "dispatcher": "exec"},
        {"modmask": 4, "key": "31", "keycode": -1, "dispatcher": "exec"},
        {"modmask": 4, "key": "1", "keycode": 0, "dispatcher": "exec"},
        {"modmask": 12, "keycode": 65, "dispatcher": "event", "arg": "quillmere 65 12"},
        {"modmask": 65, "keycode": 45, "dispatcher": "__lua", "arg": "9", "description": "Quillmere"}])");
    ASSERT_TRUE(list);
    EXPECT_EQ(
        list->others,
        (std::vector<ReservedCombination>{
            {12, {"space"}, false}, {64, {"45"}, true}, {4, {"30"}, true}, {4, {"31"}, true}, {4, {"1"}, false}}));
    ASSERT_EQ(list->own.size(), 2U);
    EXPECT_EQ(list->own[0].keyCode, 65U);
    EXPECT_EQ(list->own[0].modifiers, 12U);
}

TEST(HyprlandBindListTest, WhatNoPressOfAKeyStartsIsNotInTheWay) {
    const auto list = HyprlandBindList::parse(R"([
        {"modmask": 12, "submap": "resize", "submap_universal": "false", "key": "space", "dispatcher": "exec"},
        {"modmask": 12, "mouse": true, "key": "mouse:272", "dispatcher": "movewindow"}])");
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->others.empty());
    const auto everywhere = HyprlandBindList::parse(
        R"([{"modmask": 12, "submap": "resize", "submap_universal": "true", "key": "space", "dispatcher": "exec"}])");
    EXPECT_EQ(everywhere->others.size(), 1U);
}

TEST(HyprlandBindListTest, WhatIsNoListIsNoneAndEntriesThatMakeNoSenseDoNoHarm) {
    for (const char* text : {"", "{}", "null", "[", "unknown request", "\xff", "[[[["})
        EXPECT_FALSE(HyprlandBindList::parse(text)) << text;
    const auto list = HyprlandBindList::parse(
        R"([1, null, [], {}, {"modmask": -1, "keycode": 1e300, "key": []}, {"modmask": "x", "key": "nonsense"}])");
    ASSERT_TRUE(list);
    ReservedKeys reserved(list->others);
    EXPECT_FALSE(reserved.has(controlOptionSpace, {"xkb:us"}));
}

}  // namespace

}  // namespace quillmere
