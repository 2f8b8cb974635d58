#include "Quillmere/Settings/SpelledShortcut.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(KeyWordsTest, AShortcutIsSpelledInTheWordsOnAMacsKeyboard) {
    constexpr Modifiers all = Modifiers::control | Modifiers::option | Modifiers::shift | Modifiers::command;
    EXPECT_EQ(spelledShortcut({Shortcut::space, all}), "Control+Option+Shift+Command+Space");
    EXPECT_EQ(spelledShortcut({36, Modifiers::command}), "Command+Return");
    EXPECT_EQ(spelledShortcut({117, Modifiers::control}), "Control+Forward Delete");
    EXPECT_EQ(spelledShortcut({125, Modifiers::option}), "Option+Down");
    EXPECT_EQ(spelledShortcut(Shortcut::fn), "Fn");
}

}  // namespace
}  // namespace quillmere
