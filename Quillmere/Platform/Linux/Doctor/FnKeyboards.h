#pragma once

#include "Quillmere/Platform/Finding.h"

#include <string_view>

namespace quillmere {

/// How far a tap sees Fn keys.
enum class FnSight {
    none,   ///< not at all, as a desktop's own shortcuts
    x11,    ///< the form that X11 can carry (KEY_WAKEUP)
    every,  ///< every form, as the service
};

/// Which of the keyboards tell of Fn, and whether the tap sees it. `devices` is
/// the kernel's list (/proc/bus/input/devices), which anybody may read: what a
/// keyboard could send, not what it does.
Finding fnFinding(std::string_view devices, FnSight sight);

}  // namespace quillmere
