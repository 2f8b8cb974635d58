#include "Quillmere/Platform/Linux/Tap/X11/X11Keymap.h"

#include "Quillmere/Platform/KeyEvent.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

constexpr unsigned int alt = 1U << 3;
constexpr unsigned int numLock = 1U << 4;
constexpr unsigned int super = 1U << 6;
constexpr unsigned int levelThree = 1U << 7;

X11Keymap::Map usual() {
    return {.alt = alt, .super = super, .numLock = numLock, .unusedKeyCode = 248, .modifierKeys = {}};
}

TEST(X11Keymap, EachModifierIsItsFlag) {
    const X11Keymap keymap(usual());
    EXPECT_EQ(keymap.flags(0), 0U);
    EXPECT_EQ(keymap.flags(X11Keymap::shift), KeyEventFlags::shift);
    EXPECT_EQ(keymap.flags(X11Keymap::control), KeyEventFlags::control);
    EXPECT_EQ(keymap.flags(X11Keymap::capsLock), KeyEventFlags::capsLock);
    EXPECT_EQ(keymap.flags(alt), KeyEventFlags::option);
    EXPECT_EQ(keymap.flags(super), KeyEventFlags::command);
    EXPECT_EQ(keymap.flags(numLock | levelThree), 0U);
    EXPECT_EQ(keymap.flags(X11Keymap::control | alt), KeyEventFlags::control | KeyEventFlags::option);
}

TEST(X11Keymap, LocksArePlainAndLevelChoosersAreNot) {
    const X11Keymap keymap(usual());
    EXPECT_TRUE(keymap.isPlain(0));
    EXPECT_TRUE(keymap.isPlain(X11Keymap::shift | X11Keymap::control | X11Keymap::capsLock | numLock | alt | super));
    EXPECT_FALSE(keymap.isPlain(levelThree));
    EXPECT_FALSE(keymap.isPlain(X11Keymap::control | levelThree));
}

TEST(X11Keymap, SuperIsAtItsUsualPlaceWhenTheMapHasNone) {
    X11Keymap::Map map = usual();
    map.super = 0;
    EXPECT_EQ(X11Keymap(map).flags(super), KeyEventFlags::command);
}

TEST(X11Keymap, AModifierThatAltAndSuperShareIsCommand) {
    X11Keymap::Map map = usual();
    map.alt = alt | super;
    EXPECT_EQ(X11Keymap(map).flags(super), KeyEventFlags::command);
    EXPECT_EQ(X11Keymap(map).flags(alt), KeyEventFlags::option);
}

TEST(X11Keymap, ShiftControlAndCapsLockAreNothingElse) {
    X11Keymap::Map map = usual();
    map.alt = alt | X11Keymap::control;
    map.numLock = X11Keymap::shift;
    EXPECT_EQ(X11Keymap(map).flags(X11Keymap::control), KeyEventFlags::control);
    EXPECT_TRUE(X11Keymap(map).hasOptionOrCommand(alt));
    EXPECT_FALSE(X11Keymap(map).hasOptionOrCommand(X11Keymap::control | X11Keymap::shift));
    EXPECT_FALSE(X11Keymap(map).isPlain(numLock));
}

TEST(X11Keymap, ModifierKeysAreWhereTheMapHasThem) {
    X11Keymap::Map map = usual();
    map.modifierKeys.set(66);
    const X11Keymap keymap(map);
    EXPECT_TRUE(keymap.isModifier(66));
    EXPECT_FALSE(keymap.isModifier(37));
    EXPECT_FALSE(keymap.isModifier(256 + 66)) << "no key of a core keyboard";
    EXPECT_EQ(keymap.unusedKeyCode(), 248U);
}

}  // namespace
}  // namespace quillmere
