#pragma once

#include <bitset>
#include <cstdint>

struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): Xlib's own name

namespace quillmere {

/// Which of the eight real modifier bits of the X server mean what, and which
/// key number types nothing. A value: the state of the keyboard's map when it
/// was read. The places of Alt, Super and Num Lock are never assumed, since
/// users swap and move them.
class X11Keymap {
public:
    /// Reads the map in use. Some round trips.
    static X11Keymap read(_XDisplay* display);

    /// The flag word (KeyEventFlags) of a press with these real modifiers.
    std::uint64_t flags(unsigned int realModifiers) const;

    /// Whether a shortcut may match these modifiers: nothing but the four
    /// modifiers of shortcuts and the locks that do not matter. A level
    /// chooser (AltGr), for one, makes a press another character.
    bool isPlain(unsigned int realModifiers) const;

    /// Option or Command among these modifiers.
    bool hasOptionOrCommand(unsigned int realModifiers) const;

    /// Whether the key is a modifier or a lock, wherever it sits on the board.
    bool isModifier(unsigned int keyCode) const { return keyCode < keyCount && modifierKeys_[keyCode]; }

    /// A key number without any symbol; 0 when there is none.
    unsigned int unusedKeyCode() const { return unusedKeyCode_; }

private:
    static constexpr unsigned int keyCount = 256;

    unsigned int option_ = 0;
    unsigned int command_ = 0;
    unsigned int numLock_ = 0;
    unsigned int unusedKeyCode_ = 0;
    std::bitset<keyCount> modifierKeys_;
};

}  // namespace quillmere
