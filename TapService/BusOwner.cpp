#include "TapService/BusOwner.h"

#include <string_view>

namespace quillmere::tap {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

}  // namespace

int BusOwner::start(sd_bus* bus) {
    sd_bus_slot* slot = nullptr;
    const std::string match = std::string("type='signal',sender='") + busName
                              + "',interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name_ + "'";
    const auto changed = [](sd_bus_message* signal, void* self, sd_bus_error*) {
        const char* name = nullptr;
        const char* owner = nullptr;
        if (busHasSent(signal) && sd_bus_message_read(signal, "sss", &name, nullptr, &owner) > 0)
            static_cast<BusOwner*>(self)->set(owner);
        return 0;
    };
    int status = sd_bus_add_match_async(bus, &slot, match.c_str(), changed, nullptr, this);
    changes_.reset(slot);
    if (status < 0) return status;
    const auto answered = [](sd_bus_message* reply, void* self, sd_bus_error*) {
        const char* owner = nullptr;
        // Without an owner it is an error; the signal tells of the first one.
        if (sd_bus_message_is_method_error(reply, nullptr) == 0 && sd_bus_message_read(reply, "s", &owner) > 0)
            static_cast<BusOwner*>(self)->set(owner);
        return 0;
    };
    slot = nullptr;
    status = sd_bus_call_method_async(bus, &slot, busName, busPath, busName, "GetNameOwner", answered, this, "s",
                                      name_.c_str());
    question_.reset(slot);
    return status;
}

bool BusOwner::hasSent(sd_bus_message* message) const {
    const char* sender = sd_bus_message_get_sender(message);
    return sender != nullptr && !owner_.empty() && owner_ == sender;
}

bool BusOwner::busHasSent(sd_bus_message* message) {
    const char* sender = sd_bus_message_get_sender(message);
    return sender != nullptr && std::string_view(sender) == busName;
}

void BusOwner::set(const char* owner) {
    owner_ = owner;
    if (onChange) onChange();
}

}  // namespace quillmere::tap
