#include "Quillmere/Platform/Linux/Tap/FirstEventTap.h"

#include <string>
#include <utility>

namespace quillmere {

FirstEventTap::FirstEventTap(std::vector<std::unique_ptr<EventTap>> taps, ComposedInputSources& sources)
    : sources_(sources), taps_(std::move(taps)) {
    sources_.onFrameworkChanged = [this] { arm(); };
    for (const auto& tap : taps_)
        tap->onSwitched = [this](const Shortcut& shortcut, const std::string& sourceID) {
            onSwitched(shortcut, sourceID);
        };
}

FirstEventTap::~FirstEventTap() {
    sources_.onFrameworkChanged = [] {};
}

bool FirstEventTap::install(Callback callback) {
    for (const auto& tap : taps_) {
        if (!tap->install(callback)) continue;
        use(*tap);
        return true;
    }
    return false;
}

/// Two would switch twice with each press.
void FirstEventTap::use(EventTap& tap) {
    inUse_ = &tap;
    for (const auto& other : taps_)
        if (other.get() != inUse_) other->setInterest({});
}

void FirstEventTap::enable() {
    if (inUse_ != nullptr) inUse_->enable();
}

void FirstEventTap::setInterest(const KeyInterest& interest) {
    for (const auto& tap : taps_)
        if (inUse_ == nullptr || tap.get() == inUse_) tap->setInterest(interest);
}

void FirstEventTap::arm(const std::vector<ArmedShortcut>& shortcuts) {
    shortcuts_ = shortcuts;
    arm();
}

void FirstEventTap::arm() {
    std::vector<ArmedShortcut> shortcuts = shortcuts_;
    if (sources_.framework() != nullptr)
        for (ArmedShortcut& shortcut : shortcuts)
            shortcut.sourceIDs.clear();
    for (const auto& tap : taps_)
        tap->arm(shortcuts);
}

}  // namespace quillmere
