#pragma once

#include <QByteArray>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmere {

/// The keyboards that sway tells of, at one moment, and what follows from them.
///
/// In sway every keyboard has its own list of layouts and its own layout in
/// use. The desktop's layouts are those of the main keyboard: the one with the
/// most of them, the oldest of several, since buttons that count as keyboards
/// are often left at the default. Keyboards with the same list are its peers.
/// The virtual keyboards of programs bring keymaps of their own and count only
/// where there is no other keyboard, as on a desktop that is used from afar.
///
/// Layouts are named as their keymap names them: "English (Dvorak)".
class SwayKeyboards {
public:
    SwayKeyboards() = default;

    /// Reads the reply to get_inputs; absent when it is no list. Keyboards with
    /// a nameless layout are left out: that is how programs that type texts
    /// make theirs.
    static std::optional<SwayKeyboards> parse(const QByteArray& reply);

    /// The layouts of the main keyboard, in its order; empty without one.
    const std::vector<std::string>& layouts() const { return layouts_; }

    /// The layout in use on the main keyboard or a peer. Where they differ it
    /// is `last`, the one chosen last, if it is in use at all; else the first
    /// that is not the one which a keyboard starts with.
    std::optional<std::string> current(const std::optional<std::string>& last) const;

    /// Whether a keyboard of this identifier is the main one or a peer.
    bool isPeer(const std::string& identifier) const;

    /// Whether all peers use this layout, and there are any.
    bool isInUse(const std::string& layout) const;

    /// The command that puts this layout into use on every keyboard that has
    /// it; empty when the main one has not.
    std::string command(const std::string& layout) const;

    /// The same on only those of these identifiers; empty when there are none.
    std::string command(const std::string& layout, const std::set<std::string>& identifiers) const;

    /// The identifiers of which there are more keyboards than before.
    std::set<std::string> newcomers(const SwayKeyboards& before) const;

private:
    struct Keyboard {
        std::string identifier;  ///< "1:1:AT_Translated_Set_2_keyboard"; twins share it
        std::vector<std::string> layouts;
        std::size_t active = 0;
        bool isVirtual = false;

        std::optional<std::size_t> indexOf(const std::string& layout) const;
    };

    void chooseMain();
    bool counts(const Keyboard& keyboard) const { return keyboard.isVirtual == isMainVirtual_; }
    bool isPeer(const Keyboard& keyboard) const { return counts(keyboard) && keyboard.layouts == layouts_; }

    std::vector<Keyboard> keyboards_;  ///< the newest first, as sway lists them
    std::vector<std::string> layouts_;
    bool isMainVirtual_ = false;
};

}  // namespace quillmere
