#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

namespace quillmere::tap {

/// Who sits in front of the machine.
class Sessions {
public:
    Sessions() = default;
    Sessions(const Sessions&) = delete;
    Sessions& operator=(const Sessions&) = delete;
    virtual ~Sessions() = default;

    /// The user's session that this process belongs to, if it is the active
    /// one of the main seat; no value for any other, a remote one too.
    virtual std::optional<std::string> activeSession(pid_t process, uid_t user) = 0;
    /// Whether this session of the user is the active one of the main seat,
    /// and a user's at all: not that of a greeter or of a lock screen.
    virtual bool isActive(const std::string& session, uid_t user) = 0;
    /// Whether its screen is locked; true as long as that is not known.
    virtual bool isLocked(const std::string& session) = 0;
    /// Whether it is being closed, or has been.
    virtual bool hasEnded(const std::string& session) = 0;

    /// From now on, and until `unwatch`, `onChange` tells of this session.
    virtual void watch(const std::string& session) = 0;
    virtual void unwatch(const std::string& session) = 0;

    /// Any of the answers may have changed.
    std::function<void()> onChange;
};

}  // namespace quillmere::tap
