#pragma once

#include "TapService/KeyRole.h"
#include "TapService/KeySet.h"
#include "TapService/TapPorts.h"

#include <cstddef>
#include <map>
#include <optional>

namespace quillmere::tap {

/// What the engine knows of one device. Raw state runs ahead of the rest while
/// a verdict is awaited and events queue up behind it.
struct TapDevice {
    enum class Clone { none, making, ready, failed };

    explicit TapDevice(const KeySet& keys) : keys(keys) {
        for (std::uint16_t code = 0; code < keyCodeLimit; ++code) {
            isTyping = isTyping || (keys.test(code) && isTypingKey(code));
            hasFn = hasFn || (keys.test(code) && roleOf(code) == KeyRole::fn);
        }
    }

    KeySet keys;  ///< what it can send
    bool isTyping = false;
    bool hasFn = false;

    bool isOpen = false;
    bool cannotOpen = false;
    bool isHeardInFull = true;  ///< or its Fn keys only
    bool isGone = false;
    bool isUnsettled = true;  ///< it may not be as open, cloned and grabbed as it should be
    Clone clone = Clone::none;
    bool isGrabbed = false;
    bool grabRefused = false;
    /// From and until when its events come here only.
    Time grabbedSince = Time::max();
    Time grabbedUntil = Time::min();
    /// When the grab ends even though a key is down.
    std::optional<Time> ungrabBy;

    KeySet down;                     ///< as the device says
    bool isAsked = false;            ///< one of its keys waits for the verdict
    std::size_t queued = 0;          ///< events that wait behind a verdict
    KeySet held;                     ///< as of the last event that has been handled
    std::uint8_t flags = 0;          ///< of `held`
    KeySet onClone;                  ///< down on the clone
    KeySet swallowed;                ///< held and swallowed
    KeySet told;                     ///< held and known to the owner
    std::optional<InputEvent> scan;  ///< the scan code of the key event to come
    bool frameIsOpen = false;        ///< the clone has got events since its last report

    /// Whether nobody but the service has got this event.
    bool isExclusive(const InputEvent& event) const { return event.time >= grabbedSince && event.time < grabbedUntil; }
    /// Whether something that it sent has not been handled yet.
    bool isBusy() const { return queued > 0 || isAsked; }
    bool isNeutral() const { return down.none() && held.none() && !isBusy(); }

    void updateFlags() {
        flags = 0;
        for (const std::uint16_t code : flagKeys) {
            if (held.test(code)) flags |= flagOf(code);
        }
    }
};

using TapDevices = std::map<DeviceId, TapDevice>;

/// What is held on any of the devices.
inline std::uint8_t flagsOf(const TapDevices& devices) {
    std::uint8_t flags = 0;
    for (const auto& [id, device] : devices)
        flags |= device.flags;
    return flags;
}

}  // namespace quillmere::tap
