#include "Tests/TapService/CallFlood.h"

#include "TapService/Handles.h"
#include "TapService/KeyTapNames.h"

#include <stdexcept>

namespace quillmere {

CallFlood::CallFlood(const std::string& busAddress)
    : thread_([this, busAddress](const std::stop_token& stop) { run(stop, busAddress); }) {}

void CallFlood::run(const std::stop_token& stop, const std::string& busAddress) {
    sd_bus* connection = nullptr;
    if (sd_bus_new(&connection) < 0) throw std::runtime_error("no bus");
    const tap::Bus bus(connection);
    if (sd_bus_set_address(connection, busAddress.c_str()) < 0 || sd_bus_set_bus_client(connection, 1) < 0
        || sd_bus_start(connection) < 0)
        throw std::runtime_error("no connection to the bus");
    while (!stop.stop_requested()) {
        sd_bus_message* created = nullptr;
        sd_bus_message_new_method_call(connection, &created, tap::KeyTapNames::service, tap::KeyTapNames::path,
                                       tap::KeyTapNames::interface, "HasAccess");
        const tap::BusMessage call(created);
        sd_bus_message_set_expect_reply(created, 0);
        // Blocks while the bus has enough of it.
        if (sd_bus_send(connection, created, nullptr) < 0 || sd_bus_flush(connection) < 0) return;
        ++sent_;
    }
}

}  // namespace quillmere
