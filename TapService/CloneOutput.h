#pragma once

#include "TapService/TapDevice.h"
#include "TapService/TapPorts.h"

namespace quillmere::tap {

/// What the engine sends through the clones. Each release follows its press,
/// and each frame ends with its report.
class CloneOutput {
public:
    /// Types nothing on any layout; every clone has it.
    static constexpr std::uint16_t fillerKey = KEY_UNKNOWN;

    /// `keyboards` must outlive this.
    explicit CloneOutput(KeyboardPort& keyboards) : keyboards_(keyboards) {}

    /// Anything but keys and reports.
    void forward(DeviceId id, TapDevice& device, const InputEvent& event);
    /// A key's press or release, with its scan code.
    void pass(DeviceId id, TapDevice& device, const InputEvent& event);
    /// `report` goes out unless there is nothing to report.
    void endFrame(DeviceId id, TapDevice& device, const InputEvent& report);
    /// Lets go of every key.
    void release(DeviceId id, TapDevice& device, Time now);

    /// Many programs open their menu bar, and many desktops their overview,
    /// when Alt or Super goes down and up with nothing in between. Of a
    /// swallowed key they know nothing: where such a key is held, they are
    /// given the filler key instead.
    void fill(TapDevices& devices, Time now);

private:
    KeyboardPort& keyboards_;
};

}  // namespace quillmere::tap
