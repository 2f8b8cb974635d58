#include "TapService/SessionLocks.h"

#include "TapService/Log.h"

#include <cstdlib>
#include <memory>
#include <ranges>

namespace quillmere::tap {

namespace {

constexpr const char* service = "org.freedesktop.login1";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

/// Empty for what is no session's name.
std::string pathOf(const std::string& session) {
    char* path = nullptr;
    if (sd_bus_path_encode("/org/freedesktop/login1/session", session.c_str(), &path) < 0) return {};
    const std::unique_ptr<char, decltype(&std::free)> owner(path, &std::free);
    return path;
}

}  // namespace

bool SessionLocks::start() {
    // Another logind may know otherwise.
    login_.onChange = [this] {
        for (Lock& lock : locks_ | std::views::values)
            ask(lock);
    };
    const int status = login_.start(bus_);
    if (status < 0) Log::error("Cannot follow logind on the bus", status);
    return status >= 0;
}

void SessionLocks::watch(const std::string& session) {
    const std::string path = pathOf(session);
    if (path.empty()) return;
    const auto [entry, isNew] = locks_.try_emplace(session);
    if (!isNew) return;
    Lock& lock = entry->second;
    lock.locks = this;
    lock.path = path;
    sd_bus_slot* slot = nullptr;
    const int status = sd_bus_match_signal_async(bus_, &slot, service, path.c_str(), properties, "PropertiesChanged",
                                                 &SessionLocks::changed, nullptr, &lock);
    lock.changes.reset(slot);
    if (status < 0) Log::warning("Cannot follow the lock of a session", status);
    ask(lock);
}

void SessionLocks::unwatch(const std::string& session) {
    locks_.erase(session);
}

bool SessionLocks::isLocked(const std::string& session) const {
    const auto lock = locks_.find(session);
    return lock == locks_.end() || lock->second.isLocked;
}

int SessionLocks::changed(sd_bus_message* signal, void* data, sd_bus_error*) {
    auto& lock = *static_cast<Lock*>(data);
    if (lock.locks->login_.hasSent(signal)) lock.locks->ask(lock);
    return 0;
}

void SessionLocks::ask(Lock& lock) {
    // One is on its way. It is never dropped for another, or whoever could
    // make the service ask could also keep it from hearing the answer.
    lock.isOutdated = lock.question != nullptr;
    if (lock.isOutdated) return;
    sd_bus_slot* slot = nullptr;
    const int status = sd_bus_call_method_async(bus_, &slot, service, lock.path.c_str(), properties, "Get",
                                                &SessionLocks::answered, &lock, "ss", sessionInterface, "LockedHint");
    if (status < 0) Log::warning("Cannot ask for the lock of a session", status);
    lock.question.reset(slot);
}

int SessionLocks::answered(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& lock = *static_cast<Lock*>(data);
    SessionLocks& self = *lock.locks;
    int isLocked = 0;
    const bool isKnown =
        sd_bus_message_is_method_error(reply, nullptr) == 0 && sd_bus_message_read(reply, "v", "b", &isLocked) > 0;
    if (!isKnown) Log::warning("logind does not tell whether a session is locked; nothing is told in it");
    const bool isOutdated = lock.isOutdated;
    // Of an answer that may be out of date only the careful half is believed.
    lock.isLocked = !isKnown || isLocked != 0 || (isOutdated && lock.isLocked);
    lock.question.reset();
    // A logind that did not answer in time may do so yet.
    if (isOutdated || sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NO_REPLY) > 0) self.ask(lock);
    if (self.onChange) self.onChange();
    return 0;
}

}  // namespace quillmere::tap
