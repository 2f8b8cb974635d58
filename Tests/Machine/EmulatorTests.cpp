#include "Tests/Machine/MachineTest.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

// What the other cases rest on, without the service.
namespace quillmere::machine {

namespace {

class Emulator : public MachineTest {};

std::string nodeOf(const std::string& name) {
    for (int number = 0; number < 32; ++number) {
        const std::string node = "/dev/input/event" + std::to_string(number);
        const int descriptor = open(node.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) continue;
        std::array<char, 256> found{};
        ioctl(descriptor, EVIOCGNAME(found.size() - 1), found.data());
        close(descriptor);
        if (name == found.data()) return node;
    }
    return {};
}

}  // namespace

TEST_F(Emulator, KeysTypedOutsideArriveInOrder) {
    EXPECT_TRUE(arrives(taps({KEY_Q, KEY_U, KEY_I, KEY_L, KEY_L})));
    desk_.clear();
    EXPECT_TRUE(arrives(chord({KEY_RIGHTCTRL, KEY_LEFTSHIFT, KEY_LEFTMETA, KEY_RIGHTALT, KEY_F12, KEY_DELETE})));
}

TEST_F(Emulator, AKeyboardCanBePluggedInTypedOnAndPulledOut) {
    monitor().plugKeyboard("second");
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().contains(usbKeyboard); }));
    EXPECT_TRUE(arrives(taps({KEY_X, KEY_Y})));
    EXPECT_EQ(desk_.events().front().device, usbKeyboard);
    monitor().unplugKeyboard("second");
    EXPECT_TRUE(waitUntil([&] { return !desk_.originals().contains(usbKeyboard); }));
}

TEST_F(Emulator, WhatSomebodyHasGrabbedDoesNotReachTheDesktop) {
    const int keyboard = open(nodeOf(builtInKeyboard).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(ioctl(keyboard, EVIOCGRAB, 1), 0);
    monitor().type(taps({KEY_A}));
    std::array<input_event, 3> press{};
    EXPECT_EQ(read(keyboard, press.data(), sizeof press), ssize_t{sizeof press});
    EXPECT_TRUE(desk_.strokes().empty());
    close(keyboard);
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
