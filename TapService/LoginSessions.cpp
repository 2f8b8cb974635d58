#include "TapService/LoginSessions.h"

#include "TapService/Log.h"

#include <cstdlib>
#include <memory>
#include <string_view>

namespace quillmere::tap {

namespace {

constexpr const char* service = "org.freedesktop.login1";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";

struct Free {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

template <class Function, class... Arguments>
std::optional<std::string> text(Function function, Arguments... arguments) {
    char* value = nullptr;
    const int status = function(arguments..., &value);
    const Text owner(value);
    if (status < 0 || value == nullptr) return std::nullopt;
    return std::string(value);
}

std::optional<std::string> pathOf(const std::string& session) {
    return text([&session](char** path) {
        return sd_bus_path_encode("/org/freedesktop/login1/session", session.c_str(), path);
    });
}

}  // namespace

bool LoginSessions::start() {
    sd_login_monitor* monitor = nullptr;
    int status = sd_login_monitor_new(nullptr, &monitor);
    monitor_.reset(monitor);
    sd_event_source* source = nullptr;
    const auto handler = [](sd_event_source*, int, std::uint32_t, void* data) {
        auto* self = static_cast<LoginSessions*>(data);
        sd_login_monitor_flush(self->monitor_.get());
        if (self->onChange) self->onChange();
        return 0;
    };
    if (status >= 0) {
        const auto events = static_cast<std::uint32_t>(sd_login_monitor_get_events(monitor));
        status = sd_event_add_io(loop_, &source, sd_login_monitor_get_fd(monitor), events, handler, this);
        source_.reset(source);
    }
    if (status < 0) Log::error("Cannot follow logind", status);
    return status >= 0;
}

std::optional<std::string> LoginSessions::activeSession(pid_t process, uid_t user) {
    std::optional<std::string> session = text(sd_pid_get_session, process);
    // A program that the user's own service manager started belongs to the
    // user and to no session; it means the one with the user's screen.
    if (!session) session = text(sd_uid_get_display, user);
    if (!session || !isActive(*session, user)) return std::nullopt;
    return session;
}

bool LoginSessions::isActive(const std::string& session, uid_t user) {
    const char* id = session.c_str();
    uid_t owner = 0;
    if (sd_session_get_uid(id, &owner) < 0 || owner != user) return false;
    if (sd_session_is_remote(id) != 0 || sd_session_is_active(id) <= 0) return false;
    return text(sd_session_get_seat, id) == "seat0";
}

bool LoginSessions::isLocked(const std::string& session) {
    const auto lock = locks_.find(session);
    return lock == locks_.end() || lock->second.isLocked;
}

void LoginSessions::watch(const std::string& session) {
    const std::optional<std::string> path = pathOf(session);
    if (!path || locks_.contains(session)) return;
    Lock& lock = locks_[session];
    sd_bus_slot* slot = nullptr;
    const auto handler = [](sd_bus_message* signal, void* data, sd_bus_error*) {
        auto* self = static_cast<LoginSessions*>(data);
        for (const auto& [name, watched] : self->locks_) {
            if (pathOf(name) == sd_bus_message_get_path(signal)) self->ask(name);
        }
        return 0;
    };
    const int status = sd_bus_match_signal_async(bus_, &slot, service, path->c_str(), "org.freedesktop.DBus.Properties",
                                                 "PropertiesChanged", handler, nullptr, this);
    lock.changes.reset(slot);
    if (status < 0) Log::warning("Cannot follow the lock of a session", status);
    ask(session);
}

void LoginSessions::unwatch(const std::string& session) {
    locks_.erase(session);
}

void LoginSessions::ask(const std::string& session) {
    const std::optional<std::string> path = pathOf(session);
    if (!path) return;
    sd_bus_slot* slot = nullptr;
    const int status =
        sd_bus_call_method_async(bus_, &slot, service, path->c_str(), "org.freedesktop.DBus.Properties", "Get",
                                 &LoginSessions::lockAnswered, this, "ss", sessionInterface, "LockedHint");
    if (status < 0) Log::warning("Cannot ask for the lock of a session", status);
    // An answer to an earlier question would be out of date.
    locks_[session].question.reset(slot);
}

int LoginSessions::lockAnswered(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto* self = static_cast<LoginSessions*>(data);
    sd_bus* bus = sd_bus_message_get_bus(reply);
    int isLocked = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) != 0 || sd_bus_message_read(reply, "v", "b", &isLocked) < 0) {
        Log::warning("logind does not tell whether a session is locked; nothing can be recorded in it");
        return 0;
    }
    for (auto& [name, lock] : self->locks_) {
        if (lock.question.get() == sd_bus_get_current_slot(bus)) lock.isLocked = isLocked != 0;
    }
    if (self->onChange) self->onChange();
    return 0;
}

}  // namespace quillmere::tap
