#include "TapService/CloneOutput.h"

#include <algorithm>
#include <utility>

namespace quillmere::tap {

namespace {

constexpr std::uint16_t menuKeys[] = {KEY_LEFTALT, KEY_RIGHTALT, KEY_LEFTMETA, KEY_RIGHTMETA};

bool holdsMenuKey(const TapDevice& device) {
    return std::ranges::any_of(menuKeys, [&device](std::uint16_t code) { return device.onClone.test(code); });
}

}  // namespace

void CloneOutput::forward(DeviceId id, TapDevice& device, const InputEvent& event) {
    keyboards_.forward(id, event);
    device.frameIsOpen = true;
}

void CloneOutput::pass(DeviceId id, TapDevice& device, const InputEvent& event) {
    const bool isPress = event.value != 0;
    // A release follows its press, whoever gets the device's events by now.
    if (isPress ? device.isExclusive(event) : device.onClone.test(event.code)) {
        if (device.scan) forward(id, device, *device.scan);
        forward(id, device, event);
        device.onClone.set(event.code, isPress);
    }
    device.scan.reset();
}

void CloneOutput::endFrame(DeviceId id, TapDevice& device, const InputEvent& report) {
    device.scan.reset();
    if (std::exchange(device.frameIsOpen, false)) keyboards_.forward(id, report);
}

void CloneOutput::release(DeviceId id, TapDevice& device, Time now) {
    for (std::uint16_t code = 0; code < keyCodeLimit && device.onClone.any(); ++code) {
        if (!device.onClone.test(code)) continue;
        forward(id, device, {EV_KEY, code, 0, now});
        device.onClone.reset(code);
    }
    endFrame(id, device, {EV_SYN, SYN_REPORT, 0, now});
}

void CloneOutput::fill(TapDevices& devices, Time now) {
    for (auto& [id, device] : devices) {
        if (!holdsMenuKey(device) || device.onClone.test(fillerKey)) continue;
        for (const std::int32_t value : {1, 0}) {
            forward(id, device, {EV_KEY, fillerKey, value, now});
            endFrame(id, device, {EV_SYN, SYN_REPORT, 0, now});
        }
    }
}

}  // namespace quillmere::tap
