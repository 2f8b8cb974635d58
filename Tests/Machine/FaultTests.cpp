#include "Tests/Machine/TapTest.h"
#include "Tests/Machine/Typist.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <tuple>
#include <utility>

// Processes that die or stop at every moment of a shortcut.
namespace quillmere::machine {

namespace {

/// How far a shortcut that the owner wants to swallow has been typed.
enum class Stage { atRest, modifierHeld, questionWaits, swallowedKeyHeld };

enum class OwnerFault { killed, stopped };
enum class ServiceFault { killed, stopped, continued, upgraded };

std::string nameOf(Stage stage) {
    constexpr std::array names{"AtRest", "WithTheModifierHeld", "WithAQuestionWaiting", "WithTheSwallowedKeyHeld"};
    return names.at(static_cast<std::size_t>(stage));
}

std::string nameOf(OwnerFault fault) {
    return fault == OwnerFault::killed ? "Killed" : "Stopped";
}

std::string nameOf(ServiceFault fault) {
    constexpr std::array names{"Killed", "Stopped", "StoppedAndContinued", "Upgraded"};
    return names.at(static_cast<std::size_t>(fault));
}

constexpr auto nameOfPair = [](const auto& info) {
    return nameOf(std::get<0>(info.param)) + nameOf(std::get<1>(info.param));
};

class FaultTest : public TapTest {
protected:
    /// Types the beginning of the shortcut.
    void reach(Stage stage) {
        listen(stage == Stage::questionWaits ? TapOwner::Answer::wait : TapOwner::Answer::swallow);
        if (stage == Stage::atRest) return;
        ASSERT_TRUE(arrives({ctrlSpaceStrokes[0]}));
        if (stage == Stage::modifierHeld) return;
        monitor().type({ctrlSpaceStrokes[1]});
        waitForQuestion();
        if (stage == Stage::questionWaits) return;
        // The owner was asked, and gives its verdict before it can be asked
        // for anything else.
        owner().answer(TapOwner::Answer::swallow);
        EXPECT_EQ(owner().hasAccess(), "");
    }

    /// Types the rest of it.
    void finish(Stage stage) {
        const std::size_t typed = stage == Stage::atRest ? 0 : stage == Stage::modifierHeld ? 1 : 2;
        const auto begin = ctrlSpaceStrokes.begin();
        monitor().type({begin + static_cast<std::ptrdiff_t>(typed), ctrlSpaceStrokes.end()});
    }

    /// Waits until something that is typed comes through, and says how long
    /// that took since `begin`.
    std::chrono::milliseconds timeUntilTypingWorks(std::chrono::steady_clock::time_point begin) {
        EXPECT_TRUE(waitUntil([&] {
            monitor().type(taps({KEY_F12}));
            return waitUntil([&] { return comesThrough(KEY_F12); }, std::chrono::milliseconds(100));
        })) << desk_.describe();
        const auto passed =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
        std::cout << "Typing worked again after " << passed.count() << " ms." << std::endl;
        return passed;
    }

    bool comesThrough(std::uint16_t code) const {
        for (const KeyStroke& stroke : desk_.strokes())
            if (stroke == KeyStroke{code, false}) return true;
        return false;
    }

    /// A new channel does what the old one did.
    void listenAgain() {
        ASSERT_TRUE(waitUntil([&] { return desk_.keysDown().empty(); })) << desk_.describe();
        // A call may still have reached the service that is just dying.
        ASSERT_TRUE(waitUntil([&] { return owner().open().empty(); }));
        listen(TapOwner::Answer::swallow);
        monitor().type(ctrlSpaceStrokes);
        EXPECT_TRUE(hasGot(ctrlStrokes));
    }
};

class OwnerFaults : public FaultTest, public testing::WithParamInterface<std::tuple<OwnerFault, Stage>> {};
class ServiceFaults : public FaultTest, public testing::WithParamInterface<std::tuple<ServiceFault, Stage>> {};

// What the service promises, and what a computer adds that is emulated and
// shares its processors with others.
constexpr std::chrono::milliseconds soon{600 + 1500};
constexpr std::chrono::milliseconds afterWatchdog{3000 + 1500};

}  // namespace

TEST_P(OwnerFaults, LoseNoKeyAndLeaveNoneDown) {
    const auto [fault, stage] = GetParam();
    reach(stage);
    const auto begin = std::chrono::steady_clock::now();
    owner().process().signal(fault == OwnerFault::killed ? SIGKILL : SIGSTOP);
    finish(stage);
    monitor().type(taps({KEY_X}));

    // Whatever was not swallowed before comes through, in order.
    const std::vector<KeyStroke> expected = stage == Stage::swallowedKeyHeld ? ctrlStrokes : ctrlSpaceStrokes;
    EXPECT_TRUE(hasGot(expected + taps({KEY_X})));
    EXPECT_LT(timeUntilTypingWorks(begin), soon);
    if (fault == OwnerFault::killed) {
        EXPECT_TRUE(becomesFree());
        return;
    }

    owner().process().signal(SIGCONT);
    owner().send(tap::Enable{});
    listen(TapOwner::Answer::swallow);
    monitor().type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlStrokes));
}

INSTANTIATE_TEST_SUITE_P(AtEveryStage, OwnerFaults,
                         testing::Combine(testing::Values(OwnerFault::killed, OwnerFault::stopped),
                                          testing::Values(Stage::atRest, Stage::modifierHeld, Stage::questionWaits,
                                                          Stage::swallowedKeyHeld)),
                         nameOfPair);

TEST_P(ServiceFaults, LeaveNoKeyDownAndGiveTheKeyboardBack) {
    const auto [fault, stage] = GetParam();
    reach(stage);
    const pid_t pid = service_.pid();
    auto begin = std::chrono::steady_clock::now();
    switch (fault) {
        case ServiceFault::killed:
            service_.signal(SIGKILL);
            break;
        case ServiceFault::stopped:
        case ServiceFault::continued:
            service_.signal(SIGSTOP);
            break;
        case ServiceFault::upgraded:
            service_.upgrade();
            // Until it has ended everything is passed on.
            begin = std::chrono::steady_clock::now();
            break;
    }
    finish(stage);
    if (fault == ServiceFault::continued) {
        EXPECT_TRUE(holdsFor([&] { return service_.pid() == pid; }, moment));
        service_.signal(SIGCONT);
    }
    EXPECT_LT(timeUntilTypingWorks(begin), fault == ServiceFault::stopped ? afterWatchdog : soon);
    EXPECT_TRUE(waitUntil([&] { return desk_.keysDown().empty(); })) << desk_.describe();

    if (fault == ServiceFault::continued) {
        EXPECT_EQ(service_.pid(), pid);
        owner().send(tap::Enable{});
        return;
    }
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    listenAgain();
    EXPECT_NE(service_.pid(), pid);
}

INSTANTIATE_TEST_SUITE_P(AtEveryStage, ServiceFaults,
                         testing::Combine(testing::Values(ServiceFault::killed, ServiceFault::stopped,
                                                          ServiceFault::continued, ServiceFault::upgraded),
                                          testing::Values(Stage::atRest, Stage::modifierHeld, Stage::questionWaits,
                                                          Stage::swallowedKeyHeld)),
                         nameOfPair);

using Upgrade = FaultTest;

TEST_F(Upgrade, LosesNoKeyThatIsTypedMeanwhile) {
    constexpr const char* name = "Busy keyboard";
    VirtualKeyboard keyboard({.name = name});
    ASSERT_TRUE(waitUntil([this] { return desk_.originals().contains(name); }));
    listen(TapOwner::Answer::swallow);
    Typist typist(keyboard);
    const auto goesThroughClone = [&] {
        const std::vector<DeskEvent> events = desk_.events();
        return !events.empty() && events.back().device == name && events.back().isFromClone;
    };
    ASSERT_TRUE(waitUntil(goesThroughClone)) << desk_.describe();
    service_.upgrade();
    ASSERT_TRUE(waitUntil([&] { return !goesThroughClone(); })) << desk_.describe();
    // The program comes back to the new one.
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    ASSERT_TRUE(waitUntil([&] { return owner().open().empty(); }));
    owner().send(tap::Interest{.shortcuts = {ctrlSpace}});
    ASSERT_TRUE(waitUntil(goesThroughClone)) << desk_.describe();
    EXPECT_TRUE(hasGot(typist.stop()));
}

using Stalled = FaultTest;

/// Puts all processes to sleep, as before the devices and the processors follow,
/// and wakes them a second later.
testing::AssertionResult sleepAndWake() {
    const std::pair<const char*, const char*> steps[] = {
        {"/sys/module/suspend/parameters/pm_test_delay", "1"},
        {"/sys/power/pm_test", "freezer"},
        {"/sys/power/state", "freeze"},
        {"/sys/power/pm_test", "none"},
    };
    for (const auto& [file, word] : steps) {
        std::ofstream stream(file);
        if (!(stream << word << std::flush)) return testing::AssertionFailure() << file << " takes no " << word;
    }
    return testing::AssertionSuccess();
}

TEST_F(Stalled, AServiceThatMissesMoreThanTheKernelKeepsForItLeavesNoKeyDown) {
    constexpr const char* name = "Fast keyboard";
    VirtualKeyboard keyboard({.name = name});
    listen(TapOwner::Answer::swallow);
    const auto goesThroughClone = [&] {
        desk_.clear();
        keyboard.type(taps({KEY_F12}));
        return waitUntil([&] { return desk_.strokes().size() == 2; }, moment) && desk_.events()[0].isFromClone;
    };
    ASSERT_TRUE(waitUntil(goesThroughClone)) << desk_.describe();
    keyboard.type({{KEY_LEFTSHIFT, true}, {KEY_LEFTCTRL, true}});
    ASSERT_TRUE(waitUntil([&] { return desk_.keysDown().size() == 2; })) << desk_.describe();

    const pid_t pid = service_.pid();
    service_.signal(SIGSTOP);
    // Far more than there is room for; the releases are among what is lost.
    keyboard.type({{KEY_LEFTSHIFT, false}, {KEY_LEFTCTRL, false}, {KEY_Z, true}});
    for (int i = 0; i < 200; ++i)
        keyboard.type(taps({KEY_A, KEY_B}));
    service_.signal(SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return desk_.keysDown() == std::set<std::uint16_t>{KEY_Z}; })) << desk_.describe();
    keyboard.type({{KEY_Z, false}});
    EXPECT_TRUE(waitUntil([&] { return desk_.keysDown().empty(); })) << desk_.describe();
    EXPECT_TRUE(waitUntil(goesThroughClone)) << desk_.describe();
    EXPECT_EQ(service_.pid(), pid);
}

TEST_F(Stalled, AComputerThatSleepsKeepsItsShortcutAndLeavesNoKeyDown) {
    listen(TapOwner::Answer::swallow);
    ASSERT_TRUE(arrives({{KEY_LEFTSHIFT, true}}));
    ASSERT_TRUE(sleepAndWake());
    desk_.clear();
    EXPECT_TRUE(arrives({{KEY_LEFTSHIFT, false}}));
    EXPECT_TRUE(becomesGrabbed());
    monitor().type(taps({KEY_A}) + ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(taps({KEY_A}) + ctrlStrokes));
    EXPECT_FALSE(owner().isClosed());
}

TEST_F(Stalled, ALogoutWhileKeysAreHeldLeavesNoneDown) {
    Service::grant(stranger);
    {
        Session other({.user = stranger, .terminal = 2});
        other.activate();
        TapOwner second(other);
        ASSERT_EQ(second.open(), "");
        second.answer(TapOwner::Answer::swallow);
        second.send(tap::Interest{.shortcuts = {ctrlSpace}});
        ASSERT_TRUE(becomesGrabbed());
        ASSERT_TRUE(arrives({{KEY_LEFTSHIFT, true}, {KEY_A, true}}));
    }
    monitor().type({{KEY_A, false}, {KEY_LEFTSHIFT, false}});
    EXPECT_TRUE(waitUntil([&] { return desk_.keysDown().empty(); })) << desk_.describe();
    Service::revoke(stranger);
    session().activate();
    EXPECT_TRUE(becomesFree());
}

}  // namespace quillmere::machine
