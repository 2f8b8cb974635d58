#include "Quillmere/Platform/Linux/Tap/X11FirstEventTap.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

/// What the service is to see: a tap of Fn may be recorded, too.
KeyInterest fnOf(const KeyInterest& interest) {
    const bool wantsFn = interest.everyKey || std::ranges::any_of(interest.shortcuts, &Shortcut::isFnAlone);
    return wantsFn ? KeyInterest{.shortcuts = {Shortcut::fn}} : KeyInterest{};
}

KeyInterest withoutFn(KeyInterest interest) {
    std::erase_if(interest.shortcuts, [](const Shortcut& shortcut) { return shortcut.isFnAlone(); });
    return interest;
}

}  // namespace

X11FirstEventTap::X11FirstEventTap(std::unique_ptr<EventTap> server, MakeService makeService)
    : server_(std::move(server)), makeService_(std::move(makeService)) {}

bool X11FirstEventTap::install(Callback callback) {
    callback_ = std::move(callback);
    if (!server_->install([this](const KeyEventFields& event) { return handleServers(event); })) return false;
    askService();
    return true;
}

void X11FirstEventTap::enable() {
    server_->enable();
    if (hasServicesFn_) service_->enable();
}

void X11FirstEventTap::setInterest(const KeyInterest& interest) {
    interest_ = interest;
    tellServer();
    tellService();
    if (callback_) askService();
}

void X11FirstEventTap::askService() {
    if (service_ || !makeService_ || fnOf(interest_) == KeyInterest{}) return;
    service_ = std::exchange(makeService_, nullptr)();
    tellService();
    // Nobody waits for it: until it is there, or without it, the server's Fn
    // does.
    connect(service_.get(), &ServiceEventTap::opened, this, [this] { serviceOpened(); });
    connect(service_.get(), &ServiceEventTap::lost, this, [this] { serviceLost(); });
}

void X11FirstEventTap::serviceOpened() {
    hasServicesFn_ = true;
    tellServer();
    service_->install(callback_);
}

void X11FirstEventTap::serviceLost() {
    hasServicesFn_ = false;
    tellServer();
    // It would find its service again by itself, and then there were two. Not
    // at once: its signal has called.
    service_.release()->deleteLater();
}

void X11FirstEventTap::tellServer() {
    server_->setInterest(hasServicesFn_ ? withoutFn(interest_) : interest_);
}

void X11FirstEventTap::tellService() {
    if (service_) service_->setInterest(fnOf(interest_));
}

/// What both say of Fn would be one press too many, and one that knows nothing
/// of a held Fn would end it.
InterceptDecision X11FirstEventTap::handleServers(const KeyEventFields& event) {
    if (hasServicesFn_ && event.type == KeyEventType::flagsChanged) return InterceptDecision::pass;
    return callback_(event);
}

}  // namespace quillmere
