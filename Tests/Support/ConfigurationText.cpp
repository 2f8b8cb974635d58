#include "Tests/Support/ConfigurationText.h"

namespace quillmere::support {

namespace {

std::string groupText(const StoredGroup& group, std::size_t number) {
    std::string sources;
    for (const std::string& source : group.sources)
        sources += (sources.empty() ? "\"" : ",\"") + source + "\"";
    return R"({"id":"00000000-0000-4000-8000-00000000000)" + std::to_string(number) + R"(","shortcut":{"keyCode":)"
           + std::to_string(group.keyCode) + R"(,"modifiers":)" + std::to_string(group.modifiers) + R"(},"sourceIDs":[)"
           + sources + "]}";
}

}  // namespace

std::string configurationText(const std::vector<StoredGroup>& groups, bool active, const std::string& plate) {
    std::string list;
    for (std::size_t i = 0; i < groups.size(); ++i)
        list += (i == 0 ? "" : ",") + groupText(groups[i], i);
    return std::string(R"({"active":)") + (active ? "true" : "false") + R"(,"groups":[)" + list + R"(],"plate":)"
           + plate + "}";
}

}  // namespace quillmere::support
