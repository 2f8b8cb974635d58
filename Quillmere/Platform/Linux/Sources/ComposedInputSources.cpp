#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

constexpr int statusSwitched = 0;
constexpr int statusRefused = 1;

bool isLayout(const InputSourceRecord& record) {
    return record.type == InputSourceType::keyboardLayout;
}

const InputSourceRecord* find(const std::vector<InputSourceRecord>& records, const std::optional<std::string>& id) {
    const auto found = std::ranges::find(records, id, &InputSourceRecord::id);
    return !id || found == records.end() ? nullptr : &*found;
}

bool isMethod(const InputMethodFramework::State& state, const std::optional<std::string>& id) {
    const InputSourceRecord* const record = find(state.sources, id);
    return record != nullptr && !isLayout(*record);
}

}  // namespace

ComposedInputSources::ComposedInputSources(std::unique_ptr<InputSourceService> desktop,
                                           std::vector<std::unique_ptr<InputMethodFramework>> frameworks)
    : desktop_(std::move(desktop)), frameworks_(std::move(frameworks)) {
    std::erase(frameworks_, nullptr);
    for (const auto& framework : frameworks_)
        framework->onRunningChanged = [this] { onFrameworkChanged(); };
}

std::vector<InputSourceRecord> ComposedInputSources::sources() {
    std::vector<InputSourceRecord> layouts = desktop_->sources();
    InputMethodFramework* const running = framework();
    const std::optional<State> state = running == nullptr ? std::nullopt : running->state();
    if (!state) return layouts;
    if (isFrameworksAlone(layouts, *state)) return state->sources;
    std::ranges::copy_if(state->sources, std::back_inserter(layouts), std::not_fn(isLayout));
    return layouts;
}

std::optional<std::string> ComposedInputSources::currentID() {
    InputMethodFramework* const running = framework();
    const std::optional<State> state = running == nullptr ? std::nullopt : running->state();
    if (!state || !state->current) return desktop_->currentID();
    if (isMethod(*state, state->current) || isFrameworksAlone(desktop_->sources(), *state)) return state->current;
    return desktop_->currentID();
}

int ComposedInputSources::select(const InputSourceRecord& source) {
    InputMethodFramework* const running = framework();
    const std::optional<State> state = running == nullptr ? std::nullopt : running->state();
    if (!state) return desktop_->select(source);
    const std::vector<InputSourceRecord> layouts = desktop_->sources();
    if (isFrameworksAlone(layouts, *state)) return selectOfFramework(source, *state);
    if (find(layouts, source.id) != nullptr) return selectLayout(source, *state);
    if (!isMethod(*state, source.id) || framework() == nullptr || !framework()->select(*source.id))
        return statusRefused;
    // A method makes its characters of those of the plain keyboard beside it: of
    // Cyrillic letters it would make none.
    const InputSourceRecord* const read = find(layouts, state->keyboard);
    return read == nullptr || desktop_->currentID() == read->id ? statusSwitched : desktop_->select(*read);
}

InputMethodFramework* ComposedInputSources::framework() {
    const auto found = std::ranges::find_if(frameworks_, [](const auto& each) { return each->isRunning(); });
    return found == frameworks_.end() ? nullptr : found->get();
}

bool ComposedInputSources::isFrameworksAlone(const std::vector<InputSourceRecord>& layouts, const State& state) {
    return layouts.size() <= 1 && !state.sources.empty() && framework() != nullptr && framework()->hasLayouts();
}

int ComposedInputSources::selectOfFramework(const InputSourceRecord& source, const State& state) {
    const InputSourceRecord* const listed = find(state.sources, source.id);
    if (listed == nullptr || framework() == nullptr) return statusRefused;
    if (framework()->select(*listed->id)) return statusSwitched;
    // No window takes input, so the desktop's own layout is all there is.
    return isLayout(*listed) && !state.current ? desktop_->select(source) : statusRefused;
}

int ComposedInputSources::selectLayout(const InputSourceRecord& source, const State& state) {
    const bool isTyped = state.current && state.current != state.keyboard;
    if (isTyped && (!state.keyboard || framework() == nullptr || !framework()->select(*state.keyboard)))
        return statusRefused;
    return desktop_->select(source);
}

}  // namespace quillmere
