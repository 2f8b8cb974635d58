#pragma once

#include "Quillmere/Platform/EventTap.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// A key binding of sway's that switches to one layout from one other. As many
/// of them as there are layouts are a shortcut: the compositor knows by itself
/// which of them is meant, so no press comes too early for it. Or one that only
/// swallows the shortcut, in whichever layout: what comes next is for who hears
/// of it to say.
struct SwayBinding {
    struct Step {
        std::size_t from = 0;  ///< the index of the layout in use
        std::size_t to = 0;
        std::string sourceID;  ///< of the layout `to`

        friend bool operator==(const Step&, const Step&) = default;
    };

    unsigned int keyCode = 0;    ///< by X11's numbers, as sway counts them
    unsigned int modifiers = 0;  ///< of `modifierBits`
    Shortcut shortcut;
    std::optional<Step> step;  ///< absent for one that only swallows

    /// What names it among all bindings: "Group1+Control+Mod1+65", without the
    /// group for one in whichever layout.
    std::string combination() const;
    /// What it does: a command of sway's.
    std::string action() const;
    /// The command that makes it, in place of one for the same combination.
    std::string command() const;

    friend bool operator==(const SwayBinding&, const SwayBinding&) = default;
};

/// The bindings that make this shortcut, on a desktop with these layouts. From
/// each layout to the group's next one, by the core's rule, among those that
/// the desktop has; for a shortcut without sources what swallows it. None for Fn
/// alone, whose lone tap is no key press to sway.
std::vector<SwayBinding> swayBindings(const ArmedShortcut& shortcut, const std::vector<std::string>& layoutIDs);

}  // namespace quillmere
