#include "TapService/DeviceGrabs.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace quillmere::tap {

// What is wanted

bool DeviceGrabs::isGrabbing() const {
    return std::ranges::any_of(devices_ | std::views::values, &TapDevice::isGrabbed);
}

bool DeviceGrabs::isAnyKeyDown() const {
    return std::ranges::any_of(devices_ | std::views::values,
                               [](const TapDevice& device) { return device.down.any(); });
}

bool DeviceGrabs::wantsOpen() const {
    if (owner_.hasShortcuts() || owner_.isRecording()) return true;
    // All keyboards then, not only those with an Fn key: what is pressed on
    // the others (a laptop's brightness keys are often a device of their own)
    // means that Fn was not tapped alone.
    return owner_.wantsFn() && std::ranges::any_of(devices_ | std::views::values, &TapDevice::hasFn);
}

bool DeviceGrabs::wantsAllKeys() const {
    return owner_.hasShortcuts() || owner_.isRecording() || (flagsOf(devices_) & Flags::fn) != 0;
}

bool DeviceGrabs::wantsGrab(const TapDevice& device) const {
    return !isFreed_ && owner_.wantsGrab(device.keys, device.isTyping);
}

void DeviceGrabs::unsettle() {
    for (TapDevice& device : devices_ | std::views::values)
        device.isUnsettled = true;
}

void DeviceGrabs::retry() {
    for (TapDevice& device : devices_ | std::views::values) {
        device.cannotOpen = false;
        if (!device.isGrabbed) device.clone = TapDevice::Clone::none;
    }
    retryGrabs();
}

void DeviceGrabs::retryGrabs() {
    for (TapDevice& device : devices_ | std::views::values)
        device.grabRefused = false;
    unsettle();
}

void DeviceGrabs::free(Time now) {
    isFreed_ = true;
    freedUntil_ = now + freedTime;
    release(now);
}

void DeviceGrabs::endFreedom(Time now) {
    // Without an owner nobody sees what is down.
    if (!isFreed_ || !wantsOpen()) return;
    if (freedUntil_ && now >= *freedUntil_) freedUntil_.reset();
    if (freedUntil_ || isAnyKeyDown()) return;
    isFreed_ = false;
    unsettle();
}

std::optional<Time> DeviceGrabs::deadline() const {
    std::optional<Time> earliest;
    const auto consider = [&earliest](Time time) { earliest = earliest ? std::min(*earliest, time) : time; };
    if (isFreed_ && freedUntil_ && wantsOpen()) consider(*freedUntil_);
    for (const TapDevice& device : devices_ | std::views::values) {
        if (device.isUnsettled && !device.isGone) consider(Time::zero());
        if (device.ungrabBy) consider(*device.ungrabBy);
    }
    return earliest;
}

// Step by step

void DeviceGrabs::settle(Time now) {
    openAll();
    updateHearing();
    endFreedom(now);
    for (auto& [id, device] : devices_) {
        const bool isDue = device.isUnsettled || (device.ungrabBy && now >= *device.ungrabBy);
        if (isDue && settleOne(id, device, now)) return;
    }
}

void DeviceGrabs::settle(DeviceId id, TapDevice& device, Time now) {
    settleOne(id, device, now);
}

/// Before any is grabbed: what is held on one device matters to the others.
void DeviceGrabs::openAll() {
    if (!wantsOpen()) return;
    for (auto& [id, device] : devices_) {
        if (device.isUnsettled && !device.isGone && !device.isOpen && !device.cannotOpen) open(id, device);
    }
}

void DeviceGrabs::updateHearing() {
    if (wantsAllKeys()) {
        hearAll();
        return;
    }
    for (auto& [id, device] : devices_) {
        const bool isAtRest = device.isNeutral() && !device.isGrabbed && device.onClone.none();
        if (!device.isOpen || device.isGone || !device.isHeardInFull || !isAtRest) continue;
        keyboards_.hearFnOnly(id);
        device.isHeardInFull = false;
    }
}

bool DeviceGrabs::hearAll() {
    bool wasAnyUnheard = false;
    for (auto& [id, device] : devices_) {
        if (!device.isOpen || device.isGone || device.isHeardInFull) continue;
        wasAnyUnheard = true;
        device.isHeardInFull = true;
        const KeySet down = keyboards_.hearAll(id);
        for (std::uint16_t code = 0; code < keyCodeLimit; ++code) {
            // Its own event is still to come.
            if (!down.test(code) || roleOf(code) == KeyRole::fn) continue;
            device.down.set(code);
            device.held.set(code);
        }
        device.updateFlags();
    }
    return wasAnyUnheard;
}

bool DeviceGrabs::settleOne(DeviceId id, TapDevice& device, Time now) {
    device.isUnsettled = false;
    if (device.isGone || !device.isOpen) return false;
    if (settleGrab(id, device, now)) {
        // There may be more to do with it.
        device.isUnsettled = true;
        return true;
    }
    if (wantsOpen() || device.isGrabbed || device.isBusy()) return false;
    close(id, device, now);
    return true;
}

bool DeviceGrabs::settleGrab(DeviceId id, TapDevice& device, Time now) {
    if (!wantsGrab(device)) return device.isGrabbed && endGrab(id, device, now);
    device.ungrabBy.reset();
    if (device.clone == TapDevice::Clone::none) return prepareClone(id, device);
    const bool canGrab = device.clone == TapDevice::Clone::ready && !device.isGrabbed && !device.grabRefused;
    // There is no bound to this wait. Until it is over shortcuts work, but are
    // not swallowed; grabbed with a key down, that key would be stuck for
    // everybody else.
    // Whether one is down the kernel knows for certain: a release may have gone
    // to another program that had the device for a while.
    return canGrab && !device.isBusy() && grab(id, device, now);
}

void DeviceGrabs::open(DeviceId id, TapDevice& device) {
    const std::optional<KeySet> down = keyboards_.open(id);
    device.isOpen = down.has_value();
    device.isHeardInFull = true;
    device.cannotOpen = !down;
    if (!down) return;
    device.down = *down;
    device.held = *down;
    device.updateFlags();
}

void DeviceGrabs::close(DeviceId id, TapDevice& device, Time now) {
    output_.release(id, device, now);
    keyboards_.close(id);
    device.isOpen = false;
    device.down.reset();
    device.held.reset();
    device.swallowed.reset();
    device.told.reset();
    device.flags = 0;
}

bool DeviceGrabs::prepareClone(DeviceId id, TapDevice& device) {
    const CloneState state = keyboards_.prepareClone(id);
    device.clone = state == CloneState::failed   ? TapDevice::Clone::failed
                   : state == CloneState::making ? TapDevice::Clone::making
                                                 : TapDevice::Clone::ready;
    return true;
}

void DeviceGrabs::cloneMade(TapDevice& device, bool ready) {
    if (device.clone != TapDevice::Clone::making) return;
    device.clone = ready ? TapDevice::Clone::ready : TapDevice::Clone::failed;
    device.isUnsettled = true;
}

bool DeviceGrabs::grab(DeviceId id, TapDevice& device, Time now) {
    const std::optional<Time> since = keyboards_.grab(id);
    device.isGrabbed = since.has_value();
    device.grabRefused = !since;
    if (!since) return false;
    device.grabbedSince = *since;
    device.grabbedUntil = Time::max();
    forgetMissedReleases(device, now);
    return true;
}

/// For a device that has just been found to have no key down.
void DeviceGrabs::forgetMissedReleases(TapDevice& device, Time now) {
    if (device.down.none() && device.held.none()) return;
    const KeySet told = std::exchange(device.told, {});
    device.down.reset();
    device.held.reset();
    device.swallowed.reset();
    device.updateFlags();
    const std::uint8_t flags = flagsOf(devices_);
    for (std::uint16_t code = 0; code < keyCodeLimit; ++code)
        if (told.test(code)) owner_.tellKey(KeyEventKind::release, {EV_KEY, code, 0, now}, flags);
    owner_.tellFlags(now, flags);
}

bool DeviceGrabs::endGrab(DeviceId id, TapDevice& device, Time now) {
    if (!device.ungrabBy) device.ungrabBy = now + ungrabDeadline;
    if (now < *device.ungrabBy) return device.isNeutral() && ungrab(id, device, false);
    output_.release(id, device, now);
    return ungrab(id, device, true);
}

bool DeviceGrabs::ungrab(DeviceId id, TapDevice& device, bool force) {
    const std::optional<Time> until = keyboards_.ungrab(id, force);
    if (!until) return false;
    device.grabbedUntil = *until;
    device.isGrabbed = false;
    device.ungrabBy.reset();
    return true;
}

void DeviceGrabs::release(Time now) {
    for (auto& [id, device] : devices_) {
        output_.release(id, device, now);
        if (device.isGrabbed) ungrab(id, device, true);
    }
    unsettle();
}

}  // namespace quillmere::tap
