#include "Quillmere/Platform/Linux/Tap/FallbackEventTap.h"

#include <string>
#include <utility>

namespace quillmere {

FallbackEventTap::FallbackEventTap(std::unique_ptr<ServiceEventTap> service, std::unique_ptr<EventTap> desktop)
    : service_(std::move(service)), desktop_(std::move(desktop)) {
    connect(service_.get(), &ServiceEventTap::lost, this, [this] { installDesktops(); });
    connect(service_.get(), &ServiceEventTap::opened, this, [this] { takeOver(); });
    desktop_->onSwitched = [this](const Shortcut& shortcut, const std::string& sourceID) {
        onSwitched(shortcut, sourceID);
    };
}

bool FallbackEventTap::install(Callback callback) {
    callback_ = std::move(callback);
    if (!service_->install(callback_)) return installDesktops();
    use(*service_);
    return true;
}

bool FallbackEventTap::installDesktops() {
    use(*desktop_);
    if (isDesktopsInstalled_ && desktop_->deliversAll()) {
        // The callback may have been told that it is disabled when the service's
        // was in use already.
        desktop_->enable();
        return true;
    }
    const bool deliversAll = desktop_->install(callback_);
    isDesktopsInstalled_ = isDesktopsInstalled_ || deliversAll;
    return deliversAll;
}

/// Where nothing is in use yet, the next `install` will ask.
void FallbackEventTap::takeOver() {
    if (inUse_ != desktop_.get()) return;
    use(*service_);
    service_->install(callback_);
}

/// The other one has no interest then, holds no key, and is there should this
/// one go: with both, each press would switch twice.
void FallbackEventTap::use(EventTap& tap) {
    const bool isOther = std::exchange(inUse_, &tap) != &tap;
    EventTap& other = usesService() ? *desktop_ : static_cast<EventTap&>(*service_);
    other.setInterest({});
    tap.setInterest(interest_);
    record();
    if (isOther) emit tapChanged();
}

void FallbackEventTap::enable() {
    if (inUse_ != nullptr) inUse_->enable();
}

void FallbackEventTap::setInterest(const KeyInterest& interest) {
    interest_ = interest;
    EventTap& tap = inUse_ == nullptr ? static_cast<EventTap&>(*service_) : *inUse_;
    tap.setInterest(interest);
    record();
}

bool FallbackEventTap::deliversAll() const {
    return inUse_ != desktop_.get() || desktop_->deliversAll();
}

void FallbackEventTap::record() {
    const bool isWanted = interest_.everyKey && inUse_ == desktop_.get();
    if (isWanted == (recordedKeys_ != nullptr)) return;
    if (isWanted)
        recordedKeys_ = std::make_unique<RecordedKeys>(callback_);
    else
        // It may be what has called.
        recordedKeys_.release()->deleteLater();
}

}  // namespace quillmere
