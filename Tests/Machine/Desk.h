#pragma once

#include "Tests/Machine/Monitor.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <linux/input.h>

namespace quillmere::machine {

/// One event that a desktop gets from some input device.
struct DeskEvent {
    std::string device;        ///< its name
    bool isFromClone = false;  ///< the device stands in for another one
    std::uint16_t type = 0;
    std::uint16_t code = 0;
    std::int32_t value = 0;
    std::chrono::nanoseconds time{};  ///< monotonic, stamped by the kernel
};

/// What a desktop sees of all keyboards: it reads every input device there is,
/// and that comes later, as a compositor does. What somebody has grabbed does
/// not reach it. Reads on a thread of its own; all functions may be called from
/// any other.
class Desk {
public:
    Desk();
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// From now on it leaves the devices alone that come, for as long as it
    /// lives: whoever reads them shall be somebody else.
    void leaveNewDevices();

    /// Forgets the events up to now.
    void clear();

    /// In the order in which they happened.
    std::vector<DeskEvent> events() const;
    /// The keys that went down and up, without repeats, on all devices.
    std::vector<KeyStroke> strokes() const;
    /// How many repeats of this key have come.
    std::size_t repeats(std::uint16_t code) const;
    /// What is down on any device.
    std::set<std::uint16_t> keysDown() const;
    /// The names of the devices that are open, the tap service's clones or all
    /// others.
    std::multiset<std::string> clones() const { return names(true); }
    std::multiset<std::string> originals() const { return names(false); }
    /// Whether a device lost events because they were not read in time.
    bool hasLostEvents() const;

    /// Lights or darkens an LED of the clone of the device with this name, as a
    /// compositor does.
    void setLedOfClone(const std::string& device, std::uint16_t led, bool isOn);

    /// The last events as text, for a failed assertion.
    std::string describe() const;

private:
    struct Device {
        std::string name;
        std::string node;
        bool isClone = false;
        std::set<std::uint16_t> down;
    };

    std::multiset<std::string> names(bool ofClones) const;
    void run();
    void openNewDevices();
    void openDevice(const std::string& node);
    void readDevice(int descriptor);
    void take(Device& device, const input_event& event);

    mutable std::mutex mutex_;
    std::map<int, Device> devices_;
    std::vector<DeskEvent> events_;
    bool hasLostEvents_ = false;
    bool opensNewDevices_ = true;
    int watch_ = -1;
    int stop_ = -1;
    std::thread thread_;
};

}  // namespace quillmere::machine
