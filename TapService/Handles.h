#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-device.h>
#include <systemd/sd-event.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <memory>
#include <utility>

/// Owners of what the system's libraries hand out.
namespace quillmere::tap {

/// A file descriptor that is closed with its owner.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        reset(std::exchange(other.number_, -1));
        return *this;
    }
    ~FileDescriptor() { reset(); }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }
    void reset(int number = -1) {
        const int old = std::exchange(number_, number);
        if (old >= 0) ::close(old);
    }

private:
    int number_ = -1;
};

template <auto unref>
struct Unref {
    void operator()(auto* object) const { unref(object); }
};

using Event = std::unique_ptr<sd_event, Unref<&sd_event_unref>>;
/// Dropping it also silences it.
using EventSource = std::unique_ptr<sd_event_source, Unref<&sd_event_source_disable_unref>>;
using Bus = std::unique_ptr<sd_bus, Unref<&sd_bus_flush_close_unref>>;
/// Dropping it also cancels what it stands for.
using BusSlot = std::unique_ptr<sd_bus_slot, Unref<&sd_bus_slot_unref>>;
using BusMessage = std::unique_ptr<sd_bus_message, Unref<&sd_bus_message_unref>>;
using DeviceMonitorHandle = std::unique_ptr<sd_device_monitor, Unref<&sd_device_monitor_unref>>;
using DeviceEnumerator = std::unique_ptr<sd_device_enumerator, Unref<&sd_device_enumerator_unref>>;
using DeviceHandle = std::unique_ptr<sd_device, Unref<&sd_device_unref>>;
using LoginMonitor = std::unique_ptr<sd_login_monitor, Unref<&sd_login_monitor_unref>>;

}  // namespace quillmere::tap
