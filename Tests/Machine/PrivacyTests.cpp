#include "Tests/Machine/TapTest.h"

#include <algorithm>

// What the owner does not learn.
namespace quillmere::machine {

namespace {

class Privacy : public TapTest {
protected:
    bool wasToldAKey() {
        return std::ranges::any_of(owner().events(), [](const tap::KeyEvent& event) { return event.code != 0; });
    }
};

/// With capital letters and digits.
std::vector<KeyStroke> password() {
    return taps({KEY_S, KEY_E, KEY_C}) + chord({KEY_LEFTSHIFT, KEY_R}) + taps({KEY_E, KEY_T, KEY_7, KEY_4, KEY_ENTER});
}

}  // namespace

TEST_F(Privacy, WithFnAloneNoKeyboardIsGrabbedAndNoKeyTold) {
    VirtualKeyboard keyboard({.name = "Fn keyboard", .moreKeys = {KEY_FN}});
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().contains("Fn keyboard"); }));
    owner().send(tap::Interest{.wantsFn = true});
    const auto fnIsTold = [&] {
        owner().clear();
        desk_.clear();
        keyboard.type(taps({KEY_FN}));
        return hasGot(taps({KEY_FN})) && waitUntil([&] { return owner().events().size() >= 2; }, moment);
    };
    ASSERT_TRUE(waitUntil(fnIsTold));

    const std::vector<tap::KeyEvent> events = owner().events();
    EXPECT_EQ(events[0].kind, tap::KeyEventKind::flags);
    EXPECT_EQ(events[0].flags, tap::Flags::fn);
    EXPECT_EQ(events[1].kind, tap::KeyEventKind::flags);
    EXPECT_EQ(events[1].flags, 0);

    owner().clear();
    desk_.clear();
    EXPECT_TRUE(arrives(password()));
    for (const DeskEvent& event : desk_.events())
        EXPECT_FALSE(event.isFromClone);
    // What was told of the password would have come before this.
    keyboard.type(taps({KEY_FN}));
    EXPECT_TRUE(waitUntil([&] { return owner().events().size() >= 2; }));
    EXPECT_EQ(owner().events().size(), 2U);
    EXPECT_FALSE(wasToldAKey());
    EXPECT_TRUE(desk_.clones().empty());
}

TEST_F(Privacy, WithFnAloneTheServiceSleepsThroughWhatIsTyped) {
    VirtualKeyboard keyboard({.name = "Fn keyboard", .moreKeys = {KEY_FN}});
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().contains("Fn keyboard"); }));
    owner().send(tap::Interest{.wantsFn = true});
    ASSERT_TRUE(waitUntil([&] {
        owner().clear();
        keyboard.type(taps({KEY_FN}));
        return waitUntil([&] { return owner().events().size() >= 2; }, moment);
    }));
    const std::size_t before = service_.wakeUps();
    for (int i = 0; i < 100; ++i) {
        desk_.clear();
        keyboard.type(password());
        ASSERT_TRUE(hasGot(password()));
    }
    // Beside the keys it has a watchdog to answer.
    EXPECT_LT(service_.wakeUps() - before, 50U);
}

TEST_F(Privacy, KeysPressedWhileFnIsDownAreToldWithoutTheirNames) {
    VirtualKeyboard keyboard({.name = "Fn keyboard", .moreKeys = {KEY_FN}});
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().contains("Fn keyboard"); }));
    owner().send(tap::Interest{.wantsFn = true});
    ASSERT_TRUE(waitUntil([&] {
        owner().clear();
        // No faster than fingers: the other keys are listened to from Fn on.
        keyboard.type({{KEY_FN, true}});
        waitUntil([&] { return !owner().events().empty(); }, moment);
        keyboard.type(taps({KEY_P}) + std::vector<KeyStroke>{{KEY_FN, false}});
        return waitUntil([&] { return owner().events().size() >= 3; }, moment);
    }));
    EXPECT_EQ(owner().events()[1].kind, tap::KeyEventKind::other);
    EXPECT_FALSE(wasToldAKey());
}

TEST_F(Privacy, APasswordNeverReachesAnOwnerThatListensToAShortcut) {
    listen(TapOwner::Answer::swallow);
    owner().clear();
    monitor().type(password() + ctrlSpaceStrokes + password());
    EXPECT_TRUE(hasGot(password() + ctrlStrokes + password()));
    EXPECT_TRUE(waitUntil([&] { return owner().events().size() == 2; }));
    for (const tap::KeyEvent& event : owner().events())
        EXPECT_EQ(event.code, KEY_SPACE);
}

TEST_F(Privacy, KeysThatAreTypedAreNoShortcuts) {
    tap::Interest everything;
    for (std::uint16_t code = KEY_ESC; code < KEY_ESC + 114; ++code) {
        everything.shortcuts.push_back({code, 0});
        everything.shortcuts.push_back({code, tap::Flags::shift});
    }
    owner().send(everything);
    EXPECT_TRUE(arrives(password()));
    EXPECT_TRUE(owner().events().empty());
    EXPECT_TRUE(desk_.clones().empty());
    EXPECT_FALSE(owner().isClosed());
}

TEST_F(Privacy, AnOwnerThatWantsNothingGrabsNothingAndLearnsNothing) {
    owner().send(tap::Interest{});
    EXPECT_TRUE(arrives(password() + ctrlSpaceStrokes));
    EXPECT_TRUE(desk_.clones().empty());
    EXPECT_TRUE(owner().events().empty());
}

TEST_F(Privacy, WhileAShortcutIsRecordedTheOwnerIsAskedForEveryKey) {
    owner().answer(TapOwner::Answer::swallow);
    owner().send(tap::Interest{.everyKey = true});
    // Until the keyboard is grabbed keys are told, but not held back.
    ASSERT_TRUE(waitUntil([&] {
        owner().clear();
        monitor().type(taps({KEY_K}));
        return waitUntil([&] { return owner().events().size() == 2; }, moment) && questions() == 1;
    }));
    ASSERT_TRUE(waitUntil([&] { return desk_.keysDown().empty(); }));
    desk_.clear();
    monitor().type(chord({KEY_LEFTMETA, KEY_K}));
    // With a key of no meaning in place of the one held back, so that no
    // program takes the other for one pressed alone.
    EXPECT_TRUE(hasGot(chord({KEY_LEFTMETA, KEY_UNKNOWN})));
}

}  // namespace quillmere::machine
