#include "Quillmere/Switching/InputSources.h"

#include <algorithm>

namespace quillmere {

namespace {

bool isSwitchable(const InputSourceRecord& record) {
    return record.enabled && record.selectCapable
           && (record.type == InputSourceType::keyboardLayout || record.type == InputSourceType::keyboardInputMode);
}

}  // namespace

std::vector<InputSourceRecord> InputSources::keyboardSources() const {
    std::vector<InputSourceRecord> records = service_.sources();
    std::erase_if(records, [](const InputSourceRecord& record) { return !isSwitchable(record); });
    return records;
}

std::vector<SourceInfo> InputSources::available() const {
    std::vector<SourceInfo> sources;
    for (const InputSourceRecord& record : keyboardSources()) {
        if (!record.id) continue;
        sources.push_back({*record.id, record.localizedName.value_or(*record.id),
                           record.languages.empty() ? std::string() : record.languages.front()});
    }
    return sources;
}

std::optional<std::string> InputSources::currentID() const {
    return service_.currentID();
}

bool InputSources::select(std::string_view id) const {
    const std::vector<InputSourceRecord> records = keyboardSources();
    const auto match = std::ranges::find_if(records, [id](const InputSourceRecord& record) { return record.id == id; });
    return match != records.end() && service_.select(*match) == 0;
}

}  // namespace quillmere
