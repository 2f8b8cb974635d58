#include "QuillmereCore/ConfigStore.h"

#include <utility>

namespace quillmere {

ConfigStore::ConfigStore(UserDefaults& defaults, std::string key) : defaults_(defaults), key_(std::move(key)) {}

std::optional<Config> ConfigStore::load() const {
    const std::optional<std::string> bytes = defaults_.data(key_);
    return bytes ? decodeConfig(*bytes) : std::nullopt;
}

void ConfigStore::save(const Config& config) {
    defaults_.setData(key_, encodeConfig(config));
}

}  // namespace quillmere
