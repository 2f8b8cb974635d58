#include "Tests/Machine/TapTest.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/SupportError.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Keyboards that come and go while the tap is at work.
namespace quillmere::machine {

namespace {

class HotPlug : public TapTest {
protected:
    void plugAndListen() {
        plugKeyboard("usb");
        ASSERT_TRUE(becomesGrabbed());
    }

    void unplug() { unplugKeyboard("usb"); }

    testing::AssertionResult everythingIsReleased() {
        if (waitUntil([&] { return desk_.keysDown().empty() && !desk_.clones().contains(usbKeyboard); }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << desk_.describe();
    }
};

/// A keyboard that an administrator gives to another seat, until the end of
/// this object.
class SeatChange {
public:
    SeatChange(const std::string& keyboard, const std::string& seat) : keyboard_(path(keyboard)) {
        run({"loginctl", "attach", seat, keyboard_});
        follow();
    }
    ~SeatChange() {
        run({"loginctl", "flush-devices"});
        follow();
    }
    SeatChange(const SeatChange&) = delete;
    SeatChange& operator=(const SeatChange&) = delete;

private:
    /// The original's place in sysfs; its clone is a virtual device.
    static std::string path(const std::string& keyboard) {
        for (const auto& entry : std::filesystem::directory_iterator("/sys/class/input")) {
            std::ifstream file(entry.path() / "name");
            std::string name;
            std::getline(file, name);
            const std::filesystem::path place = std::filesystem::canonical(entry.path());
            if (name == keyboard && !place.string().starts_with("/sys/devices/virtual/")) return place;
        }
        throw support::SupportError("no " + keyboard);
    }

    /// udev looks for changed rules three seconds after the last device at the
    /// earliest, too late for the event that logind makes.
    void follow() {
        run({"udevadm", "control", "--reload"});
        run({"udevadm", "trigger", keyboard_});
    }

    static void run(const std::vector<std::string>& arguments) {
        EXPECT_EQ(support::ChildProcess::run({.arguments = arguments,
                                              .environment = support::baseEnvironment("/"),
                                              .output = std::filesystem::current_path() / "loginctl.txt",
                                              .inheritedDescriptors = {},
                                              .prepare = {}}),
                  0);
    }

    std::string keyboard_;
};

constexpr int rounds = 4;
constexpr int keyboardsPerRound = 5;

}  // namespace

TEST_F(HotPlug, AKeyboardPluggedInLaterIsListenedToAsWell) {
    listen(TapOwner::Answer::swallow);
    plugAndListen();
    monitor().type(taps({KEY_A}) + ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(taps({KEY_A}) + ctrlStrokes));
    for (const DeskEvent& event : desk_.events())
        EXPECT_EQ(event.device, usbKeyboard);
    unplug();
    EXPECT_TRUE(everythingIsReleased());
}

TEST_F(HotPlug, AKeyHeldWhileItsKeyboardIsPulledOutIsReleased) {
    listen(TapOwner::Answer::swallow);
    plugAndListen();
    EXPECT_TRUE(arrives({{KEY_LEFTSHIFT, true}, {KEY_A, true}}));
    unplug();
    EXPECT_TRUE(everythingIsReleased());
}

TEST_F(HotPlug, ASwallowedKeyHeldWhileItsKeyboardIsPulledOutLeavesNothingBehind) {
    listen(TapOwner::Answer::swallow);
    plugAndListen();
    owner().clear();
    monitor().type({{KEY_LEFTCTRL, true}, {KEY_SPACE, true}});
    waitForQuestion();
    unplug();
    EXPECT_TRUE(everythingIsReleased());
    // The owner is not left with a key that is down for ever.
    EXPECT_TRUE(waitUntil([&] {
        const auto events = owner().events();
        return !events.empty() && events.back().kind == tap::KeyEventKind::release;
    }));
    desk_.clear();
    EXPECT_TRUE(arrives(taps({KEY_SPACE})));
}

TEST_F(HotPlug, AKeyboardPulledOutDuringAQuestionHoldsNothingUp) {
    listen(TapOwner::Answer::wait);
    plugAndListen();
    monitor().type({{KEY_LEFTCTRL, true}, {KEY_SPACE, true}});
    waitForQuestion();
    unplug();
    EXPECT_TRUE(everythingIsReleased());
    EXPECT_FALSE(owner().isClosed());
}

TEST_F(HotPlug, AKeyboardGivenToAnotherSeatIsLetGo) {
    listen(TapOwner::Answer::swallow);
    plugAndListen();
    EXPECT_TRUE(arrives({{KEY_LEFTSHIFT, true}}));
    const SeatChange change(usbKeyboard, "seat1");
    EXPECT_TRUE(everythingIsReleased());
    desk_.clear();
    EXPECT_TRUE(arrives({{KEY_LEFTSHIFT, false}}));
    desk_.clear();
    owner().clear();
    // It is that seat's alone now: nothing is swallowed, and nobody is told.
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));
    for (const DeskEvent& event : desk_.events())
        EXPECT_FALSE(event.isFromClone);
    EXPECT_TRUE(owner().events().empty());
}

TEST_F(HotPlug, AKeyboardThatComesBackFromAnotherSeatIsListenedToAgain) {
    listen(TapOwner::Answer::swallow);
    plugAndListen();
    {
        const SeatChange change(usbKeyboard, "seat1");
        ASSERT_TRUE(everythingIsReleased());
    }
    EXPECT_TRUE(becomesGrabbed());
}

TEST_F(HotPlug, TwentyKeyboardsPluggedInAndPulledOutLeaveNothingBehind) {
    listen(TapOwner::Answer::swallow);
    const std::size_t files = service_.openFiles();
    const pid_t pid = service_.pid();
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < keyboardsPerRound; ++i)
            monitor().plugKeyboard("usb" + std::to_string(i));
        // Every other round ends while their clones are still being made.
        const bool untilGrabbed = round % 2 == 0;
        ASSERT_TRUE(waitUntil([&] {
            return desk_.originals().count(usbKeyboard) == keyboardsPerRound
                   && (!untilGrabbed || desk_.clones().count(usbKeyboard) == keyboardsPerRound);
        })) << desk_.describe();
        EXPECT_TRUE(!untilGrabbed || becomesGrabbed());
        // The newest is typed on, and pulled out with a key held.
        monitor().type({{KEY_A, true}});
        for (int i = 0; i < keyboardsPerRound; ++i)
            monitor().unplugKeyboard("usb" + std::to_string(i));
        ASSERT_TRUE(waitUntil([&] { return !desk_.originals().contains(usbKeyboard); })) << desk_.describe();
        ASSERT_TRUE(everythingIsReleased());
    }
    desk_.clear();
    monitor().type(taps({KEY_A}) + ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(taps({KEY_A}) + ctrlStrokes));
    EXPECT_EQ(service_.pid(), pid);
    EXPECT_TRUE(waitUntil([&] { return service_.openFiles() <= files; })) << service_.openFiles() << " of " << files;
}

TEST_F(HotPlug, KeyboardsThatComeAndGoAtOnceDoNoHarm) {
    listen(TapOwner::Answer::swallow);
    for (int i = 0; i < 50; ++i) {
        VirtualKeyboard keyboard({.name = "Fleeting keyboard"});
        keyboard.type({{KEY_A, true}});
    }
    EXPECT_TRUE(waitUntil([&] {
        return !desk_.originals().contains("Fleeting keyboard") && !desk_.clones().contains("Fleeting keyboard");
    })) << desk_.describe();
    EXPECT_TRUE(becomesGrabbed());
}

}  // namespace quillmere::machine
