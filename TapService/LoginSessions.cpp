#include "TapService/LoginSessions.h"

#include "TapService/EventHandler.h"
#include "TapService/Log.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace quillmere::tap {

namespace {

constexpr const char* seat = "seat0";

struct Free {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

/// What a function of sd-login says in text; no value when it fails.
template <class Function, class... Arguments>
std::optional<std::string> text(Function function, Arguments... arguments) {
    char* value = nullptr;
    const int status = function(arguments..., &value);
    const Text owner(value);
    if (status < 0 || value == nullptr) return std::nullopt;
    return std::string(value);
}

std::vector<std::string> sessionsOfSeat() {
    char** names = nullptr;
    if (sd_seat_get_sessions(seat, &names, nullptr, nullptr) < 0 || names == nullptr) return {};
    std::vector<std::string> result;
    for (char** name = names; *name != nullptr; ++name)
        result.emplace_back(Text(*name).get());
    std::free(static_cast<void*>(names));
    return result;
}

/// A lock screen that is a session of its own.
bool isLockScreen(const std::string& session) {
    return text(sd_session_get_class, session.c_str()) == "lock-screen"
           && text(sd_session_get_state, session.c_str()) != "closing";
}

/// "user", and what newer versions of logind tell from it ("user-early").
bool isOfUser(const std::string& session) {
    return text(sd_session_get_class, session.c_str()).value_or("").starts_with("user");
}

/// Whether the user's own service manager has started this process.
bool isUsersService(pid_t process, uid_t user) {
    return text(sd_pid_get_unit, process) == "user@" + std::to_string(user) + ".service";
}

}  // namespace

bool LoginSessions::start() {
    locks_.onChange = [this] {
        if (onChange) onChange();
    };
    sd_login_monitor* monitor = nullptr;
    int status = sd_login_monitor_new(nullptr, &monitor);
    monitor_.reset(monitor);
    if (status >= 0) {
        const auto events = static_cast<std::uint32_t>(sd_login_monitor_get_events(monitor));
        status = EventHandler<&LoginSessions::loginChanged>::onReady(loop_, source_, sd_login_monitor_get_fd(monitor),
                                                                     events, this);
    }
    if (status < 0) Log::error("Cannot follow logind", status);
    return status >= 0 && locks_.start();
}

void LoginSessions::loginChanged() {
    sd_login_monitor_flush(monitor_.get());
    if (onChange) onChange();
}

std::optional<std::string> LoginSessions::activeSession(pid_t process, uid_t user) {
    std::optional<std::string> session = text(sd_pid_get_session, process);
    // A program that the user's own service manager started belongs to the
    // user and to no session; it means the one with the user's screen. A
    // system's service that runs as that user means none.
    if (!session && isUsersService(process, user)) session = text(sd_uid_get_display, user);
    if (!session || !isActive(*session, user)) return std::nullopt;
    return session;
}

bool LoginSessions::isActive(const std::string& session, uid_t user) {
    const char* id = session.c_str();
    uid_t owner = 0;
    if (sd_session_get_uid(id, &owner) < 0 || owner != user) return false;
    if (sd_session_is_remote(id) != 0 || sd_session_is_active(id) <= 0) return false;
    return isOfUser(session) && text(sd_session_get_seat, id) == seat;
}

bool LoginSessions::isLocked(const std::string& session) {
    return locks_.isLocked(session) || std::ranges::any_of(sessionsOfSeat(), isLockScreen);
}

bool LoginSessions::hasEnded(const std::string& session) {
    const std::optional<std::string> state = text(sd_session_get_state, session.c_str());
    return !state || state == "closing";
}

}  // namespace quillmere::tap
