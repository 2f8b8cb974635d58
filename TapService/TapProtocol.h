#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>
#include <vector>

/// The channel between the key-tap service and a program that owns an event
/// tap.
///
/// The channel is a connected SOCK_SEQPACKET socket that the service's OpenTap
/// call returns. One packet is one message. A message starts with a header of
/// four bytes and has a size fixed by its kind; integers are in the machine's
/// own byte order, and every byte without a meaning is zero:
///
/// | offset | size | header                    |
/// |--------|------|---------------------------|
/// | 0      | 1    | version, `tap::version`   |
/// | 1      | 1    | kind                      |
/// | 2      | 2    | zero                      |
///
/// From the program to the service:
///
/// | kind | message  | size | body, from offset 4                                           |
/// |------|----------|------|---------------------------------------------------------------|
/// | 1    | Interest | 1032 | everyKey u8 (0, 1), wantsFn u8 (0, 1), count u16, then 256 ×  |
/// |      |          |      | { code u16, modifiers u8, zero u8 }, zero from `count` on     |
/// | 2    | Verdict  | 12   | sequence u32 (not 0), swallow u8 (0, 1), zero × 3             |
/// | 3    | Enable   | 4    | -                                                             |
///
/// From the service to the program:
///
/// | kind | message  | size | body, from offset 4                                           |
/// |------|----------|------|---------------------------------------------------------------|
/// | 65   | Hello    | 8    | deadline u32, milliseconds; the first message                 |
/// | 66   | KeyEvent | 24   | sequence u32, time u64 (nanoseconds), code u16, type u8,      |
/// |      |          |      | flags u8, zero × 4                                            |
/// | 67   | Disabled | 8    | reason u8, zero × 3                                           |
///
/// Whatever does not have exactly this form is refused by the decoders. The
/// service then closes that channel; a program should do the same.
namespace quillmere::tap {

/// Raised by every change of a message's layout or meaning.
inline constexpr std::uint8_t version = 1;

/// How many shortcuts a program can be interested in at once.
inline constexpr std::size_t maxShortcuts = 256;

/// The largest message of either direction, in bytes.
inline constexpr std::size_t maxMessageSize = 8 + 4 * maxShortcuts;

/// One more than the largest key code (KEY_CNT of the kernel's input events).
inline constexpr std::uint16_t keyCodeLimit = 0x300;

/// The keys that modify others, as a shortcut names them and as an event
/// reports them. Left and right are one, except for the right Alt key, which
/// types characters on most layouts and counts as no modifier.
namespace Flags {
inline constexpr std::uint8_t command = 1;  ///< Super
inline constexpr std::uint8_t shift = 2;
inline constexpr std::uint8_t option = 4;  ///< left Alt
inline constexpr std::uint8_t control = 8;
inline constexpr std::uint8_t fn = 16;  ///< in events only
inline constexpr std::uint8_t modifiers = command | shift | option | control;
/// A shortcut has at least one of these. A key without any of them is a key
/// that somebody types.
inline constexpr std::uint8_t ofShortcuts = command | option | control;
}  // namespace Flags

/// A key combination in the kernel's key codes (input-event-codes.h).
struct TapShortcut {
    std::uint16_t code = 0;      ///< below `keyCodeLimit`
    std::uint8_t modifiers = 0;  ///< of `Flags::modifiers`: exactly these are held

    /// Whether the service tells it at all; what is typed it tells nobody.
    constexpr bool isToldOf() const { return (modifiers & Flags::ofShortcuts) != 0; }

    friend bool operator==(const TapShortcut&, const TapShortcut&) = default;
};

/// What the program needs to see; it replaces what was told before. A new
/// channel starts with no interest at all.
struct Interest {
    bool everyKey = false;  ///< every press waits for a verdict (a shortcut is being recorded), for 30 seconds
    bool wantsFn = false;   ///< the Fn key, and that other keys are pressed while it is down
    std::vector<TapShortcut>
        shortcuts;  ///< these presses wait for a verdict; at most `maxShortcuts`, each with Ctrl, Alt or Super

    friend bool operator==(const Interest&, const Interest&) = default;
};

/// The answer to the event with this sequence number. One for an event that
/// is no longer waiting is ignored; one for an event that never was is an
/// error.
struct Verdict {
    std::uint32_t sequence = 0;
    bool swallow = false;

    friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Turns the tap on again after `Disabled`. A new channel is enabled.
struct Enable {
    friend bool operator==(const Enable&, const Enable&) = default;
};

using ClientMessage = std::variant<Interest, Verdict, Enable>;

/// The service's first message.
struct Hello {
    std::uint32_t deadlineMilliseconds = 0;  ///< how long an event waits for its verdict

    friend bool operator==(const Hello&, const Hello&) = default;
};

enum class KeyEventKind : std::uint8_t {
    press = 1,
    repeat = 2,   ///< of a press that was told; needs no verdict
    release = 3,  ///< of a press that was told; follows what became of the press
    flags = 4,    ///< Fn, or another modifier while Fn is down, has changed; no code
    other = 5,    ///< some key of no interest was pressed while Fn is down; no code
};

/// Something that happened on a keyboard.
struct KeyEvent {
    KeyEventKind kind = KeyEventKind::press;
    std::uint16_t code = 0;      ///< the kernel's key code; press, repeat and release only
    std::uint8_t flags = 0;      ///< of `Flags`: what is held now
    std::uint32_t sequence = 0;  ///< presses only; not 0: the key waits for a verdict
    std::uint64_t time = 0;      ///< nanoseconds on the system's monotonic clock

    friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};

enum class DisabledReason : std::uint8_t {
    timeout = 1,    ///< a verdict was late, or the program did not read its events
    userInput = 2,  ///< the user has freed the keyboard (Backspace + Escape + Enter); this channel stays disabled
};

/// No more events come until `Enable`.
struct Disabled {
    DisabledReason reason = DisabledReason::timeout;

    friend bool operator==(const Disabled&, const Disabled&) = default;
};

using ServiceMessage = std::variant<Hello, KeyEvent, Disabled>;

using Packet = std::vector<std::byte>;

/// Shortcuts beyond `maxShortcuts` are left out.
Packet encode(const ClientMessage& message);
Packet encode(const ServiceMessage& message);

/// No value for anything but a whole, correct message of this version.
std::optional<ClientMessage> decodeClientMessage(std::span<const std::byte> packet);
std::optional<ServiceMessage> decodeServiceMessage(std::span<const std::byte> packet);

}  // namespace quillmere::tap
