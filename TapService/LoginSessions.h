#pragma once

#include "TapService/Handles.h"
#include "TapService/SessionLocks.h"
#include "TapService/Sessions.h"

namespace quillmere::tap {

/// What logind says. Nothing here waits for an answer: the files it keeps are
/// read directly, and the lock state, which is in none of them, is asked for
/// in the background.
class LoginSessions : public Sessions {
public:
    LoginSessions(sd_event* loop, sd_bus* bus) : loop_(loop), locks_(bus) {}

    /// False when logind cannot be followed.
    bool start();

    std::optional<std::string> activeSession(pid_t process, uid_t user) override;
    bool isActive(const std::string& session, uid_t user) override;
    bool isLocked(const std::string& session) override;
    bool hasEnded(const std::string& session) override;
    void watch(const std::string& session) override { locks_.watch(session); }
    void unwatch(const std::string& session) override { locks_.unwatch(session); }

private:
    void loginChanged();

    sd_event* loop_;
    SessionLocks locks_;
    LoginMonitor monitor_;
    EventSource source_;
};

}  // namespace quillmere::tap
