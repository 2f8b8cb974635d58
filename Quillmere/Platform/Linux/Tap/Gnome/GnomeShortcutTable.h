#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSource.h"

#include <QString>
#include <QVariant>

#include <vector>

namespace quillmere {

/// What our extension in GNOME Shell is armed with: one combination of keys,
/// and the sources that it goes through.
struct GnomeShortcut {
    QString token;        ///< comes back when it has switched
    QString accelerator;  ///< as the compositor names it
    GnomeSourceList sources;
};

/// The whole table, as it goes over the message bus: a(ssa(ss)).
QVariant busValueOf(const std::vector<GnomeShortcut>& table);

}  // namespace quillmere
