#include "QuillmereCore/FnGesture.h"

#include <utility>

namespace quillmere {

bool FnGesture::handle(Event event, double time) {
    const std::optional<double> down = std::exchange(downTime_, std::nullopt);
    if (event == Event::fnDown(false)) downTime_ = time;
    // No lower bound: timestamps of two devices may be a little out of order.
    return event.kind == Event::Kind::fnUp && down && time - *down <= maxTapDuration;
}

}  // namespace quillmere
