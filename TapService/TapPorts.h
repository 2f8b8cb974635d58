#pragma once

#include "TapService/KeySet.h"
#include "TapService/TapProtocol.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace quillmere::tap {

/// One input device, as long as it is plugged in.
using DeviceId = std::uint32_t;

/// An instant on the system's monotonic clock.
using Time = std::chrono::nanoseconds;

/// One event of an input device in the kernel's numbers (input-event-codes.h).
struct InputEvent {
    std::uint16_t type = 0;
    std::uint16_t code = 0;
    std::int32_t value = 0;
    Time time{};

    friend bool operator==(const InputEvent&, const InputEvent&) = default;
};

/// How far a device's clone is.
enum class CloneState { failed, making, ready };

/// What the engine does with the input devices. None of these may call the
/// engine back.
class KeyboardPort {
public:
    KeyboardPort() = default;
    KeyboardPort(const KeyboardPort&) = delete;
    KeyboardPort& operator=(const KeyboardPort&) = delete;
    virtual ~KeyboardPort() = default;

    /// Begins to read the device; returns the keys that are down, no value
    /// when it cannot be read.
    virtual std::optional<KeySet> open(DeviceId device) = 0;
    virtual void close(DeviceId device) = 0;

    // Only of an open device; one that was just opened is heard in full.

    /// From now on no event of the device comes here but its Fn keys', so that
    /// what is typed wakes nobody. It has no key down.
    virtual void hearFnOnly(DeviceId device) = 0;
    /// Every event comes again; returns the keys that are down.
    virtual KeySet hearAll(DeviceId device) = 0;

    /// Makes the virtual device that stands in for a grabbed one, unless it is
    /// there. While it is being made the desktop has not yet taken it up, and
    /// a key sent through it would be lost.
    virtual CloneState prepareClone(DeviceId device) = 0;

    /// Takes the device away from everybody else; returns the instant from
    /// which on its events come here only, no value when that is not possible
    /// now (another program has it, a key is down, an event was not yet read).
    virtual std::optional<Time> grab(DeviceId device) = 0;
    /// Gives it back; returns the instant from which on everybody gets its
    /// events again, no value when an event was not yet read. With `force`
    /// it is always given back.
    virtual std::optional<Time> ungrab(DeviceId device, bool force) = 0;

    /// Sends an event through the clone.
    virtual void forward(DeviceId device, const InputEvent& event) = 0;

    /// The device has gone, and what its clone held is released.
    virtual void forget(DeviceId device) = 0;
};

/// The program that owns the tap. None of these may call the engine back.
class OwnerPort {
public:
    OwnerPort() = default;
    OwnerPort(const OwnerPort&) = delete;
    OwnerPort& operator=(const OwnerPort&) = delete;
    virtual ~OwnerPort() = default;

    /// False when the program cannot take it (it does not read its events).
    virtual bool tell(const KeyEvent& event) = 0;
    virtual void tellDisabled(DisabledReason reason) = 0;
};

}  // namespace quillmere::tap
