#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSource.h"

#include <optional>
#include <string>

/// GNOME's sources and the program's identifiers: "xkb:us+dvorak" is
/// ("xkb", "us+dvorak").
namespace quillmere::gnomeSourceIDs {

inline std::string idOf(const GnomeSource& source) {
    return source.type + ':' + source.id;
}

/// Absent for an identifier that is of no kind that GNOME has.
inline std::optional<GnomeSource> sourceOf(const std::string& id) {
    for (const char* type : {"xkb", "ibus"})
        if (const std::string prefix = std::string(type) + ':'; id.starts_with(prefix) && id.size() > prefix.size())
            return GnomeSource{type, id.substr(prefix.size())};
    return std::nullopt;
}

}  // namespace quillmere::gnomeSourceIDs
