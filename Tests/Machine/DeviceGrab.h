#pragma once

#include "Tests/Machine/Monitor.h"

#include <string>

namespace quillmere::machine {

/// Another program that keeps an input device to itself. Throws SupportError
/// when that cannot be had.
class DeviceGrab {
public:
    /// `name`: the device's.
    explicit DeviceGrab(const std::string& name);
    ~DeviceGrab();
    DeviceGrab(const DeviceGrab&) = delete;
    DeviceGrab& operator=(const DeviceGrab&) = delete;

    /// The open device, which blocks.
    int descriptor() const { return descriptor_; }

    /// Waits for this stroke.
    bool hasGot(const KeyStroke& stroke) const;

private:
    int descriptor_ = -1;
};

}  // namespace quillmere::machine
