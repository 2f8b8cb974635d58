#pragma once

#include "TapService/Handles.h"
#include "TapService/KeySet.h"
#include "TapService/LockCarrier.h"
#include "TapService/TapPorts.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct libevdev;

namespace quillmere::tap {

/// One input device of the kernel (evdev).
class Keyboard {
public:
    /// One for each code of a type, as the kernel takes and gives them.
    using Bits = std::array<unsigned char, keyCodeLimit / 8>;

    struct Handlers {
        std::function<void(const InputEvent&)> onEvent;
        /// The device has gone while it was open; this may be destroyed then.
        std::function<void()> onGone;
    };

    /// `node` as "/dev/input/event3", `path` its place in sysfs. Opens nothing
    /// yet.
    Keyboard(sd_event* loop, std::string node, std::string path, Handlers handlers);
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// What the device can send; no value when it cannot be asked.
    static std::optional<KeySet> keysOf(const std::string& node, const std::string& path);

    /// Begins to read; returns the keys that are down, no value on failure.
    std::optional<KeySet> open();
    void close();

    // Only while open.

    /// Only Fn keys are read from now on.
    void hearFnOnly();
    /// Every key is read again; returns those that are down.
    KeySet hearAll();

    /// Takes the device away from everybody else. Refused (no value) while a
    /// key is down or an event was not read: whoever got the press would miss
    /// the release.
    std::optional<Time> grab();
    /// Gives it back. Without `force` it is kept (no value) while an event was
    /// not read, because nobody else has got that.
    std::optional<Time> ungrab(bool force);
    bool isGrabbed() const { return isGrabbed_; }

    /// A light or a sound of the device (EV_LED, EV_SND).
    void set(std::uint16_t type, std::uint16_t code, std::int32_t value);

    /// What is lit on it.
    Lights lights() const;

    /// The description for a clone; null while closed.
    libevdev* description() const { return device_.get(); }

private:
    struct FreeDevice {
        void operator()(libevdev* device) const;
    };
    using Device = std::unique_ptr<libevdev, FreeDevice>;

    void read();
    /// False when there is nothing more to read now.
    bool readOne(bool& isResynchronizing);
    void gone();
    bool isQuiet() const;
    KeySet keysDownNow() const;
    static void setMask(const FileDescriptor& file, std::uint16_t type, const Bits& bits);

    sd_event* loop_;
    std::string node_;
    std::string path_;
    Handlers handlers_;
    FileDescriptor file_;
    FileDescriptor stateFile_;  ///< the device once more, to ask for its state
    Device device_;
    EventSource source_;
    bool isGrabbed_ = false;
    bool hasComplained_ = false;
};

}  // namespace quillmere::tap
