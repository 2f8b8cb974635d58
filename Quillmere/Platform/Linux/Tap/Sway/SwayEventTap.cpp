#include "Quillmere/Platform/Linux/Tap/Sway/SwayEventTap.h"

#include "Quillmere/Platform/Linux/Tap/FlagWord.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace quillmere {

using namespace std::chrono_literals;

SwayEventTap::SwayEventTap(const std::string& socket, InputSourceService& sources)
    : socket_(socket), sources_(sources) {
    // A desktop that is starting, or has much to do.
    again_.setInterval(250ms);
    again_.setSingleShot(true);
    connect(&again_, &QTimer::timeout, this, &SwayEventTap::tell);
    open();
}

SwayEventTap::~SwayEventTap() = default;

bool SwayEventTap::open() {
    bindings_ = SwayKeyBindings::create(socket_);
    if (!bindings_) return false;
    connect(bindings_.get(), &SwayKeyBindings::pressed, this, &SwayEventTap::notePressed);
    connect(bindings_.get(), &SwayKeyBindings::layoutsChanged, this, &SwayEventTap::tellTwice);
    connect(bindings_.get(), &SwayKeyBindings::forgotten, this, [this] {
        reserved_.reset();
        tellTwice();
    });
    return true;
}

bool SwayEventTap::install(Callback callback) {
    if (!bindings_ && !open()) return false;
    callback_ = std::move(callback);
    if (!std::exchange(isInstalled_, true)) tell();
    return deliversAll();
}

bool SwayEventTap::deliversAll() const {
    return std::ranges::none_of(interest_.shortcuts, &Shortcut::isFnAlone);
}

void SwayEventTap::setInterest(const KeyInterest& interest) {
    if (interest == interest_) return;
    interest_ = interest;
    tell();
}

void SwayEventTap::arm(const std::vector<ArmedShortcut>& shortcuts) {
    if (shortcuts == shortcuts_) return;
    shortcuts_ = shortcuts;
    tell();
}

/// It tells of no release. A held key is not told of again.
void SwayEventTap::notePressed(const SwayBinding& binding) {
    const Shortcut& shortcut = binding.shortcut;
    if (binding.step) return onSwitched(shortcut, binding.step->sourceID);
    callback_({.type = KeyEventType::keyDown, .keyCode = shortcut.keyCode, .flags = flagWord(shortcut.modifiers)});
    callback_({.type = KeyEventType::keyUp, .keyCode = shortcut.keyCode, .flags = {}});
}

/// Binds what is wanted, when that makes a difference.
void SwayEventTap::tell() {
    if (!isInstalled_) return;
    if (!bindings_->set(wanted()) || isUntold()) again_.start();
}

/// While sway sets its keyboards up it may answer too late to who asks for its
/// layouts, and then the list is what it was before.
void SwayEventTap::tellTwice() {
    again_.start();
    tell();
}

/// Whether what is wanted is not known for want of an answer.
bool SwayEventTap::isUntold() const {
    return !reserved_ && !interest_.everyKey && !interest_.shortcuts.empty();
}

std::vector<SwayBinding> SwayEventTap::wanted() {
    std::vector<SwayBinding> wanted;
    // While one is recorded the present ones must get to the window, too.
    if (interest_.everyKey) return wanted;
    if (!interest_.shortcuts.empty() && !reserved_) reserved_ = bindings_->reserved();
    if (interest_.shortcuts.empty() || !reserved_) {
        taken_.set({});
        return wanted;
    }
    std::vector<Shortcut> taken;
    std::vector<std::string> layouts;
    for (const InputSourceRecord& record : sources_.sources())
        layouts.push_back(record.id.value_or(std::string()));
    for (const ArmedShortcut& shortcut : shortcuts_) {
        if (!isWanted(shortcut.shortcut)) continue;
        if (reserved_->has(shortcut.shortcut, layouts))
            taken.push_back(shortcut.shortcut);
        else
            std::ranges::copy(swayBindings(shortcut, layouts), std::back_inserter(wanted));
    }
    taken_.set(std::move(taken));
    return wanted;
}

bool SwayEventTap::isWanted(const Shortcut& shortcut) const {
    return std::ranges::find(interest_.shortcuts, shortcut) != interest_.shortcuts.end();
}

}  // namespace quillmere
