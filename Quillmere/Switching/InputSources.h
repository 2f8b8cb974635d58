#pragma once

#include "Quillmere/Platform/InputSourceService.h"
#include "QuillmereCore/Config.h"

#include <optional>
#include <string_view>
#include <vector>

namespace quillmere {

/// The rules above the platform's list of input sources. Keeps nothing: every
/// call asks the platform afresh. Main thread only.
class InputSources {
public:
    /// `service` must outlive this.
    explicit InputSources(InputSourceService& service) : service_(service) {}

    /// The sources that can be switched to, in the platform's order: enabled,
    /// select-capable layouts and input modes with an identifier. A source
    /// without a name is named by its identifier.
    std::vector<SourceInfo> available() const;

    /// The current source; absent when the platform reports none.
    std::optional<std::string> currentID() const;

    /// Makes the first switchable source with this identifier current. False
    /// when there is none (the platform is then not asked) or it refuses.
    bool select(std::string_view id) const;

private:
    std::vector<InputSourceRecord> keyboardSources() const;

    InputSourceService& service_;
};

}  // namespace quillmere
