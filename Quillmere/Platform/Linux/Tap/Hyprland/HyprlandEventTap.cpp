#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandEventTap.h"

#include "Quillmere/Platform/Linux/Tap/FlagWord.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace quillmere {

using namespace std::chrono_literals;

HyprlandEventTap::HyprlandEventTap(const std::string& folder, InputSourceService& sources)
    : folder_(folder), sources_(sources) {
    // A desktop that is starting, or has much to do.
    again_.setInterval(250ms);
    again_.setSingleShot(true);
    connect(&again_, &QTimer::timeout, this, &HyprlandEventTap::tell);
    open();
}

HyprlandEventTap::~HyprlandEventTap() = default;

bool HyprlandEventTap::open() {
    binds_ = HyprlandKeyBinds::create(folder_);
    if (!binds_) return false;
    connect(binds_.get(), &HyprlandKeyBinds::pressed, this, &HyprlandEventTap::notePressed);
    connect(binds_.get(), &HyprlandKeyBinds::forgotten, this, [this] {
        reserved_.reset();
        tell();
    });
    return true;
}

bool HyprlandEventTap::install(Callback callback) {
    if (!binds_ && !open()) return false;
    callback_ = std::move(callback);
    if (!std::exchange(isInstalled_, true)) tell();
    return deliversAll();
}

bool HyprlandEventTap::deliversAll() const {
    const bool isRefused = binds_ && binds_->isRefused();
    return !isRefused && std::ranges::none_of(interest_.shortcuts, &Shortcut::isFnAlone);
}

void HyprlandEventTap::setInterest(const KeyInterest& interest) {
    if (interest == interest_) return;
    interest_ = interest;
    tell();
}

/// Binds what is wanted, when that makes a difference.
void HyprlandEventTap::tell() {
    if (!isInstalled_) return;
    const std::optional<std::vector<HyprlandBind>> binds = wanted();
    if (!binds_->set(binds.value_or(std::vector<HyprlandBind>())) || !binds) again_.start();
}

/// Absent when it is not known for want of an answer.
std::optional<std::vector<HyprlandBind>> HyprlandEventTap::wanted() {
    std::vector<HyprlandBind> wanted;
    // While one is recorded the present ones must get to the window, too.
    if (interest_.everyKey) return wanted;
    if (!interest_.shortcuts.empty() && !reserved_) reserved_ = binds_->reserved();
    if (!interest_.shortcuts.empty() && !reserved_) return std::nullopt;
    std::vector<Shortcut> taken;
    std::vector<std::string> layouts;
    if (!interest_.shortcuts.empty())
        for (const InputSourceRecord& record : sources_.sources())
            layouts.push_back(record.id.value_or(std::string()));
    for (const Shortcut& shortcut : interest_.shortcuts)
        if (reserved_->has(shortcut, layouts))
            taken.push_back(shortcut);
        else
            std::ranges::copy(hyprlandBinds(shortcut), std::back_inserter(wanted));
    taken_.set(std::move(taken));
    return wanted;
}

/// It tells of no release. A held key is not told of again.
void HyprlandEventTap::notePressed(const HyprlandBind& bind) {
    callback_(
        {.type = KeyEventType::keyDown, .keyCode = bind.shortcut.keyCode, .flags = flagWord(bind.shortcut.modifiers)});
    callback_({.type = KeyEventType::keyUp, .keyCode = bind.shortcut.keyCode, .flags = {}});
}

}  // namespace quillmere
