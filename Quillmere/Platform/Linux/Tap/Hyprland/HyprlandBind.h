#pragma once

#include "QuillmereCore/Shortcut.h"

#include <QByteArray>

#include <string>
#include <vector>

namespace quillmere {

/// A bind of Hyprland's for one key, which swallows it and tells of it by an
/// event. None of its dispatchers switches a layout, so that this is left to
/// who hears of it: a program that it would start for it ("exec, hyprctl …")
/// comes later than this one.
///
/// Bound by the key's number, which is the same in every layout.
struct HyprlandBind {
    unsigned int keyCode = 0;    ///< by X11's numbers, as Hyprland counts them
    unsigned int modifiers = 0;  ///< of `modifierBits`
    Shortcut shortcut;

    /// What the event says.
    QByteArray event() const;

    /// The requests that make it and take it back, where binds are keywords of
    /// the configuration (before 0.55, and later with a configuration of the old
    /// kind).
    std::string keyword() const;
    std::string unbindKeyword() const;

    /// The same where they are Lua. What Lua gives is kept in a variable of this
    /// program's own: a bind is taken back by itself alone there, and not with
    /// all others of its keys.
    std::string lua() const;
    std::string unbindLua() const;

    friend bool operator==(const HyprlandBind&, const HyprlandBind&) = default;
};

/// The binds of this shortcut, one for each key that has its code; none for Fn
/// alone, whose lone tap is no press to Hyprland.
std::vector<HyprlandBind> hyprlandBinds(const Shortcut& shortcut);

}  // namespace quillmere
