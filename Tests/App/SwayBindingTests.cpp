#include "Quillmere/Platform/Linux/Tap/Sway/SwayBinding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere {

namespace {

constexpr Shortcut controlOptionSpace{Shortcut::space, {Modifiers::control, Modifiers::option}};

using Lines = std::vector<std::string>;

/// "Group1+Control+Mod1+65 > xkb:ua", each.
Lines lines(const ArmedShortcut& shortcut, const std::vector<std::string>& layouts) {
    Lines result;
    for (const SwayBinding& binding : swayBindings(shortcut, layouts))
        result.push_back(binding.combination() + " > " + (binding.step ? binding.step->sourceID : ""));
    return result;
}

TEST(SwayBindingTests, FromEachLayoutAShortcutLeadsToTheNextOfItsGroup) {
    const ArmedShortcut shortcut{controlOptionSpace, {"xkb:us", "xkb:de", "xkb:ua"}};
    EXPECT_EQ(lines(shortcut, {"xkb:us", "xkb:ua", "xkb:de"}),
              (Lines{"Group1+Control+Mod1+65 > xkb:de", "Group2+Control+Mod1+65 > xkb:us",
                     "Group3+Control+Mod1+65 > xkb:ua"}));
}

TEST(SwayBindingTests, FromALayoutOutsideItsGroupItLeadsToTheFirst) {
    const ArmedShortcut shortcut{controlOptionSpace, {"xkb:ua", "xkb:de"}};
    EXPECT_EQ(lines(shortcut, {"xkb:us", "xkb:ua", "xkb:de"}).front(), "Group1+Control+Mod1+65 > xkb:ua");
}

TEST(SwayBindingTests, WhatTheDesktopLacksIsPassedOver) {
    const ArmedShortcut shortcut{controlOptionSpace, {"xkb:us", "ibus:libpinyin", "xkb:ua"}};
    EXPECT_EQ(lines(shortcut, {"xkb:us", "xkb:ua"}),
              (Lines{"Group1+Control+Mod1+65 > xkb:ua", "Group2+Control+Mod1+65 > xkb:us"}));
    EXPECT_EQ(lines({controlOptionSpace, {"fcitx:mozc"}}, {"xkb:us", "xkb:ua"}), Lines{});
}

TEST(SwayBindingTests, ItSwitchesEveryKeyboardByTheLayoutsPlaceAndNotAgainWhileItIsHeld) {
    const ArmedShortcut shortcut{controlOptionSpace, {"xkb:us", "xkb:ua"}};
    EXPECT_EQ(swayBindings(shortcut, {"xkb:de", "xkb:us", "xkb:ua"})[1].command(),
              "bindcode --no-warn --no-repeat Group2+Control+Mod1+65 input type:keyboard xkb_switch_layout 2");
}

TEST(SwayBindingTests, WithoutSourcesItIsSwallowedInEveryLayoutAndLeftToWhoHears) {
    const std::vector<SwayBinding> bindings = swayBindings({controlOptionSpace, {}}, {"xkb:us", "xkb:ua"});
    ASSERT_EQ(bindings.size(), 1U);
    EXPECT_EQ(bindings[0].command(), "bindcode --no-warn --no-repeat Control+Mod1+65 nop quillmere");
    EXPECT_EQ(lines({controlOptionSpace, {}}, {}), Lines{"Control+Mod1+65 > "});
}

TEST(SwayBindingTests, EveryKeyOfTheShortcutIsBoundWithItsModifiers) {
    const ArmedShortcut numberEnter{{76, {Modifiers::command, Modifiers::shift}}, {"xkb:us"}};
    EXPECT_EQ(lines(numberEnter, {"xkb:us"}), Lines{"Group1+Shift+Mod4+104 > xkb:us"});
    const ArmedShortcut f13{{105, Modifiers::control}, {"xkb:us"}};
    EXPECT_EQ(lines(f13, {"xkb:us"}).size(), 2U) << "F13 and Print share one code";
}

TEST(SwayBindingTests, ALoneFnIsNoKeyPress) {
    EXPECT_EQ(lines({Shortcut::fn, {"xkb:us", "xkb:ua"}}, {"xkb:us", "xkb:ua"}), Lines{});
    EXPECT_EQ(lines({Shortcut::fn, {}}, {"xkb:us", "xkb:ua"}), Lines{});
}

}  // namespace

}  // namespace quillmere
