#pragma once

#include "Tests/Support/WaylandWitness.h"

#include <functional>
#include <string>

namespace quillmere::bench {

/// A way to switch between the two layouts of a Wayland desktop.
struct LayoutSwitch {
    std::string name;
    /// Types the shortcut without a gap, and the letter A right behind it if
    /// wanted, while this layout is in use.
    std::function<void(bool withLetter, int before)> type;
    /// Lets go what `type` holds, while this layout is in use.
    std::function<void(int after)> release = [](int) {};
};

/// Takes both in turns in one session, and prints the rows of the table: the
/// time from the shortcut until the focused program is told of the other layout,
/// and letters that are typed right after the shortcut.
void compareSwitches(const std::string& desktop, support::WaylandWitness& witness, const LayoutSwitch& ours,
                     const LayoutSwitch& theirs);

}  // namespace quillmere::bench
