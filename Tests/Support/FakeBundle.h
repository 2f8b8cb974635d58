#pragma once

#include "Quillmere/Platform/Bundle.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// Information keys that a test sets.
class FakeBundle : public Bundle {
public:
    std::optional<std::string> string(std::string_view key) const override {
        const auto found = values.find(key);
        return found != values.end() ? std::optional(found->second) : std::nullopt;
    }

    std::map<std::string, std::string, std::less<>> values;
};

}  // namespace quillmere
