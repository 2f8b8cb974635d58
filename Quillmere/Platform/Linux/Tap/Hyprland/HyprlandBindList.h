#pragma once

#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBind.h"
#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace quillmere {

/// All that is bound in Hyprland at one moment, by whomever.
struct HyprlandBindList {
    /// What the user's own binds take.
    std::vector<ReservedCombination> others;
    /// What this program has bound, or one before it that was killed, where that
    /// shows: with a configuration of the old kind. No shortcuts.
    std::vector<HyprlandBind> own;

    /// Reads the answer to "j/binds"; absent when it is none.
    static std::optional<HyprlandBindList> parse(const QByteArray& answer);

    /// What the event of each of this program's binds begins with.
    static constexpr const char* eventPrefix = "quillmere ";
    /// How each is described where binds have a description.
    static constexpr const char* description = "Quillmere";
};

}  // namespace quillmere
