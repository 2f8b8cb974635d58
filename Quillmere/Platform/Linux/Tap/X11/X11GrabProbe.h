#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11KeyCombination.h"

#include <vector>

namespace quillmere {

/// Those of these combinations that no other client has.
///
/// XInput grabs do not conflict with core grabs: instead of an error, one of
/// the two clients silently gets nothing. So the server is asked with core
/// grabs, which conflict with both kinds, over a connection of their own: on
/// ours, giving them back would give our XInput grabs back too. Our own grabs
/// count as another client's here. Nothing is free when there is no connection
/// to be had: what is taken for another client's is tried again.
std::vector<X11KeyCombination> freeCombinations(const std::vector<X11KeyCombination>& combinations);

}  // namespace quillmere
