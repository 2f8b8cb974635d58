#include "QuillmereCore/PermissionGate.h"

#include <utility>

namespace quillmere {

PermissionGate::PermissionGate(std::function<bool()> isGranted)
    : state_(State::needed), isGranted_(std::move(isGranted)) {
    if (isGranted_()) state_ = State::granted;
}

void PermissionGate::tick() {
    if (state_ != State::needed || !isGranted_()) return;
    state_ = State::granted;
    // A copy, so that the callback may replace or clear `onChange` while it runs.
    if (const std::function<void(State)> callback = onChange) callback(State::granted);
}

}  // namespace quillmere
