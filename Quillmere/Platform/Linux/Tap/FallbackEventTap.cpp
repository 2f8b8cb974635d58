#include "Quillmere/Platform/Linux/Tap/FallbackEventTap.h"

#include <string>
#include <utility>

namespace quillmere {

FallbackEventTap::FallbackEventTap(std::unique_ptr<ServiceEventTap> service, std::unique_ptr<EventTap> displayServer)
    : service_(std::move(service)), displayServer_(std::move(displayServer)) {
    connect(service_.get(), &ServiceEventTap::lost, this, [this] { installDisplayServers(); });
    connect(service_.get(), &ServiceEventTap::opened, this, [this] { takeOver(); });
    displayServer_->onSwitched = [this](const Shortcut& shortcut, const std::string& sourceID) {
        onSwitched(shortcut, sourceID);
    };
}

bool FallbackEventTap::install(Callback callback) {
    callback_ = std::move(callback);
    if (service_->install(callback_)) {
        // The other one may have told of what it can hear, waiting for this.
        if (std::exchange(servesPartly_, false)) displayServer_->setInterest({});
        inUse_ = service_.get();
        return true;
    }
    return installDisplayServers();
}

bool FallbackEventTap::installDisplayServers() {
    displayServer_->setInterest(service_->interest());
    if (isDisplayServersInstalled_) {
        // The callback may have been told that it is disabled when the other
        // was in use already.
        displayServer_->enable();
    } else if (!displayServer_->install(callback_)) {
        servesPartly_ = true;
        return false;
    }
    servesPartly_ = false;
    isDisplayServersInstalled_ = true;
    inUse_ = displayServer_.get();
    // Not both: each press would switch twice. Not at once: its signal may be
    // what has called.
    if (!service_->isStarting()) giveUpService();
    return true;
}

void FallbackEventTap::giveUpService() {
    service_->disconnect(this);
    service_.release()->deleteLater();
}

/// Where nothing is in use yet, the next `install` will ask.
void FallbackEventTap::takeOver() {
    if (inUse_ != displayServer_.get()) return;
    // Without an interest it holds no key, and is there should the service go.
    displayServer_->setInterest({});
    inUse_ = service_.get();
    service_->install(callback_);
}

void FallbackEventTap::enable() {
    if (inUse_ != nullptr) inUse_->enable();
}

void FallbackEventTap::setInterest(const KeyInterest& interest) {
    if (service_) service_->setInterest(interest);
    if (servesPartly_ || inUse_ == displayServer_.get()) displayServer_->setInterest(interest);
}

}  // namespace quillmere
