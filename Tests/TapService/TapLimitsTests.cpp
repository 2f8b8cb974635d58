#include "TapService/Clock.h"
#include "Tests/TapService/TapServerTest.h"

#include <algorithm>
#include <string>

// What a program does not get, however it asks.
namespace quillmere::tap {
namespace {

using TapLimits = TapServerTest;

TEST_F(TapLimits, ALockedSessionIsToldNothingWhateverItsInterest) {
    Program program = open(anna, "a");
    program.send(Interest{.everyKey = true, .wantsFn = true, .shortcuts = {controlSpace}});
    loop.run();
    EXPECT_TRUE(isGrabbed());
    sessions.lock("a", true);
    loop.run();
    EXPECT_FALSE(isGrabbed());
    program.receive();
    type("+a -a +ctrl +space -space -ctrl +fn +b -b -fn");
    EXPECT_TRUE(program.receive().empty());
    sessions.lock("a", false);
    loop.run();
    EXPECT_TRUE(isGrabbed());
}

TEST_F(TapLimits, AQuestionThatIsOpenWhenTheScreenLocksIsSettled) {
    Program program = openWithShortcut(anna, "a");
    type("+ctrl +space");
    const std::uint32_t question = program.question();
    EXPECT_NE(question, 0U);
    sessions.lock("a", true);
    EXPECT_EQ(machine.fakes.output, "+ctrl +space");
    program.send(Verdict{question, true});
    loop.run();
    type("-space -ctrl");
    EXPECT_EQ(machine.fakes.output, "+ctrl +space -space -ctrl");
    EXPECT_FALSE(program.isClosed());
}

TEST_F(TapLimits, ATapThatIsOpenedBehindALockScreenIsToldNothing) {
    sessions.sessions.at("a").isLocked = true;
    Program program = openWithShortcut(anna, "a");
    EXPECT_FALSE(isGrabbed());
    type("+ctrl +space -space -ctrl");
    EXPECT_TRUE(program.receive().empty());
}

TEST_F(TapLimits, KeysThatAreTypedAreNoShortcuts) {
    Program program = open(anna, "a");
    Interest everything;
    for (std::uint16_t code = KEY_ESC; code < KEY_ESC + 114; ++code) {
        everything.shortcuts.push_back({code, 0});
        everything.shortcuts.push_back({code, Flags::shift});
    }
    program.send(everything);
    loop.run();
    program.receive();
    EXPECT_FALSE(isGrabbed());
    type("+a -a +shift +b -b -shift +space -space");
    EXPECT_TRUE(program.receive().empty());
    EXPECT_FALSE(program.isClosed());
}

TEST_F(TapLimits, ARecordingEndsByItselfAndTheShortcutsStay) {
    Program program = open(anna, "a");
    program.send(Interest{.everyKey = true, .shortcuts = {controlSpace}});
    loop.run();
    program.receive();
    const auto isOver = [&] {
        type("+k");
        const std::uint32_t question = program.question();
        if (question != 0) program.send(Verdict{question, false});
        loop.run();
        type("-k");
        return question == 0;
    };
    EXPECT_TRUE(loop.runUntil(isOver));
    type("+ctrl +space");
    EXPECT_NE(program.question(), 0U);
}

TEST_F(TapLimits, ARecordingGoesOnForAProgramThatAsksAgain) {
    Program program = open(anna, "a");
    for (int count = 0; count < 3; ++count) {
        program.send(Interest{.everyKey = true});
        EXPECT_TRUE(loop.runUntil([this] { return isGrabbed(); }));
        EXPECT_TRUE(loop.runUntil([this] { return !isGrabbed(); }));
    }
    EXPECT_FALSE(program.isClosed());
}

TEST_F(TapLimits, ARecordingOfASessionInTheBackgroundEndsToo) {
    Program program = open(anna, "a");
    program.send(Interest{.everyKey = true});
    loop.run();
    sessions.activate("b");
    const Time end = monotonicNow() + 2 * recordingLimit;
    EXPECT_TRUE(loop.runUntil([end] { return monotonicNow() > end; }));
    sessions.activate("a");
    loop.run();
    EXPECT_FALSE(isGrabbed());
}

TEST_F(TapLimits, TheJournalTellsWhoRecordsAndIsNotFilledByIt) {
    testing::internal::CaptureStderr();
    for (int count = 0; count < 3; ++count) {
        Program program = open(anna, "a");
        program.send(Interest{.everyKey = true});
        program.send(Interest{.everyKey = true});
        loop.run();
    }
    const std::string journal = testing::internal::GetCapturedStderr();
    EXPECT_NE(journal.find("User 1000 records a shortcut"), std::string::npos) << journal;
    EXPECT_EQ(std::ranges::count(journal, '\n'), 1) << journal;
}

TEST_F(TapLimits, OpeningAnotherTapBringsNoFreshBudget) {
    const Packet enable = encode(Enable{});
    int taken = 0;
    for (int tap = 0; tap < 20; ++tap) {
        Program program = open(anna, "a");
        for (int count = 0; count < 200 && !program.isClosed(); ++count) {
            taken += program.tryToSend(enable) ? 1 : 0;
            loop.run();
        }
    }
    // One budget of 256, what comes back meanwhile, and the one message that
    // ends each channel.
    EXPECT_LT(taken, 1000);
    Program other = openWithShortcut(bert, "b");
    EXPECT_FALSE(other.isClosed());
}

TEST_F(TapLimits, AUserOpensSoManyTapsAndNoMore) {
    int count = 0;
    while (count < 1000 && server.payForTap(anna))
        ++count;
    EXPECT_GE(count, 16);
    EXPECT_LT(count, 100);
    EXPECT_TRUE(server.payForTap(bert));
}

TEST_F(TapLimits, TheTapEndsWithItsSession) {
    Program first = openWithShortcut(anna, "a");
    Program second = openWithShortcut(bert, "b");
    sessions.sessions.erase("a");
    sessions.onChange();
    EXPECT_TRUE(first.isClosed());
    EXPECT_FALSE(second.isClosed());
    EXPECT_FALSE(isGrabbed());
}

TEST_F(TapLimits, AUserWithoutAGrantLosesTheTapAtOnce) {
    Program first = openWithShortcut(anna, "a");
    Program second = openWithShortcut(bert, "b");
    server.closeTaps([](uid_t user) { return user != anna; });
    EXPECT_TRUE(first.isClosed());
    EXPECT_FALSE(second.isClosed());
    EXPECT_FALSE(isGrabbed());
}

TEST_F(TapLimits, AFloodEndsThatChannel) {
    Program program = openWithShortcut(anna, "a");
    const Packet enable = encode(Enable{});
    for (int count = 0; count < 2000 && !program.isClosed(); ++count) {
        program.tryToSend(enable);
        sd_event_run(loop.get(), 0);
    }
    EXPECT_TRUE(program.isClosed());
    EXPECT_FALSE(isGrabbed());
}

TEST_F(TapLimits, AFloodOfVerdictsEndsThatChannel) {
    Program program = openWithShortcut(anna, "a");
    type("+ctrl +space");
    const Packet verdict = encode(Verdict{program.question(), true});
    for (int count = 0; count < 2000 && !program.isClosed(); ++count) {
        program.tryToSend(verdict);
        sd_event_run(loop.get(), 0);
    }
    EXPECT_TRUE(program.isClosed());
    type("-space -ctrl");
    EXPECT_EQ(machine.fakes.output, "+ctrl -ctrl");
}

}  // namespace
}  // namespace quillmere::tap
