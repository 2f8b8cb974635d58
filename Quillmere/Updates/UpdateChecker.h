#pragma once

#include "Quillmere/Platform/Bundle.h"
#include "Quillmere/Updates/UpdateResult.h"
#include "QuillmereCore/AppVersion.h"
#include "QuillmereCore/URL.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

class FeedSession;

/// Asks the feed whether there is a newer version. A value.
struct UpdateChecker {
    URL feedURL;
    AppVersion current;  ///< the version that runs

    /// The checker that the bundle's keys "QuillmereUpdateFeed" (blanks and
    /// tabs around the address are ignored) and "CFBundleShortVersionString"
    /// (version 0 without a usable one) describe; none without a usable feed.
    static std::optional<UpdateChecker> configured(const Bundle& bundle);

    /// Fetches the feed once, with release notes for `preferredLanguages` (the
    /// preferred one first), and hands what it says to `completion`: exactly
    /// once, later, on the main thread, unless the session is destroyed before.
    /// The checker itself need not last. Main thread.
    void check(FeedSession& session, const std::vector<std::string>& preferredLanguages,
               std::function<void(UpdateResult)> completion) const;
};

}  // namespace quillmere
