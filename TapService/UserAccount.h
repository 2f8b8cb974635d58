#pragma once

#include "TapService/Budget.h"

#include <optional>

namespace quillmere::tap {

/// What a user's programs have cost the service. It belongs to the user, or a
/// program that opens one tap after another would never have cost anything.
struct UserAccount {
    explicit UserAccount(Time now) : messages(256, 64, now), openings(16, 1, now) {}

    /// A real program changes its interest now and then; one that floods the
    /// service would take its time from the keyboards.
    Budget messages;
    /// Every opening may have every keyboard grabbed and given back.
    Budget openings;

    unsigned int recordings = 0;         ///< how often all keys were asked for
    std::optional<Time> recordingNoted;  ///< when the journal was last told
};

}  // namespace quillmere::tap
