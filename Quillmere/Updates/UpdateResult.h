#pragma once

#include "QuillmereCore/UpdateOutcome.h"

#include <string>
#include <variant>

namespace quillmere {

/// The newest version runs already.
struct UpToDate {
    friend bool operator==(const UpToDate&, const UpToDate&) = default;
};

/// The check came to nothing.
struct UpdateFailure {
    std::string message;  ///< for the user, a whole sentence or the system's own text

    friend bool operator==(const UpdateFailure&, const UpdateFailure&) = default;
};

/// What a check for updates has found.
using UpdateResult = std::variant<UpdateOffer, UpdateFailure, UpToDate>;

}  // namespace quillmere
