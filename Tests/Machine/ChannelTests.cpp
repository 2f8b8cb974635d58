#include "Tests/Machine/TapTest.h"

#include <algorithm>
#include <string>
#include <string_view>

// What an owner may say, and what becomes of one that says something else.
namespace quillmere::machine {

namespace {

class Channel : public TapTest {};

struct BadPacket {
    const char* name;
    std::string bytes;
};

void PrintTo(const BadPacket& packet, std::ostream* stream) {
    *stream << packet.name;
}

class BadChannel : public TapTest, public testing::WithParamInterface<BadPacket> {};

std::string bytes(const tap::ClientMessage& message) {
    const tap::Packet packet = tap::encode(message);
    return {reinterpret_cast<const char*>(packet.data()), packet.size()};
}

/// A correct message with one byte set to something else.
std::string spoilt(const tap::ClientMessage& message, std::size_t offset, int value) {
    std::string packet = bytes(message);
    packet.at(offset) = static_cast<char>(value);
    return packet;
}

const tap::Interest interest{.shortcuts = {ctrlSpace}};

}  // namespace

TEST_P(BadChannel, IsClosedAndTheKeyboardGivenBack) {
    const pid_t pid = service_.waitForPid();
    listen(TapOwner::Answer::swallow);
    owner().sendBytes(GetParam().bytes);
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));
    EXPECT_EQ(service_.pid(), pid);

    desk_.clear();
    ASSERT_EQ(owner().open(), "");
    listen(TapOwner::Answer::swallow);
    monitor().type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlStrokes));
}

INSTANTIATE_TEST_SUITE_P(Messages, BadChannel,
                         testing::Values(BadPacket{"OfAnotherVersion", spoilt(interest, 0, 2)},
                                         BadPacket{"OfAnUnknownKind", spoilt(interest, 1, 99)},
                                         BadPacket{"WithAByteThatIsNotZero", spoilt(interest, 2, 1)},
                                         BadPacket{"WithABooleanThatIsNone", spoilt(interest, 4, 2)},
                                         BadPacket{"WithMoreShortcutsThanFit", spoilt(interest, 7, 0x40)},
                                         BadPacket{"WithAKeyThatDoesNotExist", spoilt(interest, 9, 0x7f)},
                                         BadPacket{"WithAModifierThatDoesNotExist", spoilt(interest, 10, 0x80)},
                                         BadPacket{"ThatIsTooShort", bytes(interest).substr(0, 500)},
                                         BadPacket{"ThatIsTooLong", bytes(interest) + std::string(60'000, '\0')},
                                         BadPacket{"ThatIsOneByte", std::string(1, '\1')},
                                         BadPacket{"WithAVerdictThatWasNeverAskedFor",
                                                   bytes(tap::Verdict{4'000'000'000U, true})},
                                         BadPacket{"WithAVerdictOnNothing", spoilt(tap::Verdict{1, true}, 4, 0)}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(Channel, ThatIsFloodedIsClosedAndTypingGoesOn) {
    const pid_t pid = service_.waitForPid();
    listen(TapOwner::Answer::pass);
    owner().flood(bytes(interest));
    EXPECT_TRUE(arrives(taps({KEY_F, KEY_L, KEY_O, KEY_O, KEY_D})));
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    EXPECT_TRUE(becomesFree());
    EXPECT_EQ(service_.pid(), pid);
}

TEST_F(Channel, ThatIsNotReadIsDisabledAndTypingGoesOn) {
    listen(TapOwner::Answer::swallow);
    owner().stopReading();
    // Typing is held up once, for the verdict's deadline; after that nobody is
    // asked.
    std::vector<KeyStroke> expected;
    for (int i = 0; i < 20; ++i) {
        monitor().type(ctrlSpaceStrokes);
        expected = expected + ctrlSpaceStrokes;
        ASSERT_TRUE(waitUntil([&] { return desk_.strokes().size() == expected.size(); })) << desk_.describe();
    }
    EXPECT_TRUE(hasGot(expected));
}

TEST_F(Channel, WithoutAVerdictInTimeLetsTheKeyPassAndIsDisabledUntilTheOwnerEnablesIt) {
    listen(TapOwner::Answer::wait);
    monitor().type(ctrlSpaceStrokes + taps({KEY_X}));
    const std::uint32_t late = waitForQuestion();
    EXPECT_TRUE(hasGot(ctrlSpaceStrokes + taps({KEY_X})));
    EXPECT_TRUE(waitUntil([&] { return owner().isDisabled(); }));

    // Too late for the key, but no offence.
    owner().send(tap::Verdict{late, true});
    owner().answer(TapOwner::Answer::swallow);
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));

    owner().send(tap::Enable{});
    EXPECT_TRUE(becomesGrabbed());
    monitor().type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlStrokes));
    EXPECT_FALSE(owner().isClosed());
}

TEST_F(Channel, WaitsHalfASecondForAVerdict) {
    VirtualKeyboard keyboard({.name = "Waiting keyboard"});
    listen(TapOwner::Answer::wait);
    const auto asked = std::chrono::steady_clock::now();
    monitor().type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlSpaceStrokes));
    const auto waited = std::chrono::steady_clock::now() - asked;
    EXPECT_GE(waited, std::chrono::milliseconds(450));
    // Half a second and whatever a loaded computer adds; not the five seconds
    // of other time-outs.
    EXPECT_LT(waited, std::chrono::milliseconds(2500));
}

TEST_F(Channel, OfTheSameSessionReplacesTheEarlierOne) {
    listen(TapOwner::Answer::swallow);
    TapOwner second(session());
    ASSERT_EQ(second.open(), "");
    second.answer(TapOwner::Answer::swallow);
    second.send(interest);
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    owner().clear();
    EXPECT_TRUE(becomesGrabbed());
    monitor().type(ctrlSpaceStrokes);
    EXPECT_TRUE(hasGot(ctrlStrokes));
    EXPECT_TRUE(owner().events().empty());
    EXPECT_EQ(second.events().size(), 2U);
}

TEST_F(Channel, ThatIsClosedLeavesTheKeyboardFree) {
    listen(TapOwner::Answer::swallow);
    owner().close();
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));
}

TEST_F(Channel, IsDisabledForGoodByBackspaceEscapeAndEnterHeldTogether) {
    listen(TapOwner::Answer::wait);
    // In the middle of a question, the worst moment.
    monitor().type({{KEY_LEFTCTRL, true}, {KEY_SPACE, true}});
    waitForQuestion();
    const std::vector<KeyStroke> rescue = chord({KEY_BACKSPACE, KEY_ESC, KEY_ENTER});
    monitor().type(rescue);
    monitor().type({{KEY_SPACE, false}, {KEY_LEFTCTRL, false}});
    EXPECT_TRUE(waitUntil([&] { return owner().isDisabled(); }));
    const auto isUserInput = [&] {
        for (const tap::ServiceMessage& message : owner().messages())
            if (const auto* disabled = std::get_if<tap::Disabled>(&message))
                return disabled->reason == tap::DisabledReason::userInput;
        return false;
    };
    EXPECT_TRUE(isUserInput());
    // The last of what the clone has to say, which is read apart from the
    // keyboard's own.
    EXPECT_TRUE(waitUntil([&] {
        return std::ranges::any_of(desk_.events(), [](const DeskEvent& event) {
            return event.isFromClone && event.code == KEY_ENTER && event.value == 0;
        });
    }));
    EXPECT_TRUE(becomesFree());
    owner().send(tap::Enable{});
    owner().send(interest);
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));
    for (const DeskEvent& event : desk_.events())
        EXPECT_FALSE(event.isFromClone);
}

}  // namespace quillmere::machine
