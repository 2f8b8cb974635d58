#include "Tests/TapService/TapServerTest.h"

namespace quillmere::tap {
namespace {

TEST_F(TapServerTest, TheFirstMessageIsHelloWithTheDeadline) {
    Program program = open(anna, "a");
    EXPECT_EQ(program.last(), ServiceMessage(Hello{500}));
}

TEST_F(TapServerTest, AVerdictThroughTheChannelDecides) {
    Program program = openWithShortcut(anna, "a");
    type("+ctrl +space");
    program.send(Verdict{program.question(), true});
    loop.run();
    type("-space +space");
    program.send(Verdict{program.question(), false});
    loop.run();
    type("-space -ctrl");
    EXPECT_EQ(machine.fakes.output, "+ctrl +space -space -ctrl");
}

TEST_F(TapServerTest, AProgramThatHangsCostsOneDeadlineAndThenItsTapIsOff) {
    Program program = openWithShortcut(anna, "a");
    type("+ctrl +space");
    EXPECT_TRUE(loop.runUntil([this] { return machine.fakes.output == "+ctrl +space"; }));
    type("-space +space -space -ctrl");
    EXPECT_EQ(machine.fakes.output, "+ctrl +space -space +space -space -ctrl");
    EXPECT_EQ(program.last(), ServiceMessage(Disabled{DisabledReason::timeout}));
    EXPECT_FALSE(isGrabbed());

    program.send(Enable{});
    loop.run();
    EXPECT_TRUE(isGrabbed());
}

TEST_F(TapServerTest, AProgramThatHangsUpGivesTheKeyboardBack) {
    Program program = openWithShortcut(anna, "a");
    type("+ctrl +space");
    program.hangUp();
    loop.run();
    EXPECT_EQ(machine.fakes.output, "+ctrl +space");
    type("-space -ctrl");
    EXPECT_FALSE(isGrabbed());
    EXPECT_EQ(server.tapCount(), 0U);
    EXPECT_TRUE(sessions.watched.empty());
}

TEST_F(TapServerTest, ClonesAreUnpluggedWithTheLastTapAndNotBefore) {
    Program program = openWithShortcut(anna, "a");
    machine.drops = 0;
    sessions.activate("b");
    EXPECT_FALSE(isGrabbed());
    EXPECT_EQ(machine.drops, 0);
    sessions.activate("a");
    EXPECT_TRUE(isGrabbed());
    type("+a");
    program.hangUp();
    loop.run();
    EXPECT_EQ(machine.drops, 0);
    type("-a");
    EXPECT_GT(machine.drops, 0);
}

TEST_F(TapServerTest, AMalformedMessageEndsThatChannel) {
    expectCutOff(Packet(5, std::byte{0}));
}

TEST_F(TapServerTest, ATruncatedMessageEndsThatChannel) {
    Packet packet = encode(Interest{});
    packet.pop_back();
    expectCutOff(packet);
}

TEST_F(TapServerTest, AnOversizedMessageEndsThatChannel) {
    Packet packet = encode(Interest{});
    packet.resize(60'000);
    expectCutOff(packet);
}

TEST_F(TapServerTest, AnEmptyMessageEndsThatChannel) {
    expectCutOff({});
}

TEST_F(TapServerTest, AMessageOfTheServiceEndsThatChannel) {
    expectCutOff(encode(Hello{500}));
}

TEST_F(TapServerTest, AVerdictOnAQuestionThatWasNeverAskedEndsThatChannel) {
    expectCutOff(encode(Verdict{1, true}));
}

TEST_F(TapServerTest, OneBadProgramDoesNotTouchTheOthers) {
    Program good = openWithShortcut(anna, "a");
    Program bad = openWithShortcut(bert, "b");
    bad.sendBytes(Packet(3, std::byte{9}));
    EXPECT_TRUE(loop.runUntil([&] { return bad.isClosed(); }));
    type("+ctrl +space");
    const std::uint32_t question = good.question();
    EXPECT_NE(question, 0U);
    good.send(Verdict{question, true});
    loop.run();
    type("-space -ctrl");
    EXPECT_EQ(machine.fakes.output, "+ctrl -ctrl");
}

TEST_F(TapServerTest, ALateVerdictIsForgiven) {
    Program program = openWithShortcut(anna, "a");
    type("+ctrl +space");
    const std::uint32_t question = program.question();
    EXPECT_TRUE(loop.runUntil([this] { return machine.fakes.output == "+ctrl +space"; }));
    program.send(Verdict{question, true});
    loop.run();
    EXPECT_FALSE(program.isClosed());
}

TEST_F(TapServerTest, AProgramThatDoesNotReadIsToldThatItsTapIsOffWhenItReadsAgain) {
    Program program = openWithShortcut(anna, "a");
    program.send(Interest{.wantsFn = true, .shortcuts = {controlSpace}});
    loop.run();
    const auto isOff = [this] {
        for (int count = 0; count < 100; ++count)
            type("+fn -fn");
        return !isGrabbed();
    };
    EXPECT_TRUE(loop.runUntil(isOff));
    EXPECT_TRUE(loop.runUntil([&] { return program.last() == ServiceMessage(Disabled{DisabledReason::timeout}); }));
}

TEST_F(TapServerTest, OnlyTheActiveSessionsTapSeesAnything) {
    Program first = openWithShortcut(anna, "a");
    Program second = openWithShortcut(bert, "b");
    type("+ctrl +space");
    first.send(Verdict{first.question(), true});
    loop.run();
    type("-space -ctrl");
    EXPECT_TRUE(second.receive().empty());

    sessions.activate("b");
    first.receive();
    type("+ctrl +space");
    second.send(Verdict{second.question(), true});
    loop.run();
    type("-space -ctrl");
    EXPECT_TRUE(first.receive().empty());

    sessions.activate("nobody's");
    second.receive();
    type("+ctrl +space -space -ctrl");
    EXPECT_TRUE(first.receive().empty());
    EXPECT_TRUE(second.receive().empty());
    EXPECT_FALSE(isGrabbed());
}

TEST_F(TapServerTest, InterestToldInTheBackgroundHoldsInFront) {
    Program program = open(bert, "b");
    program.send(Interest{.shortcuts = {controlSpace}});
    loop.run();
    EXPECT_FALSE(isGrabbed());
    sessions.activate("b");
    EXPECT_TRUE(isGrabbed());
}

TEST_F(TapServerTest, ASecondTapOfASessionTakesTheFirstOnesPlace) {
    Program first = openWithShortcut(anna, "a");
    Program second = openWithShortcut(anna, "a");
    EXPECT_TRUE(first.isClosed());
    EXPECT_EQ(server.tapCount(), 1U);
    type("+ctrl +space");
    EXPECT_NE(second.question(), 0U);
}

TEST_F(TapServerTest, AFreedTapStaysOffEvenAfterAVisitElsewhere) {
    Program program = openWithShortcut(anna, "a");
    type("+backspace +esc +enter -enter -esc -backspace");
    EXPECT_EQ(program.last(), ServiceMessage(Disabled{DisabledReason::userInput}));
    program.send(Enable{});
    program.send(Interest{.shortcuts = {controlSpace}});
    loop.run();
    sessions.activate("b");
    sessions.activate("a");
    EXPECT_FALSE(isGrabbed());
    EXPECT_FALSE(program.isClosed());

    // Another one has to wait until the user has had the keyboard for a while.
    Program next = openWithShortcut(anna, "a");
    EXPECT_FALSE(isGrabbed());
    EXPECT_TRUE(loop.runUntil([this] { return isGrabbed(); }));
}

TEST_F(TapServerTest, TheNumberOfTapsIsTold) {
    std::vector<std::size_t> counts;
    server.onTapCountChange = [&] { counts.push_back(server.tapCount()); };
    Program program = open(anna, "a");
    program.hangUp();
    loop.run();
    EXPECT_EQ(counts, (std::vector<std::size_t>{1, 0}));
}

}  // namespace
}  // namespace quillmere::tap
