#pragma once

#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QByteArray>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmere {

/// The keyboards that Hyprland tells of, at one moment, and what follows from
/// them.
///
/// In Hyprland every keyboard has its own list of layouts and its own layout in
/// use. The desktop's layouts are those of the keyboard that it marks as the
/// main one; where it marks none of them, of the one with the most layouts.
/// Keyboards with the same list are its peers. The virtual keyboards of programs,
/// as fcitx5 has one, bring keymaps of their own, whatever is told of their
/// layouts, and count only where there is no other keyboard.
class HyprlandKeyboards {
public:
    HyprlandKeyboards() = default;

    /// Reads the answer to "j/devices"; absent when it is none. Which layout is
    /// in use older versions (0.49) tell only by its name, for which the registry
    /// is asked.
    static std::optional<HyprlandKeyboards> parse(QByteArray answer, XkbLayoutRegistry& registry);

    /// The layouts of the main keyboard, in its order; empty without one.
    const std::vector<XkbLayout>& layouts() const { return layouts_; }

    /// The layout in use. Where the peers differ it is `last`, the one chosen
    /// last, if it is in use at all; else the main keyboard's.
    std::optional<XkbLayout> current(const std::optional<XkbLayout>& last) const;

    /// The layout in use on this keyboard; absent also when it is no peer.
    std::optional<XkbLayout> current(const std::string& name) const;

    /// Whether all peers use this layout, and there are any.
    bool isInUse(const XkbLayout& layout) const;

    /// The one request that puts this layout into use on every keyboard; empty
    /// where the keyboards have different lists, or no such layout.
    std::string request(const XkbLayout& layout) const;

    /// The requests that do so on every keyboard that has it, one by one.
    std::vector<std::string> requests(const XkbLayout& layout) const;

    /// The same on those peers of these names alone that use another one.
    std::vector<std::string> requests(const XkbLayout& layout, const std::set<std::string>& names) const;

    /// The names of the keyboards that were not there before.
    std::set<std::string> newcomers(const HyprlandKeyboards& before) const;

private:
    struct Keyboard {
        std::string name;     ///< "at-translated-set-2-keyboard"; no two have the same
        std::string address;  ///< another one once it has been away, most of the time
        std::vector<XkbLayout> layouts;
        std::optional<std::size_t> active;
        bool isVirtual = false;

        std::string request(const XkbLayout& layout) const;
        bool uses(const XkbLayout& layout) const { return active && layouts[*active] == layout; }
    };

    void chooseMain(const std::string& marked);
    bool counts(const Keyboard& keyboard) const { return keyboard.isVirtual == isMainVirtual_; }
    bool isPeer(const Keyboard& keyboard) const { return counts(keyboard) && keyboard.layouts == layouts_; }

    std::vector<Keyboard> keyboards_;
    std::size_t main_ = 0;
    bool isMainVirtual_ = false;
    std::vector<XkbLayout> layouts_;
};

}  // namespace quillmere
