#pragma once

#include "Quillmere/Platform/InputSourceService.h"

#include <algorithm>
#include <string>
#include <vector>

namespace quillmere {

/// A plain, enabled keyboard layout.
inline InputSourceRecord layout(std::string id, std::string name = "", std::string language = "") {
    InputSourceRecord record{.id = std::move(id), .type = InputSourceType::keyboardLayout};
    if (!name.empty()) record.localizedName = std::move(name);
    if (!language.empty()) record.languages = {std::move(language)};
    return record;
}

/// A list of sources that a test sets, and the calls made on it.
class FakeInputSourceService : public InputSourceService {
public:
    std::vector<InputSourceRecord> sources() override { return records; }
    std::optional<std::string> currentID() override {
        ++currentCalls;
        calls.emplace_back("currentID");
        return current;
    }
    int select(const InputSourceRecord& source) override {
        selected.push_back(source.id.value_or(""));
        calls.push_back("select " + selected.back());
        if (status == 0) current = source.id;
        return status;
    }

    std::vector<InputSourceRecord> records;
    std::optional<std::string> current;
    int status = 0;
    int currentCalls = 0;
    std::vector<std::string> selected;
    std::vector<std::string> calls;  ///< in order, to check it
};

}  // namespace quillmere
