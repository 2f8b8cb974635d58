#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// The information keys that the packager ships beside the program.
class Bundle {
public:
    Bundle() = default;
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;
    virtual ~Bundle() = default;

    /// The text under `key`; absent when it is missing or no text.
    virtual std::optional<std::string> string(std::string_view key) const = 0;
};

}  // namespace quillmere
