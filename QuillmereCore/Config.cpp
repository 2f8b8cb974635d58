#include "QuillmereCore/Config.h"

#include "QuillmereCore/JsonValue.h"
#include "QuillmereCore/Utf8.h"

#include <boost/json/serialize.hpp>
#include <boost/uuid/random_generator.hpp>

#include <algorithm>

namespace quillmere {

namespace {

namespace bj = boost::json;

constexpr bool isDashPosition(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}
constexpr std::size_t uuidTextLength = 36;

std::optional<unsigned> hexDigit(char character) {
    if (character >= '0' && character <= '9') return static_cast<unsigned>(character - '0');
    if (character >= 'A' && character <= 'F') return static_cast<unsigned>(character - 'A' + 10);
    if (character >= 'a' && character <= 'f') return static_cast<unsigned>(character - 'a' + 10);
    return std::nullopt;
}

// By hand, since the library also takes braces and text without dashes, and
// writes lower case.
std::optional<UUID> parseUUID(std::string_view text) {
    if (text.size() != uuidTextLength) return std::nullopt;
    UUID id{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const std::optional<unsigned> digit = hexDigit(text[i]);
        if (!digit) return std::nullopt;
        std::uint8_t& byte = id.data[digits / 2];
        byte = static_cast<std::uint8_t>(byte * 16U + *digit);
        ++digits;
    }
    return id;
}

std::string uuidText(const UUID& id) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string text;
    text.reserve(uuidTextLength);
    for (const std::uint8_t byte : id) {
        if (isDashPosition(text.size())) text += '-';
        text += hex[byte >> 4];
        text += hex[byte & 0x0FU];
    }
    return text;
}

std::optional<std::vector<CycleGroup>> decodeGroups(const bj::value* json) {
    const bj::array* array = json ? json->if_array() : nullptr;
    if (!array) return std::nullopt;
    std::vector<CycleGroup> groups;
    groups.reserve(array->size());
    for (const bj::value& element : *array) {
        std::optional<CycleGroup> group = decodeCycleGroup(element);
        if (!group) return std::nullopt;
        groups.push_back(*std::move(group));
    }
    return groups;
}

}  // namespace

UUID makeUUID() {
    return boost::uuids::random_generator()();
}

std::optional<std::string> CycleGroup::next(const std::optional<std::string>& current) const {
    if (sourceIDs.empty()) return std::nullopt;
    const auto found = current ? std::ranges::find(sourceIDs, *current) : sourceIDs.end();
    if (found == sourceIDs.end() || std::next(found) == sourceIDs.end()) return sourceIDs.front();
    return *std::next(found);
}

const CycleGroup* Config::group(const Shortcut& shortcut) const {
    if (!active) return nullptr;
    const auto fires = [&](const CycleGroup& group) { return group.shortcut == shortcut && !group.sourceIDs.empty(); };
    const auto found = std::ranges::find_if(groups, fires);
    return found == groups.end() ? nullptr : &*found;
}

std::optional<std::string> Config::target(const Shortcut& shortcut, const std::optional<std::string>& current) const {
    const CycleGroup* fired = group(shortcut);
    return fired ? fired->next(current) : std::nullopt;
}

Config Config::defaults(std::span<const SourceInfo> available) {
    CycleGroup group{makeUUID(), Shortcut::fn, {}};
    for (const SourceInfo& source : available)
        group.sourceIDs.push_back(source.id);
    return {true, {std::move(group)}, PlateSettings()};
}

bj::value encode(const CycleGroup& group) {
    bj::object json;
    json["id"] = uuidText(group.id);
    if (group.shortcut) json["shortcut"] = encode(*group.shortcut);
    bj::array& sources = json["sourceIDs"].emplace_array();
    for (const std::string& source : group.sourceIDs)
        sources.emplace_back(utf8::repaired(source));
    return json;
}

std::optional<CycleGroup> decodeCycleGroup(const bj::value& json) {
    const bj::value* id = json::member(json, "id");
    const std::optional<std::string> idText = id ? json::string(*id) : std::nullopt;
    const std::optional<UUID> uuid = idText ? parseUUID(*idText) : std::nullopt;
    const bj::value* sourceIDs = json::member(json, "sourceIDs");
    std::optional<std::vector<std::string>> sources = sourceIDs ? json::strings(*sourceIDs) : std::nullopt;
    if (!uuid || !sources) return std::nullopt;
    CycleGroup group{*uuid, std::nullopt, *std::move(sources)};
    const bj::value* shortcut = json::member(json, "shortcut");
    if (!shortcut || shortcut->is_null()) return group;
    group.shortcut = decodeShortcut(*shortcut);
    if (!group.shortcut) return std::nullopt;
    return group;
}

std::string encodeConfig(const Config& config) {
    bj::object json;
    json["active"] = config.active;
    bj::array& groups = json["groups"].emplace_array();
    for (const CycleGroup& group : config.groups)
        groups.push_back(encode(group));
    json["plate"] = encode(config.plate);
    return bj::serialize(json);
}

std::optional<Config> decodeConfig(std::string_view bytes) {
    const std::optional<bj::value> json = json::parse(bytes);
    if (!json) return std::nullopt;
    const bj::value* active = json::member(*json, "active");
    const bool* isActive = active ? active->if_bool() : nullptr;
    std::optional<std::vector<CycleGroup>> groups = decodeGroups(json::member(*json, "groups"));
    if (!isActive || !groups) return std::nullopt;
    Config config{*isActive, *std::move(groups), PlateSettings()};
    if (const bj::value* plate = json::member(*json, "plate"))
        config.plate = decodePlateSettings(*plate).value_or(PlateSettings());
    return config;
}

}  // namespace quillmere
