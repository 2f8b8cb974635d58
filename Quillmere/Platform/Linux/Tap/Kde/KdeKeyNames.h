#pragma once

#include "Quillmere/Platform/Linux/Tap/LayoutKeymap.h"
#include "QuillmereCore/Shortcut.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// How KDE names a shortcut: by what its key types in the layout in use, a code
/// of Qt's with the modifiers in it (Qt::CTRL | Qt::Key_Space). This program
/// counts keys by their place, so the name of one shortcut may change with the
/// layout. One thread.
class KdeKeyNames {
public:
    /// `sourceIDs` are the desktop's layouts in their order ("xkb:us+dvorak");
    /// what is no layout is left out, and none at all is the American one.
    explicit KdeKeyNames(const std::vector<std::string>& sourceIDs);

    /// The names of a shortcut while this layout is in use (the first one, when
    /// it is not among them): one for each of the keys that it may be pressed
    /// by. None for Fn and for the keypad, whose keys have no names of their own.
    std::vector<int> names(const Shortcut& shortcut, const std::optional<std::string>& current) const;

private:
    std::optional<int> name(unsigned int evdevCode, Modifiers modifiers, unsigned int layout) const;

    LayoutKeymap keymap_;
};

}  // namespace quillmere
