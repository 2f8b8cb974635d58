#pragma once

#include "Quillmere/Platform/Linux/Tap/LayoutKeymap.h"
#include "QuillmereCore/Shortcut.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// A combination of keys as the user's own configuration of a compositor has it.
struct ReservedCombination {
    unsigned int modifiers = 0;     ///< of `modifierBits`
    std::vector<std::string> keys;  ///< as they are written: names of symbols, or numbers
    bool isByCode = false;          ///< the keys are numbers, as X11 has them

    friend bool operator==(const ReservedCombination&, const ReservedCombination&) = default;
};

/// The combinations that the user's own configuration binds, looked up by keys:
/// most are written by what a key types. One thread.
class ReservedKeys {
public:
    explicit ReservedKeys(std::vector<ReservedCombination> combinations);

    /// Whether one of them is pressed by a key of this shortcut in any of these
    /// layouts ("xkb:us+dvorak"). Takes some milliseconds when the layouts are
    /// others than the last time.
    bool has(const Shortcut& shortcut, const std::vector<std::string>& layoutIDs);

private:
    bool isPressedBy(const ReservedCombination& combination, unsigned int keyCode, unsigned int modifiers) const;

    std::vector<ReservedCombination> combinations_;
    std::vector<std::string> layoutIDs_;
    std::optional<LayoutKeymap> keymap_;  ///< of `layoutIDs_`
};

}  // namespace quillmere
