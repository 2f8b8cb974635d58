#include "Quillmere/Platform/Linux/Tap/X11/X11KeyMatcher.h"

#include "Tests/X11Tap/FakeX11Keyboard.h"
#include "Tests/X11Tap/X11TapBench.h"

#include <gtest/gtest.h>

#include <set>

namespace quillmere::support {
namespace {

X11KeyMatcher matcherFor(const std::vector<std::string>& wishes) {
    KeyInterest interest;
    for (const std::string& wish : wishes)
        interest.shortcuts.push_back(X11TapBench::shortcut(wish));
    X11KeyMatcher matcher;
    matcher.setKeymap(FakeX11Keyboard().readKeymap());
    matcher.setInterest(interest);
    return matcher;
}

bool wants(const X11KeyMatcher& matcher, const std::string& press) {
    const X11KeyCombination pressed = FakeX11Keyboard::combination(press);
    return matcher.wantsPress(pressed.keyCode, pressed.modifiers);
}

TEST(X11KeyMatcher, APressIsOfInterestWithExactlyItsModifiersAndAnyLock) {
    const X11KeyMatcher matcher = matcherFor({"ctrl+space"});
    for (const char* press : {"ctrl+space", "rctrl+space", "caps+ctrl+space", "num+ctrl+space", "caps+num+ctrl+space"})
        EXPECT_TRUE(wants(matcher, press)) << press;
    for (const char* press : {"space", "ctrl+shift+space", "ctrl+altgr+space", "ctrl+a", "alt+space", "super+space"})
        EXPECT_FALSE(wants(matcher, press)) << press;
}

TEST(X11KeyMatcher, WhileRecordingEveryKeyIsOfInterestButThoseThatOnlyChangeTheFlags) {
    X11KeyMatcher matcher = matcherFor({});
    matcher.setInterest({.shortcuts = {}, .everyKey = true});
    for (const char* press : {"a", "space", "ctrl+altgr+k"})
        EXPECT_TRUE(wants(matcher, press)) << press;
    for (const char* press : {"ctrl", "shift", "alt", "altgr", "super", "caps", "num", "fn"})
        EXPECT_FALSE(matcher.wantsPress(FakeX11Keyboard::code(press), 0)) << press;
    EXPECT_FALSE(wants(matcher, "mute")) << "a special key has no virtual key code";
    EXPECT_TRUE(matcher.wantsFn());
}

TEST(X11KeyMatcher, FnIsOfInterestAsAShortcutOfItsOwn) {
    EXPECT_TRUE(matcherFor({"fn"}).wantsFn());
    EXPECT_FALSE(matcherFor({"ctrl+space"}).wantsFn());
    EXPECT_TRUE(matcherFor({"fn"}).wantsAnything());
    EXPECT_FALSE(matcherFor({}).wantsAnything());
    EXPECT_TRUE(matcherFor({"fn"}).combinations().empty()) << "a tap of Fn cannot be grabbed";
}

TEST(X11KeyMatcher, AShortcutIsBegunByItsModifiersButNotByShift) {
    const X11KeyMatcher matcher = matcherFor({"ctrl+shift+space"});
    EXPECT_TRUE(matcher.isAnyShortcutBegun(FakeX11Keyboard::combination("ctrl").modifiers));
    for (const char* held : {"shift", "alt", "super", "altgr", "caps", "num"})
        EXPECT_FALSE(matcher.isAnyShortcutBegun(FakeX11Keyboard::combination(held).modifiers)) << held;
    EXPECT_FALSE(matcherFor({"space"}).isAnyShortcutBegun(0xFF));
}

TEST(X11KeyMatcher, TheCombinationsAreTheShortcutUnderEveryStateOfTheLocks) {
    const auto combinations = matcherFor({"ctrl+space"}).combinations();
    std::set<X11KeyCombination> expected;
    for (const char* press : {"ctrl+space", "caps+ctrl+space", "num+ctrl+space", "caps+num+ctrl+space"})
        expected.insert(FakeX11Keyboard::combination(press));
    EXPECT_EQ(std::set(combinations.begin(), combinations.end()), expected);
    EXPECT_EQ(combinations.size(), expected.size()) << "each once";
}

TEST(X11KeyMatcher, EveryCombinationIsAPressOfInterest) {
    const X11KeyMatcher matcher = matcherFor({"ctrl+space", "super+alt+k", "alt+a"});
    for (const X11KeyCombination& each : matcher.combinations())
        EXPECT_TRUE(matcher.wantsPress(each.keyCode, each.modifiers)) << each.keyCode << ' ' << each.modifiers;
}

}  // namespace
}  // namespace quillmere::support
