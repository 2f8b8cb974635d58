#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSource.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// A source with what there is to show of it.
struct GnomeListedSource {
    GnomeSource source;
    std::string name;      ///< UTF-8; empty when it is not told
    std::string language;  ///< ISO 639, perhaps with a country ("zh_CN"); empty when it is not told
};

/// The user's sources at one moment.
struct GnomeSources {
    std::vector<GnomeListedSource> list;
    std::size_t current = 0;  ///< may be past the end, where none is
};

/// A way to GNOME's input sources: there are two. Main thread only; each call
/// waits for the desktop, within a SwitchWait.
class GnomeSourceAccess {
public:
    GnomeSourceAccess() = default;
    GnomeSourceAccess(const GnomeSourceAccess&) = delete;
    GnomeSourceAccess& operator=(const GnomeSourceAccess&) = delete;
    virtual ~GnomeSourceAccess() = default;

    /// Whether this way is there at this moment, without asking anybody.
    virtual bool isAvailable() = 0;

    /// Absent without an answer in time.
    virtual std::optional<GnomeSources> sources() = 0;

    /// Makes a source of the list current; true once that is in effect.
    virtual bool activate(const GnomeSource& source) = 0;
};

}  // namespace quillmere
