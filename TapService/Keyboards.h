#pragma once

#include "TapService/KeySet.h"
#include "TapService/TapPorts.h"

namespace quillmere::tap {

/// Who is told of the input devices.
class KeyboardSink {
public:
    KeyboardSink() = default;
    KeyboardSink(const KeyboardSink&) = delete;
    KeyboardSink& operator=(const KeyboardSink&) = delete;
    virtual ~KeyboardSink() = default;

    virtual void deviceAdded(DeviceId device, const KeySet& keys) = 0;
    virtual void deviceRemoved(DeviceId device) = 0;
    virtual void deviceEvent(DeviceId device, const InputEvent& event) = 0;
    virtual void cloneMade(DeviceId device, bool ready) = 0;
};

/// The machine's input devices that have keys, and their clones.
class Keyboards : public KeyboardPort {
public:
    /// Tells `sink` of the devices that are there and, from then on, of those
    /// that come and go; false when they cannot be found out. Once; `sink`
    /// must outlive this.
    virtual bool start(KeyboardSink& sink) = 0;

    /// Unplugs the clones of all devices that are not grabbed. They outlast a
    /// grab otherwise: to the desktop each is a keyboard that is plugged in,
    /// and that shall not happen with every change of interest.
    virtual void dropClones() = 0;
};

}  // namespace quillmere::tap
