#pragma once

#include "TapService/CloneOutput.h"
#include "TapService/DeviceGrabs.h"
#include "TapService/KeySet.h"
#include "TapService/OwnerLink.h"
#include "TapService/TapDevice.h"
#include "TapService/TapPorts.h"
#include "TapService/TapProtocol.h"

#include <chrono>
#include <deque>
#include <optional>

namespace quillmere::tap {

/// Decides what becomes of every input event: forwarded to the device's clone,
/// held back for the owner's verdict, told to the owner, or dropped.
///
/// A pure state machine: no descriptor, no clock; every call states the time,
/// and everything that follows goes out through the two ports. For each
/// grabbed device, once nothing waits, the keys down on the clone are the keys
/// down on the device without the swallowed ones.
///
/// It fails open: without a verdict in time the key passes and the tap is
/// disabled, without an owner nothing is grabbed, and Backspace + Escape +
/// Enter gives the keyboard back whatever else is going on. Given back so, it
/// stays with the user for a while, whoever opens a tap.
class TapEngine {
public:
    /// How long a key waits for its verdict.
    static constexpr Time verdictDeadline = std::chrono::milliseconds(500);
    /// Events that may wait behind one verdict; far more than half a second of
    /// any real device.
    static constexpr std::size_t queueLimit = 4096;

    explicit TapEngine(KeyboardPort& keyboards) : keyboards_(keyboards), output_(keyboards) {}

    /// A device was plugged in; `keys` is what it can send.
    void addDevice(DeviceId id, const KeySet& keys, Time now);
    /// It was pulled out. `KeyboardPort::forget` follows when it is done with.
    void removeDevice(DeviceId id, Time now);
    /// The clone that was being made is ready, or could not be made.
    void cloneMade(DeviceId id, bool ready, Time now);
    /// An event of an open device, in the device's order.
    void handleEvent(DeviceId id, const InputEvent& event, Time now);

    /// Lends the tap to `owner`, which must live until `detach`.
    void attach(OwnerPort& owner, const Interest& interest, bool enabled, Time now);
    /// Takes the tap back: everything passes, and grabs end.
    void detach(Time now);

    // For the owner of the moment; nothing without one.
    void setInterest(const Interest& interest, Time now);
    void enable(Time now);
    /// One for an event that does not wait (any more) is ignored.
    void verdict(std::uint32_t sequence, bool swallow, Time now);
    bool isEnabled() const { return owner_.isEnabled(); }
    /// The number of the last question; 0 before the first.
    std::uint32_t lastSequence() const { return sequence_; }
    /// Whether this question is the one that waits for its verdict.
    bool awaits(std::uint32_t sequence) const { return pending_ && pending_->sequence == sequence; }

    /// When `tick` is needed next; a time that has passed: at once, but after
    /// what the keyboards have to say. No value: not until something else
    /// happens.
    std::optional<Time> deadline() const;
    void tick(Time now);

    /// Ends every grab at once, keys down or not, and the ownership with it.
    void releaseEverything(Time now);

    /// Whether any device is grabbed.
    bool isGrabbing() const { return grabs_.isGrabbing(); }

private:
    struct Pending {
        DeviceId device;
        InputEvent event;
        std::uint32_t sequence;
        Time deadline;
    };
    struct Queued {
        DeviceId device;
        std::optional<InputEvent> event;  ///< none: the device was removed
    };

    TapDevice* find(DeviceId id);

    void handle(DeviceId id, TapDevice& device, const InputEvent& event, Time now);
    void handleKey(DeviceId id, TapDevice& device, const InputEvent& event, Time now);
    void handlePress(DeviceId id, TapDevice& device, const InputEvent& event, Time now);
    void handleRelease(DeviceId id, TapDevice& device, const InputEvent& event);
    void handleRepeat(TapDevice& device, const InputEvent& event);
    void finishRemoval(DeviceId id, Time now);
    void drain(Time now);

    void ask(DeviceId id, TapDevice& device, const InputEvent& event, Time now);
    void settle(bool swallow, Time now);
    void forgetTold();
    void panic(Time now);
    bool isPanicChord() const;
    void dropOwner(Time now);
    /// After anything that may have changed which devices are to be open,
    /// cloned and grabbed.
    void settleDevices(Time now);

    KeyboardPort& keyboards_;
    OwnerLink owner_;
    TapDevices devices_;
    CloneOutput output_;
    DeviceGrabs grabs_{keyboards_, owner_, devices_, output_};
    std::optional<Pending> pending_;
    std::deque<Queued> queue_;
    std::uint32_t sequence_ = 0;
};

}  // namespace quillmere::tap
