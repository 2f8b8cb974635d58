#pragma once

#include "Quillmere/Platform/Linux/Tap/LayoutKeymap.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayConfiguration.h"
#include "QuillmereCore/Shortcut.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The combinations that the user's own configuration binds, looked up by keys:
/// most are written by what a key types. One thread.
class SwayReservedKeys {
public:
    explicit SwayReservedKeys(std::vector<SwayCombination> combinations);

    /// Whether one of them is pressed by a key of this shortcut in any of these
    /// layouts ("xkb:us+dvorak"). Takes some milliseconds when the layouts are
    /// others than the last time.
    bool has(const Shortcut& shortcut, const std::vector<std::string>& layoutIDs);

private:
    bool isPressedBy(const SwayCombination& combination, unsigned int keyCode, unsigned int modifiers) const;

    std::vector<SwayCombination> combinations_;
    std::vector<std::string> layoutIDs_;
    std::optional<LayoutKeymap> keymap_;  ///< of `layoutIDs_`
};

}  // namespace quillmere
