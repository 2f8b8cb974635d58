#pragma once

#include "Tests/Machine/SystemBus.h"
#include "Tests/Support/ChildProcess.h"

#include <functional>
#include <optional>
#include <string>

#include <sys/types.h>

namespace quillmere::machine {

/// People of the guest, by their user ids.
inline constexpr uid_t writer = 1500;
inline constexpr uid_t stranger = 1501;

/// The login session of a person, as a display manager or sshd opens one. It
/// ends with this object. Errors are thrown as SupportError.
class Session {
public:
    struct Form {
        uid_t user = writer;
        unsigned terminal = 1;  ///< the virtual terminal; 0: none, and no seat
        const char* type = "tty";
        const char* kind = "user";  ///< logind's class
        bool isRemote = false;
    };

    explicit Session(const Form& form);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const std::string& id() const { return id_; }
    /// Its object of logind on the bus.
    const std::string& path() const { return path_; }
    uid_t user() const { return user_; }

    /// Switches to its terminal; returns when logind says that it is active.
    void activate();

    /// Tells the system that its screen is locked, or not any more, as a lock
    /// screen does.
    void setLocked(bool isLocked);

    /// To be run in a new child process, which thereby belongs to this session.
    std::function<void()> entrance() const;
    /// The same for a process of another user.
    std::function<void()> entrance(uid_t user) const;
    /// The same for a process of the session's user that belongs to no session:
    /// to a service of the system, or to one of the user's own.
    std::function<void()> systemService() const { return becoming(user_); }
    std::function<void()> usersService() const;
    /// The same for anybody's process.
    static std::function<void()> becoming(uid_t user);
    /// What its processes have in their environment.
    support::Environment environment() const;

private:
    bool isActive();

    uid_t user_;
    std::string id_;
    std::string path_;
    int lifeline_ = -1;  ///< the session ends when it is closed
    std::optional<support::ChildProcess> leader_;
    std::string group_;  ///< the file that takes processes into the session
    SystemBus bus_;
};

}  // namespace quillmere::machine
