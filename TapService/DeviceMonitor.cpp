#include "TapService/DeviceMonitor.h"

#include "TapService/KeyboardClone.h"
#include "TapService/Log.h"

#include <algorithm>
#include <string_view>

namespace quillmere::tap {

namespace {

std::string_view property(sd_device* device, const char* key) {
    const char* value = nullptr;
    return sd_device_get_property_value(device, key, &value) >= 0 && value != nullptr ? value : "";
}

std::string_view pathOf(sd_device* device) {
    const char* path = nullptr;
    return sd_device_get_syspath(device, &path) >= 0 ? path : "";
}

bool isEventNode(sd_device* device) {
    const char* name = nullptr;
    return sd_device_get_sysname(device, &name) >= 0 && std::string_view(name).starts_with("event");
}

/// The input device that an event node belongs to; borrowed.
sd_device* inputOf(sd_device* device) {
    sd_device* input = nullptr;
    return sd_device_get_parent(device, &input) >= 0 ? input : nullptr;
}

bool isClone(sd_device* input) {
    const char* phys = nullptr;
    return sd_device_get_sysattr_value(input, "phys", &phys) >= 0 && std::string_view(phys) == KeyboardClone::mark;
}

bool isOnSeat(sd_device* device) {
    const std::string_view seat = property(device, "ID_SEAT");
    return seat.empty() || seat == "seat0";
}

/// Whether it is there for something else than typing, whatever keys it has.
bool isPointingOrPlaying(sd_device* device) {
    constexpr const char* kinds[] = {"ID_INPUT_TOUCHPAD", "ID_INPUT_TOUCHSCREEN",   "ID_INPUT_TABLET",
                                     "ID_INPUT_JOYSTICK", "ID_INPUT_ACCELEROMETER", "ID_INPUT_TABLET_PAD"};
    return std::ranges::any_of(kinds, [device](const char* kind) { return property(device, kind) == "1"; });
}

/// udev's word for "has keys"; one with letters is ID_INPUT_KEYBOARD too.
bool isKeyboard(sd_device* device) {
    return property(device, "ID_INPUT_KEY") == "1" && !isPointingOrPlaying(device) && isOnSeat(device);
}

}  // namespace

bool DeviceMonitor::start(sd_event* loop) {
    sd_device_monitor* monitor = nullptr;
    int status = sd_device_monitor_new(&monitor);
    monitor_.reset(monitor);
    if (status >= 0) status = sd_device_monitor_filter_add_match_subsystem_devtype(monitor, "input", nullptr);
    if (status >= 0) status = sd_device_monitor_attach_event(monitor, loop);
    const auto handler = [](sd_device_monitor*, sd_device* device, void* self) {
        static_cast<DeviceMonitor*>(self)->handle(device);
        return 0;
    };
    // Before the enumeration, or a device that comes in between is missed.
    if (status >= 0) status = sd_device_monitor_start(monitor, handler, this);
    if (status < 0) {
        Log::error("Cannot watch for keyboards", status);
        return false;
    }
    return enumerate();
}

bool DeviceMonitor::enumerate() {
    sd_device_enumerator* created = nullptr;
    int status = sd_device_enumerator_new(&created);
    const DeviceEnumerator enumerator(created);
    if (status >= 0) status = sd_device_enumerator_add_match_subsystem(created, "input", 1);
    if (status < 0) {
        Log::error("Cannot look for keyboards", status);
        return false;
    }
    for (sd_device* device = sd_device_enumerator_get_device_first(created); device != nullptr;
         device = sd_device_enumerator_get_device_next(created)) {
        if (isEventNode(device)) found(device);
    }
    return true;
}

void DeviceMonitor::handle(sd_device* device) {
    sd_device_action_t action{};
    if (!isEventNode(device) || sd_device_get_action(device, &action) < 0) return;
    if (action == SD_DEVICE_REMOVE) {
        handlers_.onRemoved(std::string(pathOf(device)));
    } else {
        found(device);
    }
}

void DeviceMonitor::found(sd_device* device) {
    sd_device* input = inputOf(device);
    if (input == nullptr) return;
    if (isClone(input)) {
        handlers_.onClone(std::string(pathOf(input)));
        return;
    }
    const char* node = nullptr;
    const std::string path(pathOf(device));
    if (isKeyboard(device) && sd_device_get_devname(device, &node) >= 0) {
        handlers_.onFound(path, node);
    } else {
        // It may have been one, or this seat's, until now.
        handlers_.onRemoved(path);
    }
}

}  // namespace quillmere::tap
