#include "Tests/Desktop/TapTest.h"

#include <QCoreApplication>

#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ranges>

namespace quillmere::support {

namespace {

using namespace KeyEventType;

TEST_F(TapTest, OrdinaryTypingIsNotDelivered) {
    install({.shortcuts = {controlAltSpace}});
    for (const Key key : {keys::a, keys::s, keys::space, keys::leftShift, keys::leftControl, keys::f1})
        typist->tap(key);
    typist->chord(std::array{keys::leftControl}, keys::space);
    typist->chord(std::array{keys::leftControl, keys::leftAlt, keys::leftShift}, keys::space);
    typist->chord(controlAlt, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 3U);
}

class LockedTapTest : public TapTest, public testing::WithParamInterface<std::vector<Key>> {};

TEST_P(LockedTapTest, LocksDoNotMatter) {
    install({.shortcuts = {controlAltSpace}});
    for (const Key lock : GetParam())
        typist->tap(lock);
    typist->chord(controlAlt, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
    const bool isCapsLocked = std::ranges::find(GetParam(), keys::capsLock) != GetParam().end();
    EXPECT_EQ(events[0].flags, controlAltFlags | (isCapsLocked ? KeyEventFlags::capsLock : 0));
}

INSTANTIATE_TEST_SUITE_P(Locks, LockedTapTest,
                         testing::Values(std::vector{keys::capsLock}, std::vector{keys::numLock},
                                         std::vector{keys::capsLock, keys::numLock}));

TEST_F(TapTest, ALetterRightAfterTheShortcutIsTypedInTheNewLayoutEveryTime) {
    const auto sources = XkbInputSources::create();
    ASSERT_NE(sources, nullptr);
    const std::vector<InputSourceRecord> list = sources->sources();
    ASSERT_EQ(list.size(), 3U);
    std::size_t next = 0;
    decide = [&](const KeyEventFields&) {
        next = (next + 1) % list.size();
        EXPECT_EQ(sources->select(list[next]), 0);
        return InterceptDecision::swallow;
    };
    install({.shortcuts = {controlAltSpace}});
    constexpr std::size_t rounds = 300;
    std::string expected;
    for (std::size_t i = 0; i < rounds; ++i) {
        // No gap inside a round; the server has no room for all rounds at once.
        typist->play(Strokes().chord(controlAlt, keys::space).tap(keys::z));
        expected += i % 3 == 0 ? "я" : i % 3 == 1 ? "y" : "z";
        if (i % 10 == 9) {
            ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::z) == i + 1; }));
        }
    }
    EXPECT_EQ(witness->text(), expected);
    EXPECT_FALSE(witness->saw(keys::space));
}

TEST_F(TapTest, ALetterPressedBeforeTheShortcutIsReleasedIsNotLost) {
    install({.shortcuts = {controlAltSpace}});
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    typist->play(Strokes().release(keys::leftAlt).release(keys::leftControl));
    typist->play(Strokes().press(keys::a).release(keys::space).release(keys::a).tap(keys::s));
    ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::s) == 1; }));
    EXPECT_EQ(witness->text(), "as");
    EXPECT_EQ(std::ranges::count(witness->keys(), keys::a, &SeenKey::key), 2);
    EXPECT_EQ(witness->presses(keys::space), 0U);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
}

TEST_F(TapTest, AKeyHeldSinceBeforeTheShortcutIsReleasedToItsApplication) {
    install({.shortcuts = {controlAltSpace}});
    typist->press(keys::a);
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    typist->release(keys::a);
    EXPECT_TRUE(waitUntil([&] { return std::ranges::count(witness->keys(), keys::a, &SeenKey::key) == 2; }));
    typist->play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
}

TEST_F(TapTest, TheApplicationSeesNoReleaseOfTheShortcutsKeyWhenALetterHeldSinceBeforeIsReleasedFirst) {
    install({.shortcuts = {controlAltSpace}});
    for (const std::size_t round : {1U, 2U, 3U}) {
        typist->press(keys::a);
        typist->playByHand(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
        ASSERT_TRUE(waitForEvents(keyDown, round));
        typist->playByHand(Strokes().release(keys::a).release(keys::space));
        ASSERT_TRUE(waitForEvents(keyUp, round));
        typist->playByHand(Strokes().release(keys::leftAlt).release(keys::leftControl));
        waitForEverythingTyped();
        EXPECT_EQ(std::ranges::count(witness->keys(), keys::a, &SeenKey::key), static_cast<std::ptrdiff_t>(2 * round));
        EXPECT_FALSE(witness->saw(keys::space));
    }
    EXPECT_EQ(witness->text(), "axaxax");
}

TEST_F(TapTest, LettersRolledOverAHeldShortcutAreTypedAndItsReleaseIsSwallowed) {
    install({.shortcuts = {controlAltSpace}});
    typist->playByHand(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    typist->playByHand(Strokes().release(keys::leftAlt).release(keys::leftControl).press(keys::a));
    typist->playByHand(Strokes().press(keys::s).release(keys::a).tap(keys::d).release(keys::space).release(keys::s));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_EQ(witness->text(), "asdx");
    for (const Key key : {keys::a, keys::s, keys::d})
        EXPECT_EQ(std::ranges::count(witness->keys(), key, &SeenKey::key), 2) << key;
    EXPECT_FALSE(witness->saw(keys::space));
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
}

TEST_F(TapTest, TheKeyDoesNotRepeatIntoTheApplicationWhenTheModifiersAreReleasedFirst) {
    server->setRepeat(60, 20);
    install({.shortcuts = {controlAltSpace}});
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 2));
    typist->play(Strokes().release(keys::leftAlt).release(keys::leftControl));
    EXPECT_TRUE(holdsFor([&] { return !witness->saw(keys::space); }, std::chrono::milliseconds(400)));
    typist->release(keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
}

TEST_F(TapTest, ARepeatOfAKeyThatTheApplicationHasSeenPressedStaysWithTheApplication) {
    server->setRepeat(60, 20);
    install({.shortcuts = {controlAltSpace}});
    typist->press(keys::space);
    ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::space) >= 3; }));
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt));
    const std::size_t before = witness->presses(keys::space);
    ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::space) > before + 3; }));
    typist->release(keys::space);
    const auto isSpaceRelease = [](const SeenKey& seen) { return seen.key == keys::space && !seen.isPress; };
    EXPECT_TRUE(waitUntil([&] { return std::ranges::any_of(witness->keys(), isSpaceRelease); }));
    EXPECT_TRUE(events.empty());
    typist->play(Strokes().release(keys::leftAlt).release(keys::leftControl));
}

TEST_F(TapTest, ASecondShortcutWhileTheFirstIsHeldIsAskedForToo) {
    const Shortcut controlAltK{40, {Modifiers::control, Modifiers::option}};
    install({.shortcuts = {controlAltSpace, controlAltK}});
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    typist->press(keys::k);
    ASSERT_TRUE(waitForEvents(keyDown, 2));
    typist->play(Strokes().release(keys::space).release(keys::k).release(keys::leftAlt).release(keys::leftControl));
    ASSERT_TRUE(waitForEvents(keyUp, 2));
    EXPECT_FALSE(witness->saw(keys::space));
    EXPECT_EQ(witness->presses(keys::k), 0U);
}

/// The presses of keys that type nothing and are no modifiers.
std::size_t fillers(Witness& witness) {
    return static_cast<std::size_t>(std::ranges::count_if(witness.keys(), [](const SeenKey& seen) {
        return seen.isPress && seen.text.empty() && seen.key != keys::leftControl && seen.key != keys::leftAlt;
    }));
}

// Programs open their menu bar when Alt is tapped alone, and a swallowed key
// looks to them as if it had been.
TEST_F(TapTest, AltOfASwallowedShortcutIsNoLoneTapToTheApplication) {
    install({.shortcuts = {controlAltSpace}});
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).tap(keys::space));
    EXPECT_TRUE(waitUntil([&] { return fillers(*witness) == 1; }));
    typist->play(Strokes().release(keys::leftAlt).release(keys::leftControl));
    waitForEverythingTyped();
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_EQ(fillers(*witness), 1U);
    EXPECT_FALSE(witness->saw(keys::space));
    EXPECT_EQ(witness->text(), "x");
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
}

TEST_F(TapTest, AShortcutWithoutAltOrSuperNeedsNoFiller) {
    const Shortcut controlSpace{Shortcut::space, {Modifiers::control}};
    install({.shortcuts = {controlSpace}});
    typist->play(Strokes().press(keys::leftControl).tap(keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    typist->release(keys::leftControl);
    EXPECT_EQ(fillers(*witness), 0U);
}

TEST_F(TapTest, WithAnotherProgramsMenuOpenTheShortcutIsDeliveredOnceAndNotSwallowed) {
    install({.shortcuts = {controlAltSpace}});
    ASSERT_TRUE(witness->grabKeyboard());
    typist->playByHand(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
    EXPECT_EQ(events[0].flags, controlAltFlags);
    EXPECT_EQ(witness->presses(keys::space), 1U);
    witness->ungrabKeyboard();
    typist->chord(controlAlt, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 2));
    waitForEverythingTyped();
    EXPECT_EQ(types(), (Types{keyDown, keyUp, keyDown, keyUp}));
    EXPECT_EQ(witness->presses(keys::space), 1U);
}

TEST_F(TapTest, ACombinationOfAnotherProgramIsLeftToItUntilItLetsGo) {
    constexpr unsigned int controlMod1 = ControlMask | Mod1Mask;
    ASSERT_TRUE(witness->grabKey(keys::space, controlMod1));
    install({.shortcuts = {controlAltSpace}});
    for (const std::size_t round : {1U, 2U}) {
        typist->chord(controlAlt, keys::space);
        ASSERT_TRUE(waitForEvents(keyUp, round));
        ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::space) == round; }));
    }
    XUngrabKey(witness->connection().display(), static_cast<int>(keys::space), controlMod1,
               witness->connection().root());
    witness->connection().synchronize();
    // This press still finds no grab of ours, and that it is free.
    typist->chord(controlAlt, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 3));
    waitForEverythingTyped();
    witness->clear();
    typist->chord(controlAlt, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 4));
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
    EXPECT_EQ(count(keyDown), 4U);
}

TEST_F(TapTest, ACombinationOfAnotherTapIsLeftToIt) {
    X11EventTap first;
    std::size_t seenByFirst = 0;
    first.setInterest({.shortcuts = {controlAltSpace}});
    ASSERT_TRUE(first.install([&](const KeyEventFields& event) {
        seenByFirst += event.type == keyDown ? 1 : 0;
        return InterceptDecision::swallow;
    }));
    install({.shortcuts = {controlAltSpace}});
    typist->chord(controlAlt, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_TRUE(waitUntil([&] { return seenByFirst == 1; }));
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
    EXPECT_FALSE(witness->saw(keys::space));
}

// The server lets it, and gives the press to one of the two.
TEST_F(TapTest, ACombinationThatAnotherProgramTakesLaterIsStillDeliveredOnce) {
    install({.shortcuts = {controlAltSpace}});
    ASSERT_TRUE(witness->grabKey(keys::space, ControlMask | Mod1Mask));
    typist->playByHand(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
}

TEST_F(TapTest, TheInterestFollowsWhatIsSet) {
    const Shortcut controlK{40, {Modifiers::control}};
    install({.shortcuts = {controlAltSpace}});
    tap->setInterest({.shortcuts = {controlK}});
    typist->chord(controlAlt, keys::space);
    typist->chord(std::array{keys::leftControl}, keys::k);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_EQ(events[0].keyCode, 40);
    EXPECT_EQ(witness->presses(keys::space), 1U);
    EXPECT_EQ(witness->presses(keys::k), 0U);

    tap->setInterest({});
    typist->chord(std::array{keys::leftControl}, keys::k);
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::k), 1U);
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
}

TEST_F(TapTest, AReleaseIsDeliveredThoughTheInterestHasEndedMeanwhile) {
    install({.shortcuts = {controlAltSpace}});
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    tap->setInterest({});
    typist->play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    EXPECT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
}

TEST_F(TapTest, TheEndOfTheTapGivesTheKeysBack) {
    install({.shortcuts = {controlAltSpace}});
    tap.reset();
    typist->chord(controlAlt, keys::space);
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 1U);
}

TEST_F(TapTest, InstallingIsRefusedWithoutAServerAndWorksOnceThereIsOne) {
    qputenv("DISPLAY", ":999");
    X11EventTap late;
    late.setInterest({.shortcuts = {controlAltSpace}});
    const auto note = [this](const KeyEventFields& event) {
        events.push_back(event);
        return InterceptDecision::swallow;
    };
    EXPECT_FALSE(late.install(note));
    qputenv("DISPLAY", server->display().c_str());
    ASSERT_TRUE(late.install(note));
    typist->chord(controlAlt, keys::space);
    EXPECT_TRUE(waitForEvents(keyUp, 1));
}

TEST_F(TapTest, TheEndOfTheServerIsNotTheEndOfTheProgram) {
    const auto sources = XkbInputSources::create();
    ASSERT_NE(sources, nullptr);
    install({.shortcuts = {controlAltSpace}});
    witness.reset();
    typist.reset();
    windowManager.reset();
    server.reset();
    tap->setInterest({});
    tap->setInterest({.shortcuts = {controlAltSpace}});
    tap->enable();
    QCoreApplication::processEvents();
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_TRUE(sources->sources().empty());
    EXPECT_NE(sources->select({.id = "xkb:us"}), 0);
    tap.reset();
    EXPECT_TRUE(events.empty());
}

TEST_F(TapTest, ChangesOfTheLayoutsLeaveTheShortcutWorking) {
    install({.shortcuts = {controlAltSpace}});
    std::size_t round = 0;
    for (const char* layouts : {"us,ua", "us,ua,de,fr", "fr"}) {
        server->setLayouts(layouts);
        typist->chord(controlAlt, keys::space);
        ASSERT_TRUE(waitForEvents(keyUp, ++round)) << layouts;
    }
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
}

TEST_F(TapTest, ModifiersAreWhereTheUserHasPutThem) {
    install({.shortcuts = {controlAltSpace}});
    setKeymap({"-layout", "us", "-option", "altwin:swap_alt_win"});
    // The map settles before the grabs follow.
    ASSERT_TRUE(waitUntil([&] {
        typist->chord(std::array{keys::leftControl, keys::leftSuper}, keys::space);
        return count(keyUp) > 0;
    }));
    waitForEverythingTyped();
    witness->clear();
    typist->chord(controlAlt, keys::space);
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 1U);

    setKeymap({"-layout", "us", "-option", "", "-option", "ctrl:nocaps"});
    const std::size_t before = count(keyUp);
    EXPECT_TRUE(waitUntil([&] {
        typist->chord(std::array{keys::capsLock, keys::leftAlt}, keys::space);
        return count(keyUp) > before;
    }));
}

TEST_F(TapTest, CommandIsTheSuperKey) {
    install({.shortcuts = {{Shortcut::space, {Modifiers::command}}}});
    typist->chord(std::array{keys::leftSuper}, keys::space);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_EQ(events[0].flags, KeyEventFlags::command);
}

TEST_F(TapTest, AltGrIsNoOption) {
    server->setLayouts("de");
    install({.shortcuts = {controlAltSpace}});
    typist->chord(std::array{keys::leftControl, keys::rightAlt}, keys::space);
    waitForEverythingTyped();
    typist->chord(std::array{keys::leftControl, keys::leftAlt, keys::rightAlt}, keys::space);
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 2U);
    EXPECT_TRUE(events.empty());
}

TEST_F(TapTest, AFnTapIsDeliveredAsFlagsAndReachesTheApplication) {
    install({.shortcuts = {Shortcut::fn}});
    typist->tap(keys::fn);
    ASSERT_TRUE(waitForEvents(flagsChanged, 2));
    EXPECT_EQ(types(), (Types{flagsChanged, flagsChanged}));
    EXPECT_EQ(events[0].flags, KeyEventFlags::secondaryFn);
    EXPECT_EQ(events[1].flags, 0U);
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::fn), 1U);
}

TEST_F(TapTest, WhileFnIsDownOtherKeysAreDeliveredWithoutTheirNames) {
    install({.shortcuts = {Shortcut::fn}});
    typist->tap(keys::a);
    typist->play(Strokes().press(keys::fn).tap(keys::a).tap(keys::leftShift).release(keys::fn).tap(keys::a));
    ASSERT_TRUE(waitForEvents(flagsChanged, 4));
    waitForEverythingTyped();
    EXPECT_EQ(types(), (Types{flagsChanged, systemDefined, flagsChanged, flagsChanged, flagsChanged}));
    EXPECT_EQ(events[1].keyCode, 0);
    EXPECT_EQ(events[2].flags, KeyEventFlags::secondaryFn | KeyEventFlags::shift);
    EXPECT_EQ(events[3].flags, KeyEventFlags::secondaryFn);
}

TEST_F(TapTest, FnCarriesTheModifiersThatAreHeld) {
    install({.shortcuts = {Shortcut::fn}});
    typist->chord(std::array{keys::leftSuper}, keys::fn);
    ASSERT_TRUE(waitForEvents(flagsChanged, 2));
    EXPECT_EQ(events[0].flags, KeyEventFlags::secondaryFn | KeyEventFlags::command);
}

TEST_F(TapTest, FnIsLetGoWhenItIsNoLongerOfInterest) {
    install({.shortcuts = {Shortcut::fn}});
    typist->press(keys::fn);
    ASSERT_TRUE(waitForEvents(flagsChanged, 1));
    tap->setInterest({.shortcuts = {controlAltSpace}});
    ASSERT_TRUE(waitForEvents(flagsChanged, 2));
    EXPECT_EQ(types(), (Types{flagsChanged, systemDefined, flagsChanged}));
    EXPECT_EQ(events[2].flags, 0U);
    typist->release(keys::fn);
    waitForEverythingTyped();
    EXPECT_EQ(events.size(), 3U);
}

}  // namespace

}  // namespace quillmere::support
