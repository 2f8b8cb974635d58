#include "Quillmere/Platform/Linux/Doctor/MethodFinding.h"

#include <algorithm>
#include <string>

namespace quillmere {

Finding methodFinding(InputMethodFramework* framework) {
    if (framework == nullptr) return {"Input methods", "neither fcitx 5 nor IBus runs beside the desktop", {}};
    const auto state = framework->state();
    if (!state) {
        return {"Input methods", framework->name() + " runs and does not answer",
                "Restart it: until it answers, layouts alone are switched."};
    }
    const auto count = std::ranges::count(state->sources, InputSourceType::keyboardInputMode, &InputSourceRecord::type);
    Finding row{"Input methods", framework->name() + " runs, with " + std::to_string(count) + " of them", {}};
    if (count == 0)
        row.advice = "To use one, add it to the list in the settings of " + framework->name() + ".";
    else if (!state->current)
        row.advice = "Click into a text field: none has asked for input yet.";
    return row;
}

}  // namespace quillmere
