#include "Tests/Desktop/TapTest.h"

#include <algorithm>

// While the user records a shortcut.
namespace quillmere::support {

namespace {

using namespace KeyEventType;

class RecordingTapTest : public TapTest {
protected:
    static KeyInterest everything() { return {.shortcuts = {}, .everyKey = true}; }
};

TEST_F(RecordingTapTest, EveryKeyIsAskedForAndReachesNoApplication) {
    install(everything());
    typist->play(Strokes().tap(keys::a).chord(controlAlt, keys::k));
    ASSERT_TRUE(waitForEvents(keyUp, 2));
    EXPECT_EQ(types(), (Types{keyDown, keyUp, keyDown, keyUp}));
    EXPECT_EQ(events[0].keyCode, 0);
    EXPECT_EQ(events[2].keyCode, 40);
    EXPECT_EQ(events[2].flags, controlAltFlags);
    tap->setInterest({});
    waitForEverythingTyped();
    EXPECT_EQ(witness->text(), "x");
}

TEST_F(RecordingTapTest, ItEndsWhenTheLastKeyIsUp) {
    install(everything());
    // Taking the key ends the recording, as the program's recorder does.
    decide = [&](const KeyEventFields&) {
        tap->setInterest({});
        return InterceptDecision::swallow;
    };
    typist->play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::k));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    typist->play(Strokes().release(keys::k).release(keys::leftAlt).release(keys::leftControl));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    waitForEverythingTyped();
    EXPECT_EQ(witness->text(), "x");
    for (const Key key : {keys::k, keys::leftAlt, keys::leftControl})
        EXPECT_FALSE(witness->saw(key)) << key;
}

TEST_F(RecordingTapTest, ALetterTypedBeforeTheLastKeyIsUpIsNotLost) {
    install(everything());
    decide = [&](const KeyEventFields&) {
        tap->setInterest({});
        return InterceptDecision::swallow;
    };
    typist->play(Strokes().press(keys::leftControl).press(keys::k));
    ASSERT_TRUE(waitForEvents(keyDown, 1));
    typist->play(Strokes().release(keys::leftControl).tap(keys::a).release(keys::k));
    ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::a) == 1; }));
    EXPECT_EQ(witness->text(), "a");
}

TEST_F(RecordingTapTest, APassedKeyReachesTheApplicationAndTheRecordingGoesOn) {
    install(everything());
    decide = [](const KeyEventFields& event) {
        return event.keyCode == 0 ? InterceptDecision::pass : InterceptDecision::swallow;
    };
    typist->play(Strokes().tap(keys::a));
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    ASSERT_TRUE(waitUntil([&] { return std::ranges::count(witness->keys(), keys::a, &SeenKey::key) == 2; }));
    typist->tap(keys::k);
    ASSERT_TRUE(waitForEvents(keyUp, 2));
    tap->setInterest({});
    waitForEverythingTyped();
    EXPECT_EQ(witness->text(), "ax");
}

TEST_F(RecordingTapTest, AKeyThatIsDownWhenItBeginsIsReleasedToItsApplication) {
    install({});
    typist->press(keys::a);
    ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::a) == 1; }));
    tap->setInterest(everything());
    typist->release(keys::a);
    EXPECT_TRUE(waitUntil([&] { return std::ranges::count(witness->keys(), keys::a, &SeenKey::key) == 2; }));
    typist->tap(keys::k);
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_FALSE(witness->saw(keys::k));
}

TEST_F(RecordingTapTest, ItWaitsForAnotherProgramToGiveTheKeyboardBack) {
    ASSERT_TRUE(witness->grabKeyboard());
    install(everything());
    typist->tap(keys::a);
    // Seen all the same, since nothing can be swallowed now.
    ASSERT_TRUE(waitForEvents(keyUp, 1));
    EXPECT_EQ(witness->presses(keys::a), 1U);
    witness->ungrabKeyboard();
    EXPECT_TRUE(waitUntil([&] {
        witness->clear();
        typist->tap(keys::k);
        const std::size_t before = count(keyUp);
        return waitForEvents(keyUp, before + 1) && !witness->saw(keys::k);
    }));
}

TEST_F(RecordingTapTest, ALoneFnTapIsDelivered) {
    install(everything());
    typist->tap(keys::fn);
    ASSERT_TRUE(waitForEvents(flagsChanged, 2));
    EXPECT_EQ(types(), (Types{flagsChanged, flagsChanged}));
}

TEST_F(RecordingTapTest, WithABusyMainThreadKeysPassUntilItIsEnabledAgain) {
    install(everything());
    typist->tap(keys::a);
    ASSERT_TRUE(waitWhileBusy([&] { return witness->presses(keys::a) == 1; }));
    waitForEverythingTypedWhileBusy();
    ASSERT_TRUE(waitForEvents(tapDisabledByTimeout, 1));
    EXPECT_EQ(count(keyDown), 0U);
    tap->enable();
    EXPECT_TRUE(waitUntil([&] {
        typist->tap(keys::k);
        return count(keyDown) > 0;
    }));
}

}  // namespace

}  // namespace quillmere::support
