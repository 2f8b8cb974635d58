#include "TapService/TapEngine.h"

#include <algorithm>
#include <ranges>
#include <utility>

// The engine's other half: which devices are open, cloned and grabbed.
namespace quillmere::tap {

bool TapEngine::isGrabbing() const {
    return std::ranges::any_of(devices_ | std::views::values, &TapDevice::isGrabbed);
}

bool TapEngine::isBusy(DeviceId id, const TapDevice& device) const {
    return device.queued > 0 || (pending_ && pending_->device == id);
}

bool TapEngine::isNeutral(DeviceId id, const TapDevice& device) const {
    return device.down.none() && device.held.none() && !isBusy(id, device);
}

bool TapEngine::wantsOpen() const {
    if (owner_.hasShortcuts() || owner_.isRecording()) return true;
    // All keyboards then, not only those with an Fn key: what is pressed on
    // the others (a laptop's brightness keys are often a device of their own)
    // means that Fn was not tapped alone.
    return owner_.wantsFn() && std::ranges::any_of(devices_ | std::views::values, &TapDevice::hasFn);
}

void TapEngine::open(DeviceId id, TapDevice& device) {
    const std::optional<KeySet> down = keyboards_.open(id);
    device.isOpen = down.has_value();
    device.cannotOpen = !down;
    if (!down) return;
    device.down = *down;
    device.held = *down;
    device.updateFlags();
}

void TapEngine::close(DeviceId id, TapDevice& device, Time now) {
    releaseClone(id, device, now);
    keyboards_.close(id);
    device.isOpen = false;
    device.down.reset();
    device.held.reset();
    device.swallowed.reset();
    device.told.reset();
    device.flags = 0;
}

void TapEngine::prepareClone(DeviceId id, TapDevice& device) {
    switch (keyboards_.prepareClone(id)) {
        case CloneState::failed:
            device.clone = TapDevice::Clone::failed;
            return;
        case CloneState::making:
            device.clone = TapDevice::Clone::making;
            return;
        case CloneState::ready:
            device.clone = TapDevice::Clone::ready;
            return;
    }
}

void TapEngine::grab(DeviceId id, TapDevice& device) {
    const std::optional<Time> since = keyboards_.grab(id);
    device.isGrabbed = since.has_value();
    device.grabRefused = !since;
    if (!since) return;
    device.grabbedSince = *since;
    device.grabbedUntil = Time::max();
}

/// For a device that has just been found to have no key down.
void TapEngine::forgetMissedReleases(TapDevice& device, Time now) {
    if (device.down.none() && device.held.none()) return;
    const KeySet told = std::exchange(device.told, {});
    device.down.reset();
    device.held.reset();
    device.swallowed.reset();
    device.updateFlags();
    for (std::uint16_t code = 0; code < keyCodeLimit; ++code)
        if (told.test(code)) owner_.tellKey(KeyEventKind::release, {EV_KEY, code, 0, now}, flags());
    owner_.tellFlags(now, flags());
}

void TapEngine::ungrab(DeviceId id, TapDevice& device, bool force) {
    const std::optional<Time> until = keyboards_.ungrab(id, force);
    if (!until) return;
    device.grabbedUntil = *until;
    device.isGrabbed = false;
    device.ungrabBy.reset();
}

void TapEngine::endGrab(DeviceId id, TapDevice& device, Time now) {
    if (!device.ungrabBy) device.ungrabBy = now + ungrabDeadline;
    if (now >= *device.ungrabBy) {
        releaseClone(id, device, now);
        ungrab(id, device, true);
    } else if (isNeutral(id, device)) {
        ungrab(id, device, false);
    }
}

void TapEngine::reconcileGrab(DeviceId id, TapDevice& device, Time now) {
    if (!owner_.wantsGrab(device.keys, device.isTyping)) {
        if (device.isGrabbed) endGrab(id, device, now);
        return;
    }
    device.ungrabBy.reset();
    if (device.clone == TapDevice::Clone::none) prepareClone(id, device);
    const bool canGrab = device.clone == TapDevice::Clone::ready && !device.isGrabbed && !device.grabRefused;
    // There is no bound to this wait. Until it is over shortcuts work, but are
    // not swallowed; grabbed with a key down, that key would be stuck for
    // everybody else.
    // Whether one is down the kernel knows for certain: a release may have gone
    // to another program that had the device for a while.
    if (!canGrab || isBusy(id, device)) return;
    grab(id, device);
    if (device.isGrabbed) forgetMissedReleases(device, now);
}

void TapEngine::reconcile(DeviceId id, TapDevice& device, Time now) {
    if (device.isGone) return;
    if (wantsOpen() && !device.isOpen && !device.cannotOpen) open(id, device);
    if (!device.isOpen) return;
    reconcileGrab(id, device, now);
    if (!wantsOpen() && !device.isGrabbed && !isBusy(id, device)) close(id, device, now);
}

void TapEngine::reconcileAll(Time now) {
    if (owner_.takeDisabled()) forgetTold();
    if (!std::exchange(needsReconciling_, false)) return;
    for (auto& [id, device] : devices_)
        reconcile(id, device, now);
}

}  // namespace quillmere::tap
