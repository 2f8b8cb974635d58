#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyCombination.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11Keymap.h"

#include <cstdint>
#include <vector>

namespace quillmere {

/// Translates between X11's keys and the program's: which presses the program
/// is interested in under the present keyboard map. A value.
class X11KeyMatcher {
public:
    void setInterest(const KeyInterest& interest) { interest_ = interest; }
    void setKeymap(const X11Keymap& keymap) { keymap_ = keymap; }
    const KeyInterest& interest() const { return interest_; }
    const X11Keymap& keymap() const { return keymap_; }

    /// Whether anything is of interest at all.
    bool wantsAnything() const { return interest_.everyKey || !interest_.shortcuts.empty(); }
    /// Whether a lone Fn tap is of interest.
    bool wantsFn() const;
    /// Whether a press of this key with these real modifiers is of interest.
    /// Keys that only change the flags never are.
    bool wantsPress(unsigned int keyCode, unsigned int modifiers) const;

    /// Whether a modifier of some shortcut of interest is among these real
    /// ones, so that its key may be next.
    bool isAnyShortcutBegun(unsigned int modifiers) const;

    /// Every combination that is one of the shortcuts of interest, whatever
    /// the state of the locks.
    std::vector<X11KeyCombination> combinations() const;

    /// Whether the key is a modifier, a lock or Fn.
    bool isFlagKey(unsigned int keyCode) const;
    static bool isFn(unsigned int keyCode);

    /// The virtual key code; only for a key that has one.
    static std::int64_t virtualKey(unsigned int keyCode);

private:
    bool wantsShortcut(const Shortcut& shortcut) const;
    void appendCombinations(const Shortcut& shortcut, std::vector<X11KeyCombination>& result) const;

    KeyInterest interest_;
    X11Keymap keymap_;
};

}  // namespace quillmere
