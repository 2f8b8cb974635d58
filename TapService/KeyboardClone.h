#pragma once

#include "TapService/Handles.h"
#include "TapService/LockCarrier.h"
#include "TapService/ReaderWatch.h"
#include "TapService/TapPorts.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

struct input_event;
struct libevdev;
struct libevdev_uinput;

namespace quillmere::tap {

/// The virtual keyboard (uinput) that stands in for a grabbed device: with its
/// capabilities, name and ids, so that the desktop treats it the same, and with
/// the engine's filler key (`CloneOutput::fillerKey`). The
/// kernel repeats held keys on it. Destroying it unplugs it, and the kernel
/// then releases whatever is down on it.
class KeyboardClone {
public:
    struct Handlers {
        /// The desktop reads it; sent once.
        std::function<void()> onReady;
        /// The desktop has set a light or a sound (EV_LED, EV_SND).
        std::function<void(std::uint16_t type, std::uint16_t code, std::int32_t value)> onOutput;
    };

    /// The "phys" attribute of every clone, which tells them from real
    /// devices.
    static constexpr const char* mark = "quillmere-tapd";

    /// Null when there is no uinput, or it refuses, or the device has switches:
    /// a laptop's lid must not be closed twice, or open for one and closed for
    /// another.
    static std::unique_ptr<KeyboardClone> make(sd_event* loop, libevdev* original, Handlers handlers);
    ~KeyboardClone();
    KeyboardClone(const KeyboardClone&) = delete;
    KeyboardClone& operator=(const KeyboardClone&) = delete;

    /// The input device's place in sysfs.
    std::string path() const;
    /// udev has made its node known, so the desktop begins to take it up.
    void appeared();
    bool isReady() const { return isReady_; }
    /// What the desktop has lit.
    const Lights& lights() const { return lights_; }

    /// Sends an event; a frame goes out whole, with its report.
    void forward(const InputEvent& event);
    /// Presses and releases a key.
    void tap(std::uint16_t key);

private:
    struct FreeDevice {
        void operator()(libevdev_uinput* device) const;
    };

    KeyboardClone(sd_event* loop, Handlers handlers);

    bool create(libevdev* original);
    void copyRepeat(const libevdev* original);
    bool watchOutput();
    void probe();
    void becomeReady();
    void readOutput();
    void handleOutput(const input_event& event);
    void write();

    sd_event* loop_;
    Handlers handlers_;
    FileDescriptor file_;
    std::unique_ptr<libevdev_uinput, FreeDevice> device_;
    EventSource output_;
    ReaderWatch readers_;
    Lights lights_;
    bool isReady_ = false;
    bool hasFailed_ = false;
    std::vector<input_event> frame_;
};

}  // namespace quillmere::tap
