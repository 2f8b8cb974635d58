#include "TapService/TapEngine.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace quillmere::tap {

namespace {

constexpr std::uint16_t panicKeys[] = {KEY_BACKSPACE, KEY_ESC, KEY_ENTER};

// Faster than this nobody presses another key after Fn.
constexpr Time fastestChord = std::chrono::milliseconds(50);

}  // namespace

// Devices

TapDevice* TapEngine::find(DeviceId id) {
    const auto found = devices_.find(id);
    return found == devices_.end() ? nullptr : &found->second;
}

void TapEngine::addDevice(DeviceId id, const KeySet& keys, Time now) {
    devices_.try_emplace(id, keys);
    // It may be the first with an Fn key.
    grabs_.unsettle();
    settleDevices(now);
}

void TapEngine::removeDevice(DeviceId id, Time now) {
    TapDevice* device = find(id);
    if (device == nullptr || device->isGone) return;
    device->isGone = true;
    // What it sent before still has to come out in order.
    if (device->isBusy()) {
        queue_.push_back({id, std::nullopt});
        return;
    }
    finishRemoval(id, now);
    settleDevices(now);
}

void TapEngine::finishRemoval(DeviceId id, Time now) {
    TapDevice& device = devices_.at(id);
    output_.release(id, device, now);
    for (std::uint16_t code = 0; code < keyCodeLimit; ++code) {
        if (device.told.test(code)) owner_.tellKey(KeyEventKind::release, {EV_KEY, code, 0, now}, flagsOf(devices_));
    }
    const bool hadFlags = device.flags != 0;
    devices_.erase(id);
    if (hadFlags) {
        // First a key, or Fn that goes up with its keyboard could complete a tap.
        owner_.tellOther(now, flagsOf(devices_));
        owner_.tellFlags(now, flagsOf(devices_));
    }
    keyboards_.forget(id);
    grabs_.unsettle();
}

void TapEngine::cloneMade(DeviceId id, bool ready, Time now) {
    TapDevice* device = find(id);
    if (device == nullptr) return;
    grabs_.cloneMade(*device, ready);
    settleDevices(now);
}

void TapEngine::handleEvent(DeviceId id, const InputEvent& event, Time now) {
    TapDevice* device = find(id);
    if (device == nullptr || !device->isOpen || device->isGone || event.code >= keyCodeLimit) return;
    if (event.type == EV_KEY) {
        device->down.set(event.code, event.value != 0);
        // Before anything else, so that no mistake further down can stand in
        // the way.
        if (event.value == 1 && isPanicChord()) panic(now);
    }
    // While another program has the device's grab, no event would come.
    device->grabRefused = false;
    if (pending_) {
        queue_.push_back({id, event});
        ++device->queued;
        if (queue_.size() >= queueLimit) {
            owner_.disable(DisabledReason::timeout);
            settle(false, now);
        }
    } else if (device->isOpen) {
        handle(id, *device, event, now);
    }
    settleDevices(now);
}

void TapEngine::drain(Time now) {
    while (!pending_ && !queue_.empty()) {
        const Queued next = queue_.front();
        queue_.pop_front();
        if (!next.event) {
            finishRemoval(next.device, now);
        } else if (TapDevice* device = find(next.device)) {
            --device->queued;
            handle(next.device, *device, *next.event, now);
        }
    }
}

// Events

void TapEngine::handle(DeviceId id, TapDevice& device, const InputEvent& event, Time now) {
    switch (event.type) {
        case EV_KEY:
            handleKey(id, device, event, now);
            return;
        case EV_SYN:
            if (event.code == SYN_REPORT) {
                output_.endFrame(id, device, event);
                // Between two frames is the one moment to take or to give
                // back a device.
                grabs_.settle(id, device, now);
                return;
            }
            break;
        case EV_MSC:
            if (event.code == MSC_SCAN) {
                device.scan = event;
                return;
            }
            break;
        case EV_REL:
        case EV_ABS:
        case EV_SW:
            break;
        default:
            // Lights and sounds go the other way.
            return;
    }
    if (device.isExclusive(event)) output_.forward(id, device, event);
}

void TapEngine::handleKey(DeviceId id, TapDevice& device, const InputEvent& event, Time now) {
    if (event.value == 0) {
        handleRelease(id, device, event);
    } else if (event.value == 1 && !device.held.test(event.code)) {
        handlePress(id, device, event, now);
    } else {
        handleRepeat(device, event);
    }
}

void TapEngine::handlePress(DeviceId id, TapDevice& device, const InputEvent& event, Time now) {
    device.held.set(event.code);
    const KeyRole role = roleOf(event.code);
    const bool mayHaveMissed = role == KeyRole::fn && grabs_.hearAll() && now - event.time > fastestChord;
    const bool isOfInterest = role == KeyRole::key && owner_.isOfInterest(event.code, flagsOf(devices_));
    if (isOfInterest && device.isExclusive(event)) {
        ask(id, device, event, now);
        return;
    }
    output_.pass(id, device, event);
    if (isOfInterest) {
        device.told.set(event.code, owner_.tellKey(KeyEventKind::press, event, flagsOf(devices_)));
    } else if (role == KeyRole::key || role == KeyRole::power) {
        owner_.tellOther(event.time, flagsOf(devices_));
    } else if (role != KeyRole::button) {
        device.updateFlags();
        owner_.tellFlags(event.time, flagsOf(devices_));
        if (mayHaveMissed) owner_.tellOther(event.time, flagsOf(devices_));
    }
}

void TapEngine::handleRelease(DeviceId id, TapDevice& device, const InputEvent& event) {
    const bool wasSwallowed = device.swallowed.test(event.code);
    const bool wasTold = device.told.test(event.code);
    device.held.reset(event.code);
    device.swallowed.reset(event.code);
    device.told.reset(event.code);
    if (wasSwallowed) {
        device.scan.reset();
    } else {
        output_.pass(id, device, event);
    }
    const KeyRole role = roleOf(event.code);
    if (role == KeyRole::modifier || role == KeyRole::fn) {
        device.updateFlags();
        owner_.tellFlags(event.time, flagsOf(devices_));
    } else if (wasTold) {
        owner_.tellKey(KeyEventKind::release, event, flagsOf(devices_));
    }
}

void TapEngine::handleRepeat(TapDevice& device, const InputEvent& event) {
    // Never forwarded: the clone repeats by itself what is down on it.
    device.scan.reset();
    if (device.told.test(event.code)) {
        owner_.tellKey(KeyEventKind::repeat, event, flagsOf(devices_));
    } else if (roleOf(event.code) == KeyRole::key) {
        owner_.tellOther(event.time, flagsOf(devices_));
    }
}

// Questions and answers

void TapEngine::ask(DeviceId id, TapDevice& device, const InputEvent& event, Time now) {
    // 0 is "no question".
    sequence_ = std::max(sequence_ + 1, 1U);
    if (!owner_.tellKey(KeyEventKind::press, event, flagsOf(devices_), sequence_)) {
        output_.pass(id, device, event);
        return;
    }
    device.told.set(event.code);
    device.isAsked = true;
    pending_ = Pending{id, event, sequence_, now + verdictDeadline};
}

void TapEngine::verdict(std::uint32_t sequence, bool swallow, Time now) {
    if (!awaits(sequence)) return;
    settle(swallow, now);
    settleDevices(now);
}

void TapEngine::settle(bool swallow, Time now) {
    if (!pending_) return;
    const Pending settled = *std::exchange(pending_, std::nullopt);
    if (TapDevice* device = find(settled.device)) {
        device->isAsked = false;
        if (swallow) {
            device->swallowed.set(settled.event.code);
            device->scan.reset();
            output_.fill(devices_, now);
        } else {
            output_.pass(settled.device, *device, settled.event);
        }
    }
    drain(now);
    grabs_.unsettle();
}

void TapEngine::forgetTold() {
    for (TapDevice& device : devices_ | std::views::values)
        device.told.reset();
    grabs_.unsettle();
}

std::optional<Time> TapEngine::deadline() const {
    const std::optional<Time> devices = grabs_.deadline();
    if (!pending_) return devices;
    return devices ? std::min(*devices, pending_->deadline) : pending_->deadline;
}

void TapEngine::tick(Time now) {
    if (pending_ && now >= pending_->deadline) {
        owner_.disable(DisabledReason::timeout);
        settle(false, now);
    }
    settleDevices(now);
}

void TapEngine::settleDevices(Time now) {
    if (owner_.takeDisabled()) forgetTold();
    grabs_.settle(now);
}

bool TapEngine::isPanicChord() const {
    return std::ranges::all_of(panicKeys, [this](std::uint16_t code) {
        return std::ranges::any_of(devices_ | std::views::values,
                                   [code](const TapDevice& device) { return device.down.test(code); });
    });
}

void TapEngine::panic(Time now) {
    owner_.disable(DisabledReason::userInput);
    dropOwner(now);
    grabs_.free(now);
}

void TapEngine::releaseEverything(Time now) {
    dropOwner(now);
    grabs_.release(now);
    settleDevices(now);
}

void TapEngine::dropOwner(Time now) {
    owner_.drop();
    forgetTold();
    settle(false, now);
}

// The owner

void TapEngine::attach(OwnerPort& owner, const Interest& interest, bool enabled, Time now) {
    detach(now);
    owner_.attach(owner, enabled);
    // What failed before gets another chance.
    grabs_.retry();
    setInterest(interest, now);
}

void TapEngine::detach(Time now) {
    if (!owner_.isAttached()) return;
    owner_.detach(flagsOf(devices_), now);
    forgetTold();
    settle(false, now);
    settleDevices(now);
}

void TapEngine::setInterest(const Interest& interest, Time now) {
    if (!owner_.isAttached()) return;
    owner_.setInterest(interest);
    grabs_.retryGrabs();
    settleDevices(now);
}

void TapEngine::enable(Time now) {
    if (!owner_.enable()) return;
    // Fn may have gone up meanwhile. If it has gone down, that is no beginning
    // of a tap.
    if ((flagsOf(devices_) & Flags::fn) == 0) owner_.tellFlags(now, flagsOf(devices_));
    grabs_.unsettle();
    settleDevices(now);
}

}  // namespace quillmere::tap
