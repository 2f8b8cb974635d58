#pragma once

#include "TapService/CloneOutput.h"
#include "TapService/OwnerLink.h"
#include "TapService/TapDevice.h"
#include "TapService/TapPorts.h"

#include <chrono>
#include <optional>

namespace quillmere::tap {

/// Which devices are open, cloned and grabbed: what the owner's wishes need and
/// no more. A device changes hands only while none of its keys is down.
///
/// To grab a device, to give it back and to close it take the kernel some ten
/// milliseconds each, in which nothing that is typed gets on. Each call here
/// therefore does so with one device at the most; `deadline` asks for the next
/// call at once as long as there are others.
class DeviceGrabs {
public:
    /// How long a grab that is no longer needed waits for the last key to go
    /// up. Ended earlier, that key would be released under the user's finger.
    static constexpr Time ungrabDeadline = std::chrono::seconds(5);
    /// How long the user who has freed the keyboards keeps them, whoever opens
    /// a tap meanwhile.
    static constexpr Time freedTime = std::chrono::seconds(3);

    /// All must outlive this.
    DeviceGrabs(KeyboardPort& keyboards, OwnerLink& owner, TapDevices& devices, CloneOutput& output)
        : keyboards_(keyboards), owner_(owner), devices_(devices), output_(output) {}

    /// Something has changed that concerns all devices.
    void unsettle();
    /// What could not be opened, cloned or grabbed gets another chance.
    void retry();
    void retryGrabs();
    /// Does the next step there is to do. Not while an event is being handled.
    void settle(Time now);
    /// The same for a device that stands between two frames, the one moment to
    /// take or to give it back.
    void settle(DeviceId id, TapDevice& device, Time now);
    /// The clone that was being made is ready, or could not be made.
    void cloneMade(TapDevice& device, bool ready);

    /// For an owner that waits for Fn alone, other keys are heard only while Fn
    /// is down. Whoever handles the press of an Fn key calls this first: what
    /// is held on any device is known then. True when keys may have come and
    /// gone unheard.
    bool hearAll();

    /// Gives everything back at once, keys down or not.
    void release(Time now);
    /// The user has freed the keyboards: nothing is grabbed until all keys are
    /// up and `freedTime` has passed.
    void free(Time now);

    /// When `settle` is needed next; a time that has passed: at once.
    std::optional<Time> deadline() const;
    /// Whether any device is grabbed.
    bool isGrabbing() const;

private:
    bool wantsOpen() const;
    bool wantsAllKeys() const;
    bool wantsGrab(const TapDevice& device) const;
    bool isAnyKeyDown() const;
    void openAll();
    void updateHearing();
    void endFreedom(Time now);

    // These return whether that took its time.
    bool settleOne(DeviceId id, TapDevice& device, Time now);
    bool settleGrab(DeviceId id, TapDevice& device, Time now);
    bool prepareClone(DeviceId id, TapDevice& device);
    bool grab(DeviceId id, TapDevice& device, Time now);
    bool endGrab(DeviceId id, TapDevice& device, Time now);

    void open(DeviceId id, TapDevice& device);
    void close(DeviceId id, TapDevice& device, Time now);
    void forgetMissedReleases(TapDevice& device, Time now);
    bool ungrab(DeviceId id, TapDevice& device, bool force);

    KeyboardPort& keyboards_;
    OwnerLink& owner_;
    TapDevices& devices_;
    CloneOutput& output_;
    bool isFreed_ = false;
    std::optional<Time> freedUntil_;  ///< no value: that time has passed, and keys were down
};

}  // namespace quillmere::tap
