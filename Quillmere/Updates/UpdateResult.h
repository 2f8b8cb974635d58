#pragma once

#include "QuillmereCore/UpdateOutcome.h"

#include <string>
#include <utility>
#include <variant>

namespace quillmere {

/// What a check for updates has found: a newer version, that the newest one
/// runs already, or why it came to nothing.
class UpdateResult {
public:
    static UpdateResult available(UpdateOffer offer) { return UpdateResult(std::move(offer)); }
    static UpdateResult upToDate() { return UpdateResult(std::monostate()); }
    /// `message` is for the user: a whole sentence, or the system's own text.
    static UpdateResult failed(std::string message) { return UpdateResult(std::move(message)); }

    /// The newer version; null in the other cases.
    const UpdateOffer* offer() const { return std::get_if<UpdateOffer>(&content_); }
    /// What to tell the user of a failure; null in the other cases.
    const std::string* failure() const { return std::get_if<std::string>(&content_); }
    bool isUpToDate() const { return std::holds_alternative<std::monostate>(content_); }

    friend bool operator==(const UpdateResult&, const UpdateResult&) = default;

private:
    using Content = std::variant<std::monostate, UpdateOffer, std::string>;

    explicit UpdateResult(Content content) : content_(std::move(content)) {}

    Content content_;
};

}  // namespace quillmere
