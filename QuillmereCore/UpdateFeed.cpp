#include "QuillmereCore/UpdateFeed.h"

#include "QuillmereCore/JsonValue.h"

#include <utility>

namespace quillmere {

namespace {

namespace bj = boost::json;

std::optional<std::string> stringMember(const bj::value& json, std::string_view key) {
    const bj::value* value = json::member(json, key);
    return value ? json::string(*value) : std::nullopt;
}

std::optional<std::int64_t> integerMember(const bj::value& json, std::string_view key) {
    const bj::value* value = json::member(json, key);
    return value ? json::integer(*value) : std::nullopt;
}

decltype(UpdateFeed::notes) decodeNotes(const bj::value* json) {
    const bj::object* object = json ? json->if_object() : nullptr;
    if (!object) return {};
    decltype(UpdateFeed::notes) notes;
    for (const auto& [language, value] : *object) {
        std::optional<std::vector<std::string>> items = json::strings(value);
        if (!items) return {};
        notes.emplace(std::string_view(language.data(), language.size()), *std::move(items));
    }
    return notes;
}

}  // namespace

std::optional<UpdateFeed> decodeUpdateFeed(std::string_view bytes) {
    const std::optional<bj::value> json = json::parse(bytes);
    if (!json) return std::nullopt;
    std::optional<std::string> version = stringMember(*json, UpdateFeed::Keys::version);
    if (!version) return std::nullopt;
    return UpdateFeed{*std::move(version), stringMember(*json, UpdateFeed::Keys::file),
                      integerMember(*json, UpdateFeed::Keys::size), stringMember(*json, UpdateFeed::Keys::downloadURL),
                      decodeNotes(json::member(*json, UpdateFeed::Keys::notes))};
}

}  // namespace quillmere
