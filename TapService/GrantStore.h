#pragma once

#include "TapService/Handles.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>

namespace quillmere::tap {

/// Which users have been given a tap: one empty file each, named after the
/// user's id, so that an administrator needs no tool to see or to change it.
class GrantStore {
public:
    explicit GrantStore(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// `$STATE_DIRECTORY` (as the service manager sets it), else
    /// /var/lib/quillmere; in it, `grants`.
    static std::filesystem::path standardFolder();

    /// Makes the folder, and watches it; false when that is not possible.
    bool start(sd_event* loop);

    bool isGranted(uid_t user) const;
    /// False when it cannot be written down.
    bool grant(uid_t user);
    void revoke(uid_t user);

    /// A grant was taken away, by whatever means.
    std::function<void()> onRevoked;

private:
    std::filesystem::path file(uid_t user) const;

    std::filesystem::path folder_;
    EventSource source_;
};

}  // namespace quillmere::tap
