#include "Tests/Desktop/DesktopTest.h"

#include "Tests/Support/StoppedMainThread.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace quillmere::support {

namespace {

class SafetyTest : public DesktopTest {
protected:
    /// Whether the server holds no key for pressed.
    bool isEveryKeyUp() {
        std::array<char, 32> pressed{};
        XQueryKeymap(desktop().connection().display(), pressed.data());
        return std::ranges::all_of(pressed, [](char byte) { return byte == 0; });
    }

    /// Types a sentence with the shortcut in it, which must arrive complete.
    void expectEverythingPasses() {
        witness().clear();
        typist().tap(keys::a);
        pressShortcut();
        typist().tap(keys::d);
        waitForEverythingTyped();
        EXPECT_EQ(witness().presses(keys::a), 1U);
        EXPECT_EQ(witness().presses(keys::space), 1U);
        EXPECT_EQ(witness().presses(keys::d), 1U);
        EXPECT_TRUE(waitUntil([this] { return isEveryKeyUp(); }));
    }

    /// Waits until the program's main thread has done all it had to do.
    void waitForMainThread() { ASSERT_FALSE(tray().openMenu().empty()); }

    /// A number that the kernel tells of the process that guards the tap, as
    /// "Pss:" in "smaps_rollup"; no value without such a process.
    std::optional<long> ofGuard(const std::string& file, const std::string& word) {
        const std::string process = "/proc/" + std::to_string(program().process().pid());
        pid_t guard = 0;
        for (const auto& thread : std::filesystem::directory_iterator(process + "/task"))
            std::ifstream(thread.path() / "children") >> guard;
        std::ifstream stream("/proc/" + std::to_string(guard) + "/" + file);
        for (std::string found; stream >> found;)
            if (long number = 0; found == word && stream >> number) return number;
        return std::nullopt;
    }

    bool waitForState(char state) {
        return waitUntil([this, state] { return program().process().state() == state; });
    }
};

TEST_F(SafetyTest, WithTheMainThreadBlockedKeysFlowAgainAndShortcutsWorkAfterwards) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(program().waitForTrayItem());
    {
        const StoppedMainThread stopped(program().process().pid());
        expectEverythingPasses();
        expectEverythingPasses();
    }
    ASSERT_NO_FATAL_FAILURE(waitForMainThread());
    EXPECT_EQ(desktop().server().group(), 0) << "a press that passed does not switch later";
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    EXPECT_TRUE(waitUntil([this] { return isEveryKeyUp(); }));
}

TEST_F(SafetyTest, TypingWithoutTheShortcutNeverWaitsForTheMainThread) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    const StoppedMainThread stopped(program().process().pid());
    Strokes strokes;
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        strokes.tap(keys::a).tap(keys::s);
        expected += "as";
    }
    typist().play(strokes);
    waitForEverythingTyped();
    EXPECT_EQ(witness().text(), expected + "x");
}

TEST_F(SafetyTest, AStopFromTheTerminalFreesTheKeyboardAndContinuingTakesItBack) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    program().process().signal(SIGTSTP);
    ASSERT_TRUE(waitForState('T'));
    EXPECT_FALSE(program().holdsGrab(keys::space, controlAltBits));
    expectEverythingPasses();
    program().process().signal(SIGCONT);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

TEST_F(SafetyTest, StoppingAndContinuingManyTimesLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    for (int i = 0; i < 5; ++i) {
        program().process().signal(SIGTSTP);
        ASSERT_TRUE(waitForState('T'));
        program().process().signal(SIGCONT);
        ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    }
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
}

TEST_F(SafetyTest, AStopWhileTheShortcutIsHeldLeavesNoKeyStuck) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForGroup(1));
    program().process().signal(SIGTSTP);
    ASSERT_TRUE(waitForState('T'));
    typist().play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    expectEverythingPasses();
    program().process().signal(SIGCONT);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
}

TEST_F(SafetyTest, AKilledProgramFreesTheKeyboardAtOnce) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    killProgram();
    expectEverythingPasses();
}

TEST_F(SafetyTest, AKillWhileTheShortcutIsHeldLeavesNoKeyStuck) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    typist().play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    ASSERT_TRUE(waitForGroup(1));
    killProgram();
    typist().play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    expectEverythingPasses();
}

TEST_F(SafetyTest, AKillInTheMiddleOfABurstLosesNoLetter) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    Strokes strokes;
    constexpr std::size_t rounds = 200;
    for (std::size_t i = 0; i < rounds; ++i)
        strokes.chord(controlAlt, keys::space).tap(keys::z);
    typist().play(strokes);
    ASSERT_TRUE(waitUntil([&] { return witness().presses(keys::z) > 5; }));
    killProgram();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::z), rounds);
    EXPECT_TRUE(waitUntil([this] { return isEveryKeyUp(); }));
}

TEST_F(SafetyTest, AKillOfAHardStoppedProgramFreesTheKeyboard) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    program().process().signal(SIGSTOP);
    ASSERT_TRUE(waitForState('T'));
    pressShortcut();
    killProgram();
    waitForEverythingTyped();
    expectEverythingPasses();
}

TEST_F(SafetyTest, AHardStoppedProgramLosesTheKeyboardAndContinuingTakesItBack) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    program().process().signal(SIGSTOP);
    ASSERT_TRUE(waitForState('T'));
    // The shortcut holds the keyboard until its guard has waited long enough;
    // nobody gets that one.
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_TRUE(waitUntil([this] { return isEveryKeyUp(); }));
    expectEverythingPasses();
    program().process().signal(SIGCONT);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    EXPECT_EQ(desktop().server().group(), 1) << "what was pressed meanwhile switches nothing later";
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
}

TEST_F(SafetyTest, TheGuardOfTheTapIsSmallAndSleepsThroughOrdinaryTyping) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(program().waitForTrayItem());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    const auto wakeUps = [this] { return ofGuard("status", "voluntary_ctxt_switches:"); };
    const auto isAtRest = [&] {
        const auto before = wakeUps();
        return before && holdsFor([&] { return wakeUps() == before; }, std::chrono::milliseconds(1000));
    };
    ASSERT_TRUE(waitUntil(isAtRest));
    const auto before = wakeUps();
    for (int i = 0; i < 20; ++i)
        typist().tap(keys::a);
    waitForEverythingTyped();
    EXPECT_EQ(wakeUps(), before);
    const auto memory = ofGuard("smaps_rollup", "Pss:");
    ASSERT_TRUE(memory);
    EXPECT_LT(*memory, 1024);
}

TEST_F(SafetyTest, WithoutASessionBusTheShortcutStillSwitches) {
    startDesktop({.hasTray = false});
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram({.additions = {{"DBUS_SESSION_BUS_ADDRESS", "disabled:"}}, .prepare = {}}));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    EXPECT_TRUE(program().waitForPlate());
}

class ChangingLayoutsTest : public SafetyTest {};

TEST_F(ChangingLayoutsTest, ASourceThatIsGoneSwallowsTheKeyAndNothingElse) {
    ASSERT_NO_FATAL_FAILURE(startEverything({.layouts = "us,ua"}));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    witness().clear();
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_FALSE(witness().saw(keys::space));
    EXPECT_TRUE(witness().groups().empty());
}

TEST_F(ChangingLayoutsTest, ALayoutThatWasAddedIsUsedByTheNextPress) {
    ASSERT_NO_FATAL_FAILURE(startEverything({.layouts = "us,ua"}));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    desktop().server().setLayouts("us,ua,de");
    desktop().server().setGroup(1);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
}

TEST_F(ChangingLayoutsTest, ALayoutThatWasRemovedIsNotUsed) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    desktop().server().setLayouts("us,de");
    desktop().server().setGroup(1);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(0));
}

TEST_F(ChangingLayoutsTest, OtherPlacesOfTheLayoutsAreUsedByTheNextPress) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    desktop().server().setLayouts("de,fr,ua,us");
    desktop().server().setGroup(3);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    for (const int group : {2, 0, 3})
        ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(group));
}

TEST_F(ChangingLayoutsTest, TypingRightThroughAChangeLosesNoLetter) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    for (const char* layouts : {"us,de", "us", "us,ua,de,fr", "us,ua,de"}) {
        typist().tap(keys::a);
        desktop().server().setLayouts(layouts);
        typist().tap(keys::a);
    }
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::a), 8U);
    desktop().server().setGroup(0);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

// What does not wake it can neither be slowed down by it nor be known to it.
TEST_F(SafetyTest, OrdinaryTypingDoesNotWakeTheProgram) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(program().waitForTrayItem());
    waitForEverythingTyped();
    const auto isAtRest = [this] {
        const long before = program().process().wakeUps();
        return holdsFor([&] { return program().process().wakeUps() == before; }, std::chrono::milliseconds(300));
    };
    ASSERT_TRUE(waitUntil(isAtRest));
    const long before = program().process().wakeUps();
    Strokes strokes;
    for (int i = 0; i < 10; ++i)
        strokes.tap(keys::a).tap(keys::space).tap(keys::z);
    typist().playByHand(strokes);
    waitForEverythingTyped();
    EXPECT_LT(program().process().wakeUps() - before, 10);
}

class OtherProgramsTest : public SafetyTest {};

TEST_F(OtherProgramsTest, AShortcutThatAnotherProgramHoldsStaysItsOwn) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    ASSERT_TRUE(witness().grabKey(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
    ASSERT_NO_FATAL_FAILURE(waitForMainThread());
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
    EXPECT_TRUE(program().process().isRunning());
}

TEST_F(OtherProgramsTest, UnderAnOpenMenuThePressSwitchesAndTheMenuGetsItToo) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(witness().grabKeyboard());
    typist().playByHand(Strokes().chord(controlAlt, keys::space));
    ASSERT_TRUE(waitForGroup(1));
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
    witness().ungrabKeyboard();
    witness().clear();
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    waitForEverythingTyped();
    EXPECT_FALSE(witness().saw(keys::space));
}

}  // namespace

}  // namespace quillmere::support
