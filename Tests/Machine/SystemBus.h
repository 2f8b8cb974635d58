#pragma once

#include "Tests/Support/SupportError.h"

#include <memory>
#include <string>

#include <systemd/sd-bus.h>

namespace quillmere::machine {

/// What a call goes to.
struct BusMember {
    const char* service;
    const char* path;
    const char* interface;
    const char* name;
};

/// The answer to a call.
struct BusReply {
    std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)> message{nullptr, sd_bus_message_unref};
    std::string error;  ///< the error's D-Bus name; empty when there was none
};

/// A connection of its own to the system bus. Errors of the connection itself
/// are thrown as SupportError.
class SystemBus {
public:
    SystemBus();

    /// Calls, with arguments as sd_bus_message_append takes them, and waits up
    /// to two minutes for the reply: a dialog may stand in between.
    template <typename... Arguments>
    BusReply call(const BusMember& member, const char* signature, Arguments... arguments) {
        sd_bus_message* message = nullptr;
        int result = sd_bus_message_new_method_call(bus_.get(), &message, member.service, member.path, member.interface,
                                                    member.name);
        if (result >= 0) result = sd_bus_message_append(message, signature, arguments...);
        if (result < 0) throw support::SupportError("cannot call " + std::string(member.name), -result);
        return send(message);
    }

private:
    BusReply send(sd_bus_message* message);

    std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus_;
};

}  // namespace quillmere::machine
