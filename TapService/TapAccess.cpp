#include "TapService/TapAccess.h"

#include "TapService/KeyTapNames.h"

#include <optional>
#include <string>

namespace quillmere::tap {

using namespace KeyTapNames::Error;

void TapAccess::revoke(uid_t user) {
    grants_.revoke(user);
    enforce();
}

void TapAccess::enforce() {
    server_.closeTaps([this](uid_t user) { return grants_.isGranted(user); });
}

std::expected<FileDescriptor, TapAccess::Refusal> TapAccess::open(uid_t user, pid_t process) {
    if (!grants_.isGranted(user))
        return std::unexpected(Refusal{notGranted, "This user has not been given access to the keyboards"});
    const std::optional<std::string> session = sessions_.activeSession(process, user);
    if (!session)
        return std::unexpected(
            Refusal{notActive, "Only a program of the active session on this machine's seat gets a tap"});
    if (!server_.payForTap(user))
        return std::unexpected(Refusal{tooOften, "This user's programs have opened too many taps in a short time"});
    FileDescriptor program = server_.openTap(user, *session);
    if (!program) return std::unexpected(Refusal{failed, "There are no descriptors left"});
    return program;
}

}  // namespace quillmere::tap
