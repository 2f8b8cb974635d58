#pragma once

#include "TapService/Grants.h"
#include "TapService/Handles.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace quillmere::tap {

/// Which users have been given a tap: a file each, named after the user's id
/// and holding the user's name, so that an administrator needs no tool to see
/// or to change it.
///
/// A grant is the user's, not the number's: once the account has gone it is
/// void, and whoever gets the number next starts without. Accounts that are not
/// in the computer's own list (of a network) have no name there; their grants
/// are empty files, and hold for the number.
class GrantStore : public Grants {
public:
    /// `users` is the computer's list of accounts.
    explicit GrantStore(std::filesystem::path folder, std::filesystem::path users = "/etc/passwd")
        : folder_(std::move(folder)), users_(std::move(users)) {}

    /// `$STATE_DIRECTORY` (as the service manager sets it), else
    /// /var/lib/quillmere; in it, `grants`.
    static std::filesystem::path standardFolder();

    /// Makes the folder, and watches it and the list of accounts; false when
    /// that is not possible.
    bool start(sd_event* loop);

    bool isGranted(uid_t user) const override;
    bool grant(uid_t user) override;
    void revoke(uid_t user) override;

    /// A grant was taken away, by whatever means.
    std::function<void()> onRevoked;

private:
    std::filesystem::path file(uid_t user) const;
    /// The name of the account; empty when the list has none.
    std::string nameOf(uid_t user) const;
    /// The name in the file; no value without a grant.
    std::optional<std::string> grantedName(uid_t user) const;
    void grantsChanged(const inotify_event& event);
    void usersChanged(const inotify_event& event);
    /// Writes names into the empty files that an administrator has made, and
    /// removes those of accounts that have gone.
    void tidy();

    std::filesystem::path folder_;
    std::filesystem::path users_;
    EventSource grantsSource_;
    EventSource usersSource_;
};

}  // namespace quillmere::tap
