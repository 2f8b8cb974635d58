#include "Quillmere/Platform/Linux/FallbackEventTap.h"

#include <utility>

namespace quillmere {

FallbackEventTap::FallbackEventTap(std::unique_ptr<ServiceEventTap> service, std::unique_ptr<EventTap> displayServer)
    : service_(std::move(service)), displayServer_(std::move(displayServer)) {
    connect(service_.get(), &ServiceEventTap::lost, this, [this] { installDisplayServers(); });
}

bool FallbackEventTap::install(Callback callback) {
    callback_ = std::move(callback);
    if (service_->install(callback_)) {
        installed_ = service_.get();
        return true;
    }
    return installDisplayServers();
}

bool FallbackEventTap::installDisplayServers() {
    if (!displayServer_->install(callback_)) return false;
    installed_ = displayServer_.get();
    // Not both: each press would switch twice. Not at once: its signal may be
    // what has called.
    if (service_) service_.release()->deleteLater();
    return true;
}

void FallbackEventTap::enable() {
    if (installed_ != nullptr) installed_->enable();
}

void FallbackEventTap::setInterest(const KeyInterest& interest) {
    if (service_) service_->setInterest(interest);
    displayServer_->setInterest(interest);
}

}  // namespace quillmere
