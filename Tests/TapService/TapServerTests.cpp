#include "TapService/TapServer.h"

#include "Tests/TapService/FakeMachine.h"
#include "Tests/TapService/FakeSessions.h"
#include "Tests/TapService/TapLoop.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>
#include <sys/socket.h>

#include <array>

namespace quillmere::tap {
namespace {

constexpr DeviceId keyboard = 1;
constexpr uid_t anna = 1000;
constexpr uid_t bert = 1001;
const TapShortcut controlSpace{KEY_SPACE, Flags::control};

/// A program at its end of a channel.
class Program {
public:
    explicit Program(FileDescriptor file) : file_(std::move(file)) {}

    void send(const ClientMessage& message) { sendBytes(encode(message)); }
    void sendBytes(const Packet& packet) { ::send(file_.get(), packet.data(), packet.size(), MSG_NOSIGNAL); }
    bool tryToSend(const Packet& packet) {
        return ::send(file_.get(), packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
    }
    void hangUp() { file_.reset(); }

    /// Everything that has come since the last call.
    std::vector<ServiceMessage> receive() {
        std::vector<ServiceMessage> messages;
        std::array<std::byte, maxMessageSize> buffer{};
        ssize_t size = 0;
        while ((size = ::recv(file_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0) {
            messages.push_back(decodeServiceMessage(std::span(buffer).first(static_cast<std::size_t>(size))).value());
        }
        isClosed_ = isClosed_ || size == 0;
        return messages;
    }
    std::optional<ServiceMessage> last() {
        const auto messages = receive();
        return messages.empty() ? std::nullopt : std::optional(messages.back());
    }
    std::uint32_t question() {
        const auto message = last();
        const auto* event = message ? std::get_if<KeyEvent>(&*message) : nullptr;
        return event != nullptr ? event->sequence : 0;
    }
    bool isClosed() {
        receive();
        return isClosed_;
    }

private:
    FileDescriptor file_;
    bool isClosed_ = false;
};

class TapServerTest : public testing::Test {
protected:
    TapServerTest() {
        sessions.sessions = {{"a", {anna, true, false}}, {"b", {bert, false, false}}};
        EXPECT_TRUE(server.start());
        machine.plug(keyboard);
    }
    ~TapServerTest() override { EXPECT_EQ(machine.fakes.faults, std::vector<std::string>{}); }

    Program open(uid_t user, const std::string& session) { return Program(server.openTap(user, session)); }
    Program openWithShortcut(uid_t user, const std::string& session) {
        Program program = open(user, session);
        program.send(Interest{.shortcuts = {controlSpace}});
        loop.run();
        program.receive();
        return program;
    }
    void type(const std::string& words) { machine.type(keyboard, words); }
    bool isGrabbed() { return machine.keyboard(keyboard).isGrabbed; }
    void expectCutOff(const Packet& packet) {
        Program program = openWithShortcut(anna, "a");
        EXPECT_TRUE(isGrabbed());
        program.sendBytes(packet);
        EXPECT_TRUE(loop.runUntil([&] { return program.isClosed(); }));
        EXPECT_FALSE(isGrabbed());
        EXPECT_EQ(server.tapCount(), 0U);
    }

    TapLoop loop;
    FakeMachine machine;
    FakeSessions sessions;
    TapServer server{loop.get(), machine, sessions};
};

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

TEST_F(TapServerTest, AFloodEndsThatChannel) {
    Program program = openWithShortcut(anna, "a");
    const Packet enable = encode(Enable{});
    for (int count = 0; count < 2000 && !program.isClosed(); ++count) {
        program.tryToSend(enable);
        sd_event_run(loop.get(), 0);
    }
    EXPECT_TRUE(program.isClosed());
    EXPECT_FALSE(isGrabbed());
}

TEST_F(TapServerTest, AFloodOfVerdictsEndsThatChannel) {
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

TEST_F(TapServerTest, ALockedSessionRecordsNothing) {
    Program program = open(anna, "a");
    program.send(Interest{.everyKey = true});
    loop.run();
    EXPECT_TRUE(isGrabbed());
    sessions.lock("a", true);
    EXPECT_FALSE(isGrabbed());
    program.receive();
    type("+a -a");
    EXPECT_TRUE(program.receive().empty());
    sessions.lock("a", false);
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

TEST_F(TapServerTest, AUserWithoutAGrantLosesTheTapAtOnce) {
    Program first = openWithShortcut(anna, "a");
    Program second = openWithShortcut(bert, "b");
    server.closeTaps([](uid_t user) { return user != anna; });
    EXPECT_TRUE(first.isClosed());
    EXPECT_FALSE(second.isClosed());
    EXPECT_FALSE(isGrabbed());
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

    Program next = openWithShortcut(anna, "a");
    EXPECT_TRUE(isGrabbed());
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
