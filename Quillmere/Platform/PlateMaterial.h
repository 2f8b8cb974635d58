#pragma once

#include <QColor>

namespace quillmere {

/// What lies behind the plate's content, where the system has such a thing. A
/// panel that has none leaves it out: the content is drawn to be legible so.
struct PlateMaterial {
    enum class Kind {
        none,   ///< nothing: the content brings its own background
        blur,   ///< the blurred desktop
        glass,  ///< the system's glass, which is then the whole background
    };

    Kind kind = Kind::none;
    double cornerRadius = 0;  ///< points
    QColor tint;              ///< of glass

    friend bool operator==(const PlateMaterial&, const PlateMaterial&) = default;
};

}  // namespace quillmere
