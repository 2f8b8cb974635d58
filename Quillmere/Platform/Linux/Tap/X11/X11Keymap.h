#pragma once

#include <bitset>
#include <cstdint>

namespace quillmere {

/// A set of keys by their X11 numbers.
using X11Keys = std::bitset<256>;

/// Which of the eight real modifier bits of the X server mean what, and which
/// key number types nothing. A value: the state of the keyboard's map when it
/// was read. The places of Alt, Super and Num Lock are never assumed, since
/// users swap and move them.
class X11Keymap {
public:
    /// The real modifier bits that sit at the same place in every map
    /// (ShiftMask, LockMask, ControlMask of X11/X.h), and the usual one of
    /// Super (Mod4Mask).
    static constexpr unsigned int shift = 1U << 0;
    static constexpr unsigned int capsLock = 1U << 1;
    static constexpr unsigned int control = 1U << 2;
    static constexpr unsigned int usualSuper = 1U << 6;

    /// What a map says.
    struct Map {
        unsigned int alt = 0;      ///< real modifiers that the virtual one is bound to; 0: none
        unsigned int super = 0;    ///< as above
        unsigned int numLock = 0;  ///< as above
        unsigned int unusedKeyCode = 0;
        X11Keys modifierKeys;
    };

    X11Keymap() = default;
    explicit X11Keymap(const Map& map);

    /// The flag word (KeyEventFlags) of a press with these real modifiers.
    std::uint64_t flags(unsigned int realModifiers) const;

    /// Whether a shortcut may match these modifiers: nothing but the four
    /// modifiers of shortcuts and the locks that do not matter. A level
    /// chooser (AltGr), for one, makes a press another character.
    bool isPlain(unsigned int realModifiers) const;

    /// Option or Command among these modifiers.
    bool hasOptionOrCommand(unsigned int realModifiers) const;

    /// Whether the key is a modifier or a lock, wherever it sits on the board.
    bool isModifier(unsigned int keyCode) const { return keyCode < modifierKeys_.size() && modifierKeys_[keyCode]; }

    /// A key number without any symbol; 0 when there is none.
    unsigned int unusedKeyCode() const { return unusedKeyCode_; }

private:
    unsigned int option_ = 0;
    unsigned int command_ = 0;
    unsigned int numLock_ = 0;
    unsigned int unusedKeyCode_ = 0;
    X11Keys modifierKeys_;
};

}  // namespace quillmere
