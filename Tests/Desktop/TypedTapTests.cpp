#include "Tests/Desktop/TapTest.h"

#include <algorithm>
#include <chrono>

// What holds for a shortcut however it is typed. From a hand, the modifiers are
// down for a while, and the tap hears of the press before its grab delivers it;
// in a burst without a gap the grab's event is the first.
namespace quillmere::support {

namespace {

using namespace KeyEventType;

enum class Typing { byHand, burst };

class TypedTapTest : public TapTest, public testing::WithParamInterface<Typing> {
protected:
    void type(const Strokes& strokes) {
        GetParam() == Typing::byHand ? typist->playByHand(strokes) : typist->play(strokes);
    }
};

INSTANTIATE_TEST_SUITE_P(AsTyped, TypedTapTest, testing::Values(Typing::byHand, Typing::burst),
                         [](const auto& each) { return each.param == Typing::byHand ? "ByHand" : "InABurst"; });

TEST_P(TypedTapTest, ASwallowedShortcutReachesNoApplicationNeitherPressNorRelease) {
    install({.shortcuts = {controlAltSpace}});
    type(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
    EXPECT_EQ(events[0].keyCode, Shortcut::space);
    EXPECT_EQ(events[0].autorepeat, 0);
    EXPECT_EQ(events[0].flags, controlAltFlags);
    EXPECT_EQ(events[1].keyCode, Shortcut::space);
    EXPECT_GE(events[1].timestamp, events[0].timestamp);
}

TEST_P(TypedTapTest, APassedShortcutReachesTheApplicationOnceInTheLayoutInUse) {
    install({.shortcuts = {controlAltSpace}});
    decide = [](const KeyEventFields&) { return InterceptDecision::pass; };
    server->setGroup(1);
    type(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_EQ(types(), (Types{keyDown, keyUp}));
    ASSERT_EQ(witness->presses(keys::space), 1U);
    const auto press = std::ranges::find(witness->keys(), keys::space, &SeenKey::key);
    EXPECT_EQ(press->group, 1);
    EXPECT_EQ(std::ranges::count(witness->keys(), keys::space, &SeenKey::key), 2);
}

TEST_P(TypedTapTest, AHeldShortcutRepeatsToTheProgramAloneAndIsReleasedOnce) {
    server->setRepeat(60, 20);
    install({.shortcuts = {controlAltSpace}});
    type(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForEvents(keyDown, 4));
    type(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_FALSE(witness->saw(keys::space));
    EXPECT_EQ(std::ranges::count(events, 0, &KeyEventFields::autorepeat), 2) << "one first press, one release";
    EXPECT_EQ(count(keyUp), 1U);
}

TEST_P(TypedTapTest, WithABusyMainThreadTheKeyPassesAndIsNeverAskedForLater) {
    install({.shortcuts = {controlAltSpace}});
    const auto start = std::chrono::steady_clock::now();
    type(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitWhileBusy([&] { return witness->presses(keys::space) == 1; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400));
    // Nothing waits a second time.
    type(Strokes().chord(controlAlt, keys::space));
    waitForEverythingTypedWhileBusy();
    EXPECT_EQ(witness->presses(keys::space), 2U);

    ASSERT_TRUE(waitForEvents(tapDisabledByTimeout, 1));
    EXPECT_EQ(count(keyDown), 0U);
    type(Strokes().chord(controlAlt, keys::space));
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 3U);
    EXPECT_EQ(count(keyDown), 0U);

    tap->enable();
    type(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 3U);
    EXPECT_EQ(count(tapDisabledByTimeout), 1U);
}

TEST_P(TypedTapTest, ADecisionThatComesTooLateIsNotWaitedFor) {
    install({.shortcuts = {controlAltSpace}});
    decide = [&](const KeyEventFields&) {
        EXPECT_TRUE(waitWhileBusy([&] { return witness->presses(keys::space) == 1; }));
        return InterceptDecision::swallow;
    };
    type(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(tapDisabledByTimeout, 1));
    tap->enable();
    decide = [](const KeyEventFields&) { return InterceptDecision::swallow; };
    type(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForEvents(keyUp, 2));
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 1U);
}

TEST_P(TypedTapTest, TheEndOfTheTapFreesAKeyThatWaitsForADecision) {
    install({.shortcuts = {controlAltSpace}});
    type(Strokes().chord(controlAlt, keys::space));
    // Time for the tap to stand still at it; the main thread never looks.
    ASSERT_TRUE(waitWhileBusy([&] { return witness->presses(keys::leftAlt) == 1; }));
    tap.reset();
    waitForEverythingTyped();
    EXPECT_EQ(witness->presses(keys::space), 1U);
    EXPECT_TRUE(events.empty());
}

}  // namespace

}  // namespace quillmere::support
