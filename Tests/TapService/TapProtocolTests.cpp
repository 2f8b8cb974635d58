#include "TapService/TapProtocol.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

namespace quillmere::tap {
namespace {

const Interest full{true, true, std::vector<TapShortcut>(maxShortcuts, TapShortcut{KEY_MAX, Flags::modifiers})};

TEST(TapProtocol, EveryClientMessageComesBackAsItWas) {
    const ClientMessage messages[] = {
        Interest{},
        Interest{.wantsFn = true, .shortcuts = {{KEY_SPACE, Flags::control}, {KEY_K, Flags::command | Flags::shift}}},
        full,
        Verdict{1, true},
        Verdict{0xFFFFFFFF, false},
        Enable{},
    };
    for (const ClientMessage& message : messages) {
        const Packet packet = encode(message);
        EXPECT_LE(packet.size(), maxMessageSize);
        EXPECT_EQ(decodeClientMessage(packet), message);
        EXPECT_EQ(decodeServiceMessage(packet), std::nullopt);
    }
}

TEST(TapProtocol, EveryServiceMessageComesBackAsItWas) {
    const ServiceMessage messages[] = {
        Hello{500},
        KeyEvent{KeyEventKind::press, KEY_SPACE, Flags::control | Flags::fn, 7, 0xFFFFFFFFFFFFFFFF},
        KeyEvent{KeyEventKind::press, KEY_SPACE, 0, 0, 1},
        KeyEvent{KeyEventKind::repeat, KEY_MAX, 0, 0, 1},
        KeyEvent{KeyEventKind::release, KEY_A, 0, 0, 1},
        KeyEvent{KeyEventKind::flags, 0, Flags::fn, 0, 1},
        KeyEvent{KeyEventKind::other, 0, Flags::fn, 0, 1},
        Disabled{DisabledReason::timeout},
        Disabled{DisabledReason::userInput},
    };
    for (const ServiceMessage& message : messages) {
        const Packet packet = encode(message);
        EXPECT_LE(packet.size(), maxMessageSize);
        EXPECT_EQ(decodeServiceMessage(packet), message);
        EXPECT_EQ(decodeClientMessage(packet), std::nullopt);
    }
}

TEST(TapProtocol, TheLayoutIsTheDocumentedOne) {
    const auto sizeOf = [](const auto& message) { return encode(message).size(); };
    EXPECT_EQ(sizeOf(Interest{}), 1032U);
    EXPECT_EQ(sizeOf(Verdict{}), 12U);
    EXPECT_EQ(sizeOf(Enable{}), 4U);
    EXPECT_EQ(sizeOf(Hello{}), 8U);
    EXPECT_EQ(sizeOf(KeyEvent{}), 24U);
    EXPECT_EQ(sizeOf(Disabled{}), 8U);
    const Packet verdict = encode(Verdict{1, true});
    EXPECT_EQ(verdict[0], std::byte{version});
    EXPECT_EQ(verdict[1], std::byte{2});
    EXPECT_EQ(verdict[8], std::byte{1});
}

TEST(TapProtocol, MoreShortcutsThanThereIsRoomForAreLeftOut) {
    Interest interest = full;
    interest.shortcuts.push_back({KEY_A, Flags::control});
    EXPECT_EQ(decodeClientMessage(encode(interest)), ClientMessage(full));
}

struct Damage {
    const char* title;
    ClientMessage message;
    std::size_t offset;
    std::uint8_t value;
};

TEST(TapProtocol, ADamagedClientMessageIsRefused) {
    const Interest one{.shortcuts = {{KEY_SPACE, Flags::control}}};
    const Damage damages[] = {
        {"another version", Enable{}, 0, version + 1},
        {"no kind", Enable{}, 1, 0},
        {"an unknown kind", Enable{}, 1, 4},
        {"a kind of another size", Enable{}, 1, 2},
        {"a message of the service", Enable{}, 1, 67},
        {"a reserved byte of the header", Enable{}, 3, 1},
        {"no sequence number", Verdict{1, true}, 4, 0},
        {"a verdict that is neither", Verdict{1, true}, 8, 2},
        {"a reserved byte of a verdict", Verdict{1, true}, 11, 1},
        {"a recording that is neither", one, 4, 2},
        {"a wish that is neither", one, 5, 255},
        {"too many shortcuts", one, 7, 2},
        {"a code that no key has", one, 9, 3},
        {"an unknown modifier", one, 10, Flags::fn},
        {"a reserved byte of a shortcut", one, 11, 1},
        {"something after the last shortcut", one, 12, 1},
        {"something at the very end", one, 1031, 1},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.title);
        Packet packet = encode(damage.message);
        ASSERT_TRUE(decodeClientMessage(packet).has_value());
        packet[damage.offset] = std::byte{damage.value};
        EXPECT_EQ(decodeClientMessage(packet), std::nullopt);
    }
}

TEST(TapProtocol, AMessageOfAnyOtherLengthIsRefused) {
    for (const ClientMessage& message :
         {ClientMessage(full), ClientMessage(Verdict{1, true}), ClientMessage(Enable{})}) {
        Packet packet = encode(message);
        packet.push_back(std::byte{0});
        EXPECT_EQ(decodeClientMessage(packet), std::nullopt);
        for (packet.pop_back(); !packet.empty();) {
            packet.pop_back();
            EXPECT_EQ(decodeClientMessage(packet), std::nullopt) << packet.size();
        }
    }
}

TEST(TapProtocol, ADamagedServiceMessageIsRefused) {
    const KeyEvent press{KeyEventKind::press, KEY_SPACE, Flags::control, 7, 1};
    const KeyEvent other{KeyEventKind::other, 0, Flags::fn, 0, 1};
    const struct {
        const char* title;
        ServiceMessage message;
        std::size_t offset;
        std::uint8_t value;
    } damages[] = {
        {"another version", Hello{500}, 0, 0},
        {"a code that no key has", press, 17, 3},
        {"no kind of event", press, 18, 0},
        {"an unknown kind of event", press, 18, 6},
        {"a question that is no press", press, 18, 3},
        {"an unknown flag", press, 19, 32},
        {"a reserved byte", press, 20, 1},
        {"a code where none may be told", other, 16, KEY_A},
        {"no reason", Disabled{}, 4, 0},
        {"an unknown reason", Disabled{}, 4, 3},
    };
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.title);
        Packet packet = encode(damage.message);
        ASSERT_TRUE(decodeServiceMessage(packet).has_value());
        packet[damage.offset] = std::byte{damage.value};
        EXPECT_EQ(decodeServiceMessage(packet), std::nullopt);
    }
}

}  // namespace
}  // namespace quillmere::tap
