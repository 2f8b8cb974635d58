#include "Tests/Desktop/DesktopTest.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <set>

namespace quillmere::support {

namespace {

class SwitchingTest : public DesktopTest {};

// What the other tests rely on: the bench sees what it claims not to have seen.
TEST_F(SwitchingTest, WithoutTheProgramTheShortcutReachesTheApplication) {
    startDesktop();
    startWitness();
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
    EXPECT_EQ(desktop().server().group(), 0);
}

TEST_F(SwitchingTest, EachPressUsesTheNextLayoutAndTheLastWrapsToTheFirst) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    for (const int group : {1, 2, 0, 1})
        ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(group));
    EXPECT_TRUE(waitUntil([&] { return witness().groups() == std::vector{1, 2, 0, 1}; }));
}

TEST_F(SwitchingTest, NeitherPressNorReleaseOfTheShortcutReachesTheApplication) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    waitForEverythingTyped();
    EXPECT_FALSE(witness().saw(keys::space));
}

TEST_F(SwitchingTest, TheModifiersOfTheShortcutStillReachTheApplicationInPairs) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    waitForEverythingTyped();
    for (const Key modifier : controlAlt) {
        const auto isModifier = [&](const SeenKey& seen) { return seen.key == modifier; };
        EXPECT_EQ(std::ranges::count_if(witness().keys(), isModifier), 2);
        EXPECT_EQ(witness().presses(modifier), 1U);
    }
}

// Programs open their menu bar when Alt is pressed and released with nothing in
// between, and of the swallowed key they know nothing.
TEST_F(SwitchingTest, ASwallowedAltShortcutIsNoLoneAltTap) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().play(Strokes().press(keys::leftControl).press(keys::leftAlt).tap(keys::space));
    ASSERT_TRUE(waitForGroup(1));
    const auto isLastSeen = [this](Key key) { return !witness().keys().empty() && witness().keys().back().key == key; };
    EXPECT_TRUE(waitUntil([&] { return witness().saw(keys::leftAlt) && !isLastSeen(keys::leftAlt); }))
        << "nothing comes between Alt's press and its release";
    typist().play(Strokes().release(keys::leftAlt).release(keys::leftControl));
    waitForEverythingTyped();
    EXPECT_EQ(witness().text(), "ч") << "and nothing is typed";
}

TEST_F(SwitchingTest, HoldingTheShortcutSwitchesOnce) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    desktop().server().setRepeat(60, 20);
    typist().press(keys::a);
    ASSERT_TRUE(waitUntil([&] { return witness().presses(keys::a) >= 5; })) << "held keys do not repeat here";
    typist().release(keys::a);
    typist().play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForGroup(1));
    EXPECT_TRUE(holdsFor([&] { return desktop().server().group() == 1; }, std::chrono::milliseconds(700)));
    typist().play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    waitForEverythingTyped();
    EXPECT_EQ(witness().groups(), std::vector{1});
    EXPECT_FALSE(witness().saw(keys::space));
}

TEST_F(SwitchingTest, PressingTheKeyAgainWithTheModifiersHeldSwitchesAgain) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().play(Strokes().press(keys::leftControl).press(keys::leftAlt));
    for (const int group : {1, 2, 0}) {
        typist().tap(keys::space);
        ASSERT_TRUE(waitForGroup(group));
    }
    typist().play(Strokes().release(keys::leftAlt).release(keys::leftControl));
    waitForEverythingTyped();
    EXPECT_FALSE(witness().saw(keys::space));
}

TEST_F(SwitchingTest, TheRightHandModifiersFireItToo) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().chord(std::array{keys::rightControl, keys::leftAlt}, keys::space);
    EXPECT_TRUE(waitForGroup(1));
}

class LockedSwitchingTest : public DesktopTest, public testing::WithParamInterface<std::vector<Key>> {};

TEST_P(LockedSwitchingTest, LocksChangeNeitherTheShortcutNorTheOtherKeys) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    for (const Key lock : GetParam())
        typist().tap(lock);
    waitForEverythingTyped();
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(0));
    witness().clear();
    typist().tap(keys::a);
    typist().chord(std::array{keys::leftShift}, keys::space);
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::a), 1U);
    EXPECT_EQ(witness().presses(keys::space), 1U);
    const bool isCapsLocked = std::ranges::find(GetParam(), keys::capsLock) != GetParam().end();
    EXPECT_EQ(witness().text(), isCapsLocked ? "A X" : "a x");
}

INSTANTIATE_TEST_SUITE_P(Locks, LockedSwitchingTest,
                         testing::Values(std::vector{keys::capsLock}, std::vector{keys::numLock},
                                         std::vector{keys::capsLock, keys::numLock}));

TEST_F(SwitchingTest, TheShortcutWorksFromEveryLayout) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    desktop().server().setGroup(1);
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    desktop().server().setGroup(1);
    typist().tap(keys::z);
    waitForEverythingTyped();
    EXPECT_EQ(witness().text(), "яч");
}

struct OtherPress {
    const char* name;
    std::vector<Key> modifiers;
};

class OtherPressTest : public DesktopTest, public testing::WithParamInterface<OtherPress> {};

TEST_P(OtherPressTest, SpaceWithOtherModifiersPasses) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().chord(GetParam().modifiers, keys::space);
    waitForEverythingTyped();
    const auto isSpace = [](const SeenKey& seen) { return seen.key == keys::space; };
    EXPECT_EQ(std::ranges::count_if(witness().keys(), isSpace), 2);
    EXPECT_EQ(desktop().server().group(), 0);
}

// Alt+Space alone belongs to the window manager.
INSTANTIATE_TEST_SUITE_P(
    Modifiers, OtherPressTest,
    testing::Values(OtherPress{"none", {}}, OtherPress{"control", {keys::leftControl}},
                    OtherPress{"shift", {keys::leftShift}},
                    OtherPress{"controlShift", {keys::leftControl, keys::leftShift}},
                    OtherPress{"controlAltShift", {keys::leftControl, keys::leftAlt, keys::leftShift}},
                    OtherPress{"controlAltSuper", {keys::leftControl, keys::leftAlt, keys::leftSuper}}),
    [](const auto& info) { return info.param.name; });

/// Every keycode but those of modifiers and locks.
std::vector<Key> ordinaryKeys(XConnection& connection) {
    std::set<Key> modifiers;
    XModifierKeymap* map = XGetModifierMapping(connection.display());
    for (int i = 0; i < 8 * map->max_keypermod; ++i)
        modifiers.insert(map->modifiermap[i]);
    XFreeModifiermap(map);
    std::vector<Key> result;
    for (Key key = keys::escape; key <= keys::last; ++key)
        if (!modifiers.contains(key)) result.push_back(key);
    return result;
}

// Some keys belong to the server or the window manager, so the same keys are
// typed without the program first.
TEST_F(SwitchingTest, EveryOtherKeyArrivesAsItDoesWithoutTheProgram) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    Strokes strokes;
    for (const Key key : ordinaryKeys(desktop().connection()))
        // That one comes last, and says that all the others have arrived.
        if (key != keys::x) strokes.tap(key);
    const auto arrivals = [&] {
        witness().clear();
        typist().play(strokes);
        waitForEverythingTyped();
        std::vector<Key> keys;
        std::ranges::transform(witness().keys(), std::back_inserter(keys), &SeenKey::key);
        return keys;
    };
    const std::vector<Key> without = arrivals();
    ASSERT_GT(without.size(), 400U);
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_EQ(arrivals(), without);
}

TEST_F(SwitchingTest, CharactersOfTheThirdLevelAreStillTyped) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    desktop().server().setGroup(2);
    typist().chord(std::array{keys::rightAlt}, keys::q);
    waitForEverythingTyped();
    EXPECT_EQ(witness().text(), "@x");
}

TEST_F(SwitchingTest, AltGrIsNoAlt) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    desktop().server().setGroup(2);
    typist().chord(std::array{keys::leftControl, keys::rightAlt}, keys::space);
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
    EXPECT_EQ(desktop().server().group(), 2);
}

TEST_F(SwitchingTest, ALetterRightAfterTheShortcutArrivesInTheNewLayoutEveryTime) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    constexpr std::size_t rounds = 100;
    Strokes strokes;
    std::string expected;
    for (std::size_t i = 0; i < rounds; ++i) {
        for (int layout = 0; layout < 3; ++layout)
            strokes.chord(controlAlt, keys::space).tap(keys::z);
        expected += "яyz";
    }
    typist().play(strokes);
    ASSERT_TRUE(waitUntil([&] { return witness().presses(keys::z) == 3 * rounds; }));
    EXPECT_EQ(witness().text(), expected);
    EXPECT_EQ(witness().presses(keys::space), 0U);
    EXPECT_FALSE(witness().saw(keys::space));
}

// As from a hand that has the modifiers down already and is fast then.
TEST_F(SwitchingTest, ALetterRightAfterAShortcutOfHeldModifiersArrivesInTheNewLayoutEveryTime) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    constexpr std::size_t rounds = 10;
    std::string expected;
    for (std::size_t i = 0; i < rounds; ++i) {
        for (int layout = 0; layout < 3; ++layout) {
            typist().playByHand(Strokes().press(keys::leftControl).press(keys::leftAlt));
            typist().play(Strokes().tap(keys::space).release(keys::leftAlt).release(keys::leftControl).tap(keys::z));
        }
        expected += "яyz";
    }
    ASSERT_TRUE(waitUntil([&] { return witness().presses(keys::z) == 3 * rounds; }));
    EXPECT_EQ(witness().text(), expected);
    EXPECT_FALSE(witness().saw(keys::space));
}

// The second press stands still already when the first is released.
TEST_F(SwitchingTest, ASecondPressRightBehindTheFirstIsSwallowedWithItsRelease) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().play(Strokes().press(keys::leftControl).press(keys::leftAlt).tap(keys::space).press(keys::space));
    ASSERT_TRUE(waitForGroup(2));
    typist().play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    waitForEverythingTyped();
    EXPECT_FALSE(witness().saw(keys::space));
}

class FnTest : public DesktopTest {
protected:
    /// One group on a lone Fn, one on ⌃⌥Space that tells when the tap is there.
    void startWithFn() {
        startDesktop();
        storeConfiguration(configurationText(
            {{.keyCode = 63, .modifiers = 0, .sources = threeSources}, {.sources = {"xkb:us", "xkb:de"}}}));
        startWitness();
        ASSERT_NO_FATAL_FAILURE(startProgram());
    }
};

TEST_F(FnTest, ALoneFnTapSwitchesAndThePressPasses) {
    ASSERT_NO_FATAL_FAILURE(startWithFn());
    for (const int group : {1, 2, 0}) {
        typist().tap(keys::fn);
        ASSERT_TRUE(waitForGroup(group));
    }
    EXPECT_EQ(witness().presses(keys::fn), 3U);
}

TEST_F(FnTest, FnWithAnotherKeyInBetweenDoesNotSwitch) {
    ASSERT_NO_FATAL_FAILURE(startWithFn());
    typist().play(Strokes().press(keys::fn).tap(keys::a).release(keys::fn));
    typist().play(Strokes().press(keys::leftShift).tap(keys::fn).release(keys::leftShift));
    typist().play(Strokes().press(keys::fn).tap(keys::leftShift).release(keys::fn));
    // A tap that does count ends the row: had one before counted, it would be the second.
    typist().tap(keys::fn);
    ASSERT_TRUE(waitUntil([&] { return !witness().groups().empty(); }));
    waitForEverythingTyped();
    EXPECT_EQ(witness().groups(), std::vector{1});
    EXPECT_EQ(witness().text(), "aч");
}

TEST_F(FnTest, TwoGroupsHaveEachTheirOwnShortcutAndOrder) {
    ASSERT_NO_FATAL_FAILURE(startWithFn());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    typist().tap(keys::fn);
    ASSERT_TRUE(waitForGroup(0));
    typist().tap(keys::fn);
    ASSERT_TRUE(waitForGroup(1));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(0));
}

}  // namespace

}  // namespace quillmere::support
