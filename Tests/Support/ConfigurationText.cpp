#include "Tests/Support/ConfigurationText.h"

namespace quillmere::support {

namespace {

std::string listText(const std::vector<std::string>& elements) {
    std::string list;
    for (const std::string& element : elements) {
        if (!list.empty()) list += ',';
        list += element;
    }
    return "[" + list + "]";
}

std::string groupText(const StoredGroup& group, std::size_t number) {
    std::vector<std::string> sources;
    for (const std::string& source : group.sources)
        sources.push_back("\"" + source + "\"");
    return R"({"id":"00000000-0000-4000-8000-00000000000)" + std::to_string(number) + R"(","shortcut":{"keyCode":)"
           + std::to_string(group.keyCode) + R"(,"modifiers":)" + std::to_string(group.modifiers) + R"(},"sourceIDs":)"
           + listText(sources) + "}";
}

}  // namespace

std::string configurationText(const std::vector<StoredGroup>& groups, bool active, const std::string& plate) {
    std::vector<std::string> texts;
    for (const StoredGroup& group : groups)
        texts.push_back(groupText(group, texts.size()));
    return std::string(R"({"active":)") + (active ? "true" : "false") + R"(,"groups":)" + listText(texts)
           + R"(,"plate":)" + plate + "}";
}

}  // namespace quillmere::support
