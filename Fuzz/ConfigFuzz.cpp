#include "Fuzz/Require.h"
#include "QuillmereCore/Config.h"
#include "QuillmereCore/Utf8.h"

#include <algorithm>
#include <string_view>

namespace quillmere {
namespace {

void checkSwitching(const Config& config, const CycleGroup& group) {
    const auto first = group.next(std::nullopt);
    require(first.has_value() == !group.sourceIDs.empty(), "a group has a next source when it has any");
    for (const std::string& source : group.sourceIDs)
        require(std::ranges::find(group.sourceIDs, group.next(source).value()) != group.sourceIDs.end(),
                "the next source is one of the group's");
    if (!group.shortcut) return;
    const CycleGroup* fired = config.group(*group.shortcut);
    require(!fired || (fired->shortcut == group.shortcut && !fired->sourceIDs.empty()), "what fires has the shortcut");
    require(config.target(*group.shortcut, first).has_value() == (fired != nullptr), "what fires names a source");
    require((fired != nullptr) == config.active || group.sourceIDs.empty(), "a group with sources can be fired");
}

void check(std::string_view bytes) {
    const std::optional<Config> config = decodeConfig(bytes);
    if (!config) return;
    const std::string written = encodeConfig(*config);
    require(utf8::isWellFormed(written), "what is written is UTF-8");
    require(decodeConfig(written) == config, "what is written reads back as the same configuration");
    require(encodeConfig(decodeConfig(written).value()) == written, "writing it again gives the same text");
    const double opacity = config->plate.opacity().value_or(0.0);
    require(opacity >= 0.0 && opacity <= 1.0, "an opacity lies between 0 and 1");
    for (const CycleGroup& group : config->groups)
        checkSwitching(*config, group);
}

}  // namespace
}  // namespace quillmere

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    quillmere::check({data, size});
    return 0;
}
