#pragma once

#include "TapService/BusOwner.h"
#include "TapService/Handles.h"

#include <functional>
#include <map>
#include <string>

namespace quillmere::tap {

/// Which sessions show a lock screen, as far as logind was told (a session's
/// LockedHint). It is in none of logind's files, so it is asked for on the bus,
/// in the background.
class SessionLocks {
public:
    explicit SessionLocks(sd_bus* bus) : bus_(bus) {}

    /// False when logind cannot be followed.
    bool start();

    void watch(const std::string& session);
    void unwatch(const std::string& session);

    /// True for a session that is not watched, and as long as logind has not
    /// answered.
    bool isLocked(const std::string& session) const;

    /// Any of the answers may have changed.
    std::function<void()> onChange;

private:
    struct Lock {
        SessionLocks* locks = nullptr;
        std::string path;
        bool isLocked = true;
        /// Something has changed since the question that is on its way.
        bool isOutdated = false;
        BusSlot changes;
        BusSlot question;
    };

    void ask(Lock& lock);
    static int changed(sd_bus_message* signal, void* lock, sd_bus_error* error);
    static int answered(sd_bus_message* reply, void* lock, sd_bus_error* error);

    sd_bus* bus_;
    BusOwner login_{"org.freedesktop.login1"};
    std::map<std::string, Lock> locks_;
};

}  // namespace quillmere::tap
