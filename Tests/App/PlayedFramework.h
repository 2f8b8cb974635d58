#pragma once

#include "Quillmere/Platform/Linux/Sources/InputMethodFramework.h"
#include "Tests/Support/FakeInputSourceService.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

inline InputSourceRecord method(std::string id) {
    return {.id = std::move(id), .type = InputSourceType::keyboardInputMode};
}

/// A framework that says and does what the test sets.
class PlayedFramework : public InputMethodFramework {
public:
    std::string name() const override { return "played"; }
    bool isRunning() override { return isThere; }
    bool hasLayouts() const override { return typesLayouts; }
    std::optional<State> state() override { return answers ? std::optional(now) : std::nullopt; }
    bool select(const std::string& id) override {
        selected.push_back(id);
        if (obeys) now.current = id;
        return obeys;
    }

    bool isThere = true;
    bool typesLayouts = true;
    bool answers = true;
    bool obeys = true;
    State now{.sources = {layout("xkb:us"), method("fcitx:hangul"), layout("xkb:de")},
              .current = "xkb:us",
              .keyboard = "xkb:us"};
    std::vector<std::string> selected;
};

}  // namespace quillmere
