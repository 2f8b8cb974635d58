#include "Tests/Machine/DeviceGrab.h"
#include "Tests/Machine/MachineTest.h"

// What the other cases rest on, without the service.
namespace quillmere::machine {

namespace {

class Emulator : public MachineTest {};

}  // namespace

TEST_F(Emulator, KeysTypedOutsideArriveInOrder) {
    EXPECT_TRUE(arrives(taps({KEY_Q, KEY_U, KEY_I, KEY_L, KEY_L})));
    desk_.clear();
    EXPECT_TRUE(arrives(chord({KEY_RIGHTCTRL, KEY_LEFTSHIFT, KEY_LEFTMETA, KEY_RIGHTALT, KEY_F12, KEY_DELETE})));
}

TEST_F(Emulator, AKeyboardCanBePluggedInTypedOnAndPulledOut) {
    plugKeyboard("second");
    EXPECT_TRUE(arrives(taps({KEY_X, KEY_Y})));
    EXPECT_EQ(desk_.events().front().device, usbKeyboard);
    unplugKeyboard("second");
}

TEST_F(Emulator, WhatSomebodyHasGrabbedDoesNotReachTheDesktop) {
    const DeviceGrab grab(builtInKeyboard);
    monitor().type(taps({KEY_A}));
    EXPECT_TRUE(grab.hasGot({KEY_A, false}));
    EXPECT_TRUE(desk_.strokes().empty());
}

TEST_F(Emulator, AKeyboardMadeByATestTypesRepeatsAndHasLeds) {
    VirtualKeyboard keyboard({.name = "Fn keyboard", .moreKeys = {KEY_FN}, .hasLeds = true});
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().contains("Fn keyboard"); }));
    keyboard.type({{KEY_FN, true}});
    EXPECT_TRUE(waitUntil([&] { return desk_.repeats(KEY_FN) >= 3; }));
    keyboard.type({{KEY_FN, false}});
    EXPECT_TRUE(hasGot(taps({KEY_FN})));
}

TEST_F(Emulator, ASessionOnTheFirstTerminalIsActive) {
    session().activate();
    EXPECT_FALSE(session().id().empty());
}

}  // namespace quillmere::machine
