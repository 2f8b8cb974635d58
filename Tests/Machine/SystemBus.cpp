#include "Tests/Machine/SystemBus.h"

#include <chrono>
#include <utility>

namespace quillmere::machine {

namespace {

constexpr std::chrono::microseconds deadline = std::chrono::minutes(2);

sd_bus* connect() {
    sd_bus* bus = nullptr;
    if (const int result = sd_bus_open_system(&bus); result < 0) throw support::SupportError("no system bus", -result);
    return bus;
}

}  // namespace

SystemBus::SystemBus() : bus_(connect(), sd_bus_flush_close_unref) {}

BusReply SystemBus::send(sd_bus_message* message) {
    sd_bus_error error{};
    sd_bus_message* reply = nullptr;
    const int result = sd_bus_call(bus_.get(), message, static_cast<std::uint64_t>(deadline.count()), &error, &reply);
    sd_bus_message_unref(message);
    BusReply answer;
    answer.message.reset(reply);
    if (result < 0) answer.error = error.name != nullptr ? error.name : "no reply";
    sd_bus_error_free(&error);
    return answer;
}

}  // namespace quillmere::machine
