#pragma once

#include "QuillmereCore/AppVersion.h"
#include "QuillmereCore/URL.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

/// A newer version that can be had.
struct UpdateOffer {
    AppVersion version;
    std::optional<std::int64_t> size;  ///< bytes, more than zero; absent when the feed does not tell
    std::vector<std::string> notes;    ///< release notes, item by item, plain text, none empty
    URL downloadURL;                   ///< where the user's browser fetches it

    /// Field by field; versions as AppVersion compares them.
    friend bool operator==(const UpdateOffer&, const UpdateOffer&) = default;
};

/// What a feed that could be read says: a newer version, or none.
class UpdateOutcome {
public:
    static UpdateOutcome available(UpdateOffer offer) { return UpdateOutcome(std::move(offer)); }
    static UpdateOutcome upToDate() { return UpdateOutcome(std::nullopt); }

    bool isUpToDate() const { return !offer_; }

    /// The newer version; absent when up to date.
    const std::optional<UpdateOffer>& offer() const { return offer_; }

    friend bool operator==(const UpdateOutcome&, const UpdateOutcome&) = default;

private:
    explicit UpdateOutcome(std::optional<UpdateOffer> offer) : offer_(std::move(offer)) {}

    std::optional<UpdateOffer> offer_;
};

/// Why a feed gives no outcome.
enum class UpdateFeedError {
    unreadable,  ///< no JSON object with a "version" that is one
    noDownload,  ///< a newer version, but no usable address to fetch it from
};

}  // namespace quillmere
