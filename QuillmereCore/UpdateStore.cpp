#include "QuillmereCore/UpdateStore.h"

#include <string>
#include <string_view>

namespace quillmere {

namespace {

constexpr std::string_view automaticKey = "updateAutomatic";
constexpr std::string_view lastCheckKey = "updateLastCheck";
constexpr std::string_view skippedKey = "updateSkipped";

}  // namespace

UpdateStore::UpdateStore(UserDefaults& defaults) : defaults_(defaults) {}

bool UpdateStore::automatic() const {
    return defaults_.boolean(automaticKey).value_or(true);
}

void UpdateStore::setAutomatic(bool automatic) {
    defaults_.setBoolean(automaticKey, automatic);
}

bool UpdateStore::isStored() const {
    return defaults_.boolean(automaticKey).has_value();
}

std::optional<Date> UpdateStore::lastCheck() const {
    return defaults_.date(lastCheckKey);
}

void UpdateStore::setLastCheck(std::optional<Date> date) {
    if (date)
        defaults_.setDate(lastCheckKey, *date);
    else
        defaults_.remove(lastCheckKey);
}

std::optional<AppVersion> UpdateStore::skipped() const {
    const std::optional<std::string> text = defaults_.string(skippedKey);
    return text ? AppVersion::parse(*text) : std::nullopt;
}

void UpdateStore::setSkipped(const std::optional<AppVersion>& version) {
    if (version)
        defaults_.setString(skippedKey, version->description());
    else
        defaults_.remove(skippedKey);
}

}  // namespace quillmere
