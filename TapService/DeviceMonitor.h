#pragma once

#include "TapService/Handles.h"

#include <functional>
#include <string>

namespace quillmere::tap {

/// Finds the input devices with keys through udev, and those that come and go.
/// Devices of other seats are left alone, and so are touchpads, tablets and
/// joysticks.
class DeviceMonitor {
public:
    struct Handlers {
        /// A device is there, or what is known of it has changed. `path` is its
        /// place in sysfs, `node` as "/dev/input/event3".
        std::function<void(const std::string& path, const std::string& node)> onFound;
        /// It has gone, or was given to another seat; also for those that were
        /// never found.
        std::function<void(const std::string& path)> onRemoved;
        /// A clone is known to the desktop; `path` is that of its input device.
        std::function<void(const std::string& path)> onClone;
    };

    explicit DeviceMonitor(Handlers handlers) : handlers_(std::move(handlers)) {}

    /// False when udev cannot be asked.
    bool start(sd_event* loop);

private:
    bool enumerate();
    void handle(sd_device* device);
    void found(sd_device* device);

    Handlers handlers_;
    DeviceMonitorHandle monitor_;
};

}  // namespace quillmere::tap
