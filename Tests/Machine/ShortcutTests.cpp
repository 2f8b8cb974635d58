#include "Tests/Machine/DeviceGrab.h"
#include "Tests/Machine/TapTest.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

// What becomes of keys while the tap listens to a shortcut.
namespace quillmere::machine {

namespace {

class Shortcut : public TapTest {
protected:
    /// The keyboard is grabbed too; what was typed to find out is forgotten.
    void listenTo(VirtualKeyboard& keyboard, const std::string& name) {
        ASSERT_TRUE(waitUntil([&] { return desk_.clones().contains(name); })) << desk_.describe();
        // Its clone is taken up a moment after it has come.
        ASSERT_TRUE(waitUntil([&] {
            owner().clear();
            desk_.clear();
            keyboard.type(ctrlSpaceStrokes);
            return waitUntil([&] { return owner().events().size() == 2; }, moment) && questions() == 1;
        }));
        ASSERT_TRUE(hasGot(ctrlStrokes));
        desk_.clear();
        owner().clear();
    }
};

std::vector<KeyStroke> aLongText(std::size_t keys) {
    std::vector<std::uint16_t> codes;
    for (std::size_t i = 0; i < keys; ++i)
        codes.push_back(static_cast<std::uint16_t>(KEY_Q + i * 7 % 10));
    return taps(codes);
}

}  // namespace

TEST_F(Shortcut, IsSwallowedAndEveryOtherKeyPassesInOrder) {
    listen(TapOwner::Answer::swallow);
    owner().clear();
    monitor().type(taps({KEY_A, KEY_SPACE}) + ctrlSpaceStrokes + taps({KEY_B}));
    EXPECT_TRUE(hasGot(taps({KEY_A, KEY_SPACE}) + ctrlStrokes + taps({KEY_B})));

    ASSERT_TRUE(waitUntil([&] { return owner().events().size() >= 2; }));
    const std::vector<tap::KeyEvent> events = owner().events();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].kind, tap::KeyEventKind::press);
    EXPECT_EQ(events[0].code, KEY_SPACE);
    EXPECT_EQ(events[0].flags, tap::Flags::control);
    EXPECT_EQ(events[1].kind, tap::KeyEventKind::release);
    EXPECT_EQ(events[1].code, KEY_SPACE);
}

TEST_F(Shortcut, ArrivesInItsPlaceWhenTheOwnerLetsItPass) {
    listen(TapOwner::Answer::pass);
    EXPECT_TRUE(arrives(taps({KEY_A}) + ctrlSpaceStrokes + taps({KEY_B})));
    EXPECT_EQ(questions(), 1U);
}

TEST_F(Shortcut, WithAnotherModifierHeldIsNotAskedFor) {
    listen(TapOwner::Answer::swallow);
    EXPECT_TRUE(arrives(chord({KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_SPACE}) + chord({KEY_LEFTMETA, KEY_SPACE})));
    EXPECT_EQ(questions(), 0U);
}

TEST_F(Shortcut, HoldsBackWhatIsTypedBehindItUntilTheVerdict) {
    listen(TapOwner::Answer::wait);
    const std::vector<KeyStroke> behind = taps({KEY_X}) + chord({KEY_LEFTSHIFT, KEY_Y});
    monitor().type(ctrlSpaceStrokes + behind);
    owner().send(tap::Verdict{waitForQuestion(), true});
    EXPECT_TRUE(hasGot(ctrlStrokes + behind));

    owner().clear();
    desk_.clear();
    monitor().type(ctrlSpaceStrokes + behind);
    owner().send(tap::Verdict{waitForQuestion(), false});
    EXPECT_TRUE(hasGot(ctrlSpaceStrokes + behind));
}

TEST_F(Shortcut, LetsSixKeysBeHeldAtOnce) {
    listen(TapOwner::Answer::swallow);
    EXPECT_TRUE(arrives(chord({KEY_A, KEY_S, KEY_D, KEY_F, KEY_J, KEY_K, KEY_LEFTSHIFT, KEY_LEFTCTRL})));
}

TEST_F(Shortcut, LosesNothingOfTwoThousandKeysTypedInOneGo) {
    listen(TapOwner::Answer::swallow);
    const std::vector<KeyStroke> text = aLongText(2000);
    monitor().type(text);
    EXPECT_TRUE(hasGot(text));
    EXPECT_EQ(questions(), 0U);
}

TEST_F(Shortcut, LeavesTheLengthOfAPressAlone) {
    listen(TapOwner::Answer::swallow);
    constexpr std::chrono::milliseconds held{600};
    ASSERT_TRUE(arrives({{KEY_A, true}}));
    holdsFor([] { return true; }, held);
    monitor().type({{KEY_A, false}});
    ASSERT_TRUE(hasGot(taps({KEY_A})));
    std::vector<std::chrono::nanoseconds> times;
    for (const DeskEvent& event : desk_.events())
        if (event.type == EV_KEY && event.value != 2) times.push_back(event.time);
    EXPECT_GT(times.at(1) - times.at(0), held - std::chrono::milliseconds(100));
    EXPECT_LT(times.at(1) - times.at(0), held + std::chrono::milliseconds(400));
}

TEST_F(Shortcut, PressedAHundredTimesBetweenOtherKeysIsSwallowedAHundredTimes) {
    listen(TapOwner::Answer::swallow);
    std::vector<KeyStroke> expected;
    for (int i = 0; i < 100; ++i) {
        monitor().type(ctrlSpaceStrokes + taps({KEY_A}));
        expected = expected + ctrlStrokes + taps({KEY_A});
        ASSERT_TRUE(waitUntil([&] { return desk_.strokes().size() >= expected.size(); })) << desk_.describe();
    }
    EXPECT_TRUE(hasGot(expected));
    EXPECT_EQ(questions(), 100U);
}

TEST_F(Shortcut, RepeatsForTheOwnerOnlyWhileItIsHeld) {
    VirtualKeyboard keyboard({.name = "Repeating keyboard"});
    listen(TapOwner::Answer::swallow);
    listenTo(keyboard, "Repeating keyboard");
    keyboard.type({{KEY_LEFTCTRL, true}, {KEY_SPACE, true}});
    EXPECT_TRUE(waitUntil(
        [&] { return std::ranges::count(owner().events(), tap::KeyEventKind::repeat, &tap::KeyEvent::kind) >= 3; }));
    keyboard.type({{KEY_SPACE, false}, {KEY_LEFTCTRL, false}});
    EXPECT_TRUE(hasGot(ctrlStrokes));
    EXPECT_EQ(desk_.repeats(KEY_SPACE), 0U);
}

TEST_F(Shortcut, LeavesTheRepeatsOfOtherKeysAlone) {
    plugKeyboard("repeating");
    listen(TapOwner::Answer::swallow);
    monitor().type({{KEY_A, true}});
    EXPECT_TRUE(waitUntil([&] { return desk_.repeats(KEY_A) >= 3; })) << desk_.describe();
    monitor().type({{KEY_A, false}});
    EXPECT_TRUE(hasGot(taps({KEY_A})));
    // A repeat of the device and one of the clone would be one too many.
    for (const DeskEvent& event : desk_.events())
        EXPECT_TRUE(event.isFromClone || event.type != EV_KEY);
    unplugKeyboard("repeating");
}

TEST_F(Shortcut, LeavesTheLightsOfAGrabbedKeyboardToTheDesktop) {
    VirtualKeyboard keyboard({.name = "Lit keyboard", .hasLeds = true});
    listen(TapOwner::Answer::swallow);
    ASSERT_TRUE(waitUntil([&] { return desk_.clones().contains("Lit keyboard"); }));
    ASSERT_FALSE(keyboard.isLit(LED_CAPSL));
    desk_.setLedOfClone("Lit keyboard", LED_CAPSL, true);
    EXPECT_TRUE(waitUntil([&] { return keyboard.isLit(LED_CAPSL); }));
    desk_.setLedOfClone("Lit keyboard", LED_CAPSL, false);
    EXPECT_TRUE(waitUntil([&] { return !keyboard.isLit(LED_CAPSL); }));
}

TEST_F(Shortcut, LeavesTheWheelOfAKeyboardAlone) {
    VirtualKeyboard keyboard({.name = "Wheeled keyboard", .hasWheel = true});
    listen(TapOwner::Answer::swallow);
    // The coarse and the fine count of one turn, in one report.
    const auto turns = [&] {
        std::vector<std::pair<std::uint16_t, std::int32_t>> result;
        for (const DeskEvent& event : desk_.events())
            if (event.isFromClone && event.type == EV_REL) result.emplace_back(event.code, event.value);
        return result;
    };
    const decltype(turns()) expected{{REL_WHEEL, -2}, {REL_WHEEL_HI_RES, -2 * VirtualKeyboard::finePerStep}};
    EXPECT_TRUE(waitUntil([&] {
        desk_.clear();
        keyboard.turnWheel(-2);
        return waitUntil([&] { return turns() == expected; }, moment);
    })) << desk_.describe();
}

TEST_F(Shortcut, IsToldAndNotSwallowedOnAKeyboardWithASwitch) {
    VirtualKeyboard keyboard({.name = "Keyboard with a stand", .hasSwitch = true});
    listen(TapOwner::Answer::swallow);
    desk_.clear();
    owner().clear();
    keyboard.type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlSpaceStrokes));
    ASSERT_TRUE(waitUntil([&] { return owner().events().size() == 2; }));
    EXPECT_EQ(questions(), 0U);
    EXPECT_FALSE(desk_.clones().contains("Keyboard with a stand"));
}

TEST_F(Shortcut, SwallowedWithAltLeavesNoLoneTapOfAlt) {
    owner().answer(TapOwner::Answer::swallow);
    owner().send(tap::Interest{.shortcuts = {{KEY_SPACE, tap::Flags::option}}});
    ASSERT_TRUE(becomesGrabbed());
    monitor().type(chord({KEY_LEFTALT, KEY_SPACE}));
    EXPECT_TRUE(hasGot(chord({KEY_LEFTALT, KEY_UNKNOWN})));
}

TEST_F(Shortcut, DoesNotDisturbAProgramThatHasTheKeyboardForItself) {
    const DeviceGrab grab(builtInKeyboard);
    owner().send(tap::Interest{.shortcuts = {ctrlSpace}});
    monitor().type(taps({KEY_A}));
    EXPECT_TRUE(grab.hasGot({KEY_A, true}));
    EXPECT_TRUE(holdsFor([&] { return desk_.strokes().empty(); }, std::chrono::seconds(3)));
}

TEST_F(Shortcut, IsSwallowedOnceAnotherProgramHasGivenTheKeyboardBack) {
    {
        const DeviceGrab grab(builtInKeyboard);
        owner().send(tap::Interest{.shortcuts = {ctrlSpace}});
        monitor().type(taps({KEY_A}));
        EXPECT_TRUE(grab.hasGot({KEY_A, true}));
    }
    listen(TapOwner::Answer::swallow);
    monitor().type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlStrokes));
}

}  // namespace quillmere::machine
