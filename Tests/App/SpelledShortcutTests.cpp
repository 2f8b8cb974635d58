#include "Quillmere/Settings/SpelledShortcut.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

constexpr Modifiers all = Modifiers::control | Modifiers::option | Modifiers::shift | Modifiers::command;

TEST(SpelledShortcutTest, IsInTheWordsOnAPcKeyboard) {
    struct Case {
        Shortcut shortcut;
        const char* words;
    };
    const Case cases[] = {
        {{Shortcut::space, Modifiers::control | Modifiers::option}, "Ctrl+Alt+Space"},
        {{0, Modifiers::command}, "Super+A"},
        {{36, all}, "Ctrl+Alt+Shift+Super+Enter"},
        {Shortcut::fn, "Fn"},
        {{Shortcut::fnKeyCode, Modifiers::control}, "Ctrl+Fn"},
        {{110, Modifiers::control}, "Ctrl+Menu"},
        {{53, Modifiers::command}, "Super+Escape"},
        {{105, Modifiers::option}, "Alt+Print"},
        {{123, Modifiers::option}, "Alt+Left"},
        {{126, Modifiers::option | Modifiers::shift}, "Alt+Shift+Up"},
        {{122, Modifiers::option}, "Alt+F1"},
        {{24, Modifiers::control}, "Ctrl+="},
        {{10, Modifiers::control}, "Ctrl+Key 10"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(spelledShortcut(each.shortcut), each.words);
}

}  // namespace
}  // namespace quillmere
