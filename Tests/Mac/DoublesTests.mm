// The played system punishes what the real one does: else the other tests would
// prove little.
#include "Quillmere/Platform/Mac/CoreFoundationText.h"
#include "Quillmere/Platform/Mac/NativePlatePanel.h"
#include "Quillmere/Platform/Mac/Owned.h"
#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/RunLoop.h"

#include <Carbon/Carbon.h>
#include <CoreGraphics/CoreGraphics.h>

#include <gtest/gtest.h>

#include <QWidget>

#include <thread>

namespace quillmere {
namespace {

class DoublesDeathTest : public testing::Test {
protected:
    DoublesDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

CGEventRef passOn(CGEventTapProxy /*proxy*/, CGEventType /*type*/, CGEventRef event, void* /*self*/) {
    return event;
}

void makeTap(CGEventTapLocation location, CGEventTapOptions options, CGEventMask mask) {
    int owner = 0;
    CGEventTapCreate(location, kCGHeadInsertEventTap, options, mask, &passOn, &owner);
}

TEST_F(DoublesDeathTest, AWrongConstant) {
    EXPECT_DEATH(makeTap(kCGSessionEventTap, kCGEventTapOptionDefault, 0x5C00), "behind the window server");
    EXPECT_DEATH(makeTap(kCGHIDEventTap, kCGEventTapOptionListenOnly, 0x5C00), "only listens");
    EXPECT_DEATH(makeTap(kCGHIDEventTap, kCGEventTapOptionDefault, 0x1C00), "other events");
}

TEST_F(DoublesDeathTest, OneReleaseTooMany) {
    EXPECT_DEATH(
        {
            NSView* const view = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, 1, 1)];
            const Owned<NSView> owner(view);
            [view release];
        },
        "");
    EXPECT_DEATH(
        {
            const auto string = makeString("text");
            CFRelease(string.get());
        },
        "");
}

TEST_F(DoublesDeathTest, ACallOnAnotherThread) {
    EXPECT_DEATH(std::thread([] { TISCopyCurrentKeyboardInputSource(); }).join(), "on another thread");
    EXPECT_DEATH(std::thread([] { [NSPanel alloc]; }).join(), "on another thread");
    EXPECT_DEATH(
        {
            const NativePlatePanel panel;
            std::thread([] { [appkit::windows().back() orderFrontRegardless]; }).join();
        },
        "on another thread");
}

TEST_F(DoublesDeathTest, AnObjectOfAnotherKind) {
    EXPECT_DEATH(CFStringGetLength(reinterpret_cast<CFStringRef>(kCFBooleanTrue)), "another kind");
}

TEST_F(DoublesDeathTest, WhatTheSystemDoesNotHaveYet) {
    macversion::major = 15;
    EXPECT_DEATH([NSGlassEffectView alloc], "glass before");
    macversion::major = 26;
}

}  // namespace
}  // namespace quillmere
