#pragma once

#include "TapService/Grants.h"
#include "TapService/Handles.h"
#include "TapService/Sessions.h"
#include "TapService/TapServer.h"

#include <sys/types.h>

#include <expected>

namespace quillmere::tap {

/// Who gets a tap and who keeps it: the rules behind the calls on the bus.
class TapAccess {
public:
    /// Why there is none, as the bus tells it.
    struct Refusal {
        const char* error;  ///< of `KeyTapNames::Error`
        const char* message;
    };

    /// All must outlive this.
    TapAccess(Grants& grants, Sessions& sessions, TapServer& server)
        : grants_(grants), sessions_(sessions), server_(server) {}

    bool has(uid_t user) const { return grants_.isGranted(user); }
    /// An administrator has said yes; false when it cannot be remembered.
    bool grant(uid_t user) { return grants_.grant(user); }
    /// The user's taps close at once.
    void revoke(uid_t user);
    /// Closes the taps of everybody without a grant.
    void enforce();

    /// The program's end of a new tap for this process of the user.
    std::expected<FileDescriptor, Refusal> open(uid_t user, pid_t process);

private:
    Grants& grants_;
    Sessions& sessions_;
    TapServer& server_;
};

}  // namespace quillmere::tap
