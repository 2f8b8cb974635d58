#include "Quillmere/ConfigModel.h"

#include <algorithm>
#include <utility>

namespace quillmere {

ConfigModel::ConfigModel(UserDefaults& defaults, const InputSources& sources)
    : store_(defaults, "config"), available_(sources.available()) {
    std::optional<Config> stored = store_.load();
    config_ = std::make_shared<const Config>(stored ? *std::move(stored) : Config::defaults(available_));
}

void ConfigModel::setConfig(Config config) {
    config_ = std::make_shared<const Config>(std::move(config));
    emit configChanged();
    // Read back: an observer may have changed it once more.
    store_.save(*config_);
}

void ConfigModel::setAvailable(std::vector<SourceInfo> available) {
    available_ = std::move(available);
    emit availableChanged();
}

void ConfigModel::setMayHearFn(bool may) {
    if (std::exchange(mayHearFn_, may) != may) emit mayHearFnChanged();
}

bool ConfigModel::waitsForFnInVain() const {
    const auto isOnFn = [](const CycleGroup& group) { return group.shortcut && group.shortcut->isFnAlone(); };
    return !mayHearFn_ && std::ranges::any_of(config_->groups, isOnFn);
}

void ConfigModel::startRecording(const UUID& group, ShortcutHandler handler) {
    recordingGroup_ = group;
    recorder_ = std::move(handler);
    emit recordingChanged();
}

void ConfigModel::endRecording() {
    if (!recordingGroup_ && !recorder_) return;
    recordingGroup_.reset();
    recorder_ = nullptr;
    emit recordingChanged();
}

std::string ConfigModel::name(const std::string& sourceID) const {
    const auto source = std::ranges::find(available_, sourceID, &SourceInfo::id);
    return source != available_.end() ? source->name : sourceID;
}

KeyInterest ConfigModel::interest() const {
    KeyInterest interest{.shortcuts = {}, .everyKey = static_cast<bool>(recorder_)};
    for (const CycleGroup* group : firingGroups())
        interest.shortcuts.push_back(*group->shortcut);
    return interest;
}

std::vector<ArmedShortcut> ConfigModel::armedShortcuts() const {
    std::vector<ArmedShortcut> shortcuts;
    for (const CycleGroup* group : firingGroups())
        shortcuts.push_back({.shortcut = *group->shortcut, .sourceIDs = group->sourceIDs});
    return shortcuts;
}

/// Exactly those that can fire, so that no other key is held up.
std::vector<const CycleGroup*> ConfigModel::firingGroups() const {
    std::vector<const CycleGroup*> groups;
    for (const CycleGroup& group : config_->groups)
        if (group.shortcut && config_->group(*group.shortcut) == &group) groups.push_back(&group);
    return groups;
}

}  // namespace quillmere
