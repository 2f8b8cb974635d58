#pragma once

#include "QuillmereCore/Config.h"
#include "QuillmereCore/UserDefaults.h"

#include <optional>
#include <string>

namespace quillmere {

/// Keeps the configuration in the user's defaults, as JSON data under one key.
class ConfigStore {
public:
    /// `defaults` must outlive the store. Does no input or output.
    ConfigStore(UserDefaults& defaults, std::string key);

    /// The stored configuration; absent when there is none that can be read.
    /// Never changes what is stored.
    std::optional<Config> load() const;

    /// Whether anything is stored, be it unreadable.
    bool isStored() const { return defaults_.data(key_).has_value(); }

    /// Replaces what is stored; never fails visibly.
    void save(const Config& config);

private:
    UserDefaults& defaults_;
    std::string key_;
};

}  // namespace quillmere
