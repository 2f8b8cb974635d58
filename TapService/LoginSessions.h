#pragma once

#include "TapService/Handles.h"
#include "TapService/Sessions.h"

#include <map>

namespace quillmere::tap {

/// What logind says. Nothing here waits for an answer: the files it keeps are
/// read directly, and the lock state, which is in none of them, is asked for
/// in the background.
class LoginSessions : public Sessions {
public:
    LoginSessions(sd_event* loop, sd_bus* bus) : loop_(loop), bus_(bus) {}

    /// False when logind cannot be followed.
    bool start();

    std::optional<std::string> activeSession(pid_t process, uid_t user) override;
    bool isActive(const std::string& session, uid_t user) override;
    bool isLocked(const std::string& session) override;
    void watch(const std::string& session) override;
    void unwatch(const std::string& session) override;

private:
    struct Lock {
        bool isLocked = true;
        BusSlot changes;
        BusSlot question;
    };

    void ask(const std::string& session);
    static int lockAnswered(sd_bus_message* reply, void* self, sd_bus_error* error);

    sd_event* loop_;
    sd_bus* bus_;
    LoginMonitor monitor_;
    EventSource source_;
    std::map<std::string, Lock> locks_;
};

}  // namespace quillmere::tap
