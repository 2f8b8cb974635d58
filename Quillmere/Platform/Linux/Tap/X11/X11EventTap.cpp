#include "Quillmere/Platform/Linux/Tap/X11/X11EventTap.h"

#include <utility>

namespace quillmere {

bool X11EventTap::install(Callback callback) {
    if (thread_ == nullptr) thread_ = X11TapThread::start(std::move(callback), interest_);
    return thread_ != nullptr;
}

void X11EventTap::enable() {
    if (thread_ != nullptr) thread_->enable();
}

void X11EventTap::setInterest(const KeyInterest& interest) {
    if (interest == interest_) return;
    interest_ = interest;
    if (thread_ != nullptr) thread_->setInterest(interest);
}

}  // namespace quillmere
