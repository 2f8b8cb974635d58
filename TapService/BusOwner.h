#pragma once

#include "TapService/Handles.h"

#include <functional>
#include <string>

namespace quillmere::tap {

/// The connection that owns a well-known name now. Anybody on the bus may send
/// a signal that looks like a service's, straight to whom it shall fool; only
/// the sender's unique name, which the bus itself writes, tells them apart.
class BusOwner {
public:
    /// The service "org.example.Name".
    explicit BusOwner(std::string name) : name_(std::move(name)) {}
    BusOwner(const BusOwner&) = delete;
    BusOwner& operator=(const BusOwner&) = delete;

    /// Begins to follow the name; a negative error number when the bus cannot
    /// be asked.
    int start(sd_bus* bus);

    /// Whether this came from the service; false as long as its owner is not
    /// known.
    bool hasSent(sd_bus_message* message) const;
    /// Whether this came from the bus itself.
    static bool busHasSent(sd_bus_message* message);

    /// The name has another owner, or its first one is known.
    std::function<void()> onChange;

private:
    void set(const char* owner);

    std::string name_;
    std::string owner_;
    BusSlot changes_;
    BusSlot question_;
};

}  // namespace quillmere::tap
