#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayConfiguration.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace quillmere {

namespace {

constexpr Modifiers controlOption{Modifiers::control, Modifiers::option};
constexpr std::int64_t space = Shortcut::space;
constexpr std::int64_t keyA = 0;
constexpr std::int64_t keyQ = 12;
constexpr std::int64_t keyOne = 18;
constexpr std::int64_t keyF13 = 105;

struct Case {
    const char* what;
    const char* text;
    Shortcut shortcut;
    bool isTaken = true;
};

class SwayConfigurationTest : public testing::TestWithParam<Case> {};

TEST_P(SwayConfigurationTest, SaysWhichShortcutsAreTheUsersOwn) {
    ReservedKeys keys(SwayConfiguration::combinations(GetParam().text, "/nowhere/config"));
    EXPECT_EQ(keys.has(GetParam().shortcut, {"xkb:us", "xkb:ua", "xkb:fr"}), GetParam().isTaken);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, SwayConfigurationTest,
    testing::Values(
        Case{"ASymbol", "bindsym Ctrl+Alt+space exec menu", {space, controlOption}},
        Case{"ACode", "bindcode Control+Mod1+65 exec menu", {space, controlOption}},
        Case{"NamesInEitherCase", "bindsym CTRL+mod1+Space exec menu", {space, controlOption}},
        Case{"OtherModifiers", "bindsym Ctrl+space exec menu", {space, controlOption}, false},
        Case{"AnotherKey", "bindcode Ctrl+Alt+64 exec menu", {space, controlOption}, false},
        Case{"Flags", "bindsym --locked --to-code Ctrl+Alt+space exec menu", {space, controlOption}},
        Case{"OneKeyboard", "bindsym --input-device=\"1:1:Board\" Ctrl+Alt+space nop", {space, controlOption}},
        Case{"OneLayout", "bindsym Group2+Ctrl+Alt+space nop", {space, controlOption}},
        Case{"AVariable", "set $mod Mod4\nbindsym $mod+space exec menu", {space, Modifiers::command}},
        Case{"ALongerVariable", "set $mod Mod4\nset $mode Ctrl+Alt\nbindsym $mode+space nop", {space, controlOption}},
        Case{"AVariableOfVariables", "set $a Ctrl\nset $b $a+Alt\nbindsym $b+space nop", {space, controlOption}},
        Case{"AMode", "mode \"resize\" {\n  bindsym Ctrl+Alt+space mode default\n}", {space, controlOption}},
        Case{"AModeInOneLine", "mode resize bindsym Ctrl+Alt+space nop", {space, controlOption}},
        Case{"ABlock", "bindsym --locked {\n  Ctrl+Alt+space nop\n  Ctrl+Alt+x nop\n}", {space, controlOption}},
        Case{"ABlockOnTheNextLine", "bindsym\n{\n  Ctrl+Alt+space nop\n}", {space, controlOption}},
        Case{"AfterABlock", "input * {\n xkb_layout us\n}\nbindsym Ctrl+Alt+space nop", {space, controlOption}},
        Case{"ALineThatGoesOn", "bindsym \\\n  Ctrl+Alt+space \\\n  exec menu", {space, controlOption}},
        Case{"AComment", "# bindsym Ctrl+Alt+space exec menu", {space, controlOption}, false},
        Case{"WhatABindingDoes", "bindsym Mod4+x exec bindsym Ctrl+Alt+space nop", {space, controlOption}, false},
        Case{"TwoKeysAtOnce", "bindsym Ctrl+Alt+space+x exec menu", {space, controlOption}, false},
        Case{"AMouseButton", "bindsym Ctrl+Alt+button1 nop", {space, controlOption}, false},
        Case{"ALetter", "bindsym Mod4+a nop", {keyA, Modifiers::command}},
        Case{"ALetterOfAnyLayout", "bindsym Mod4+a nop", {keyQ, Modifiers::command}},
        Case{"ALetterOfAnotherScript", "bindsym Mod4+Cyrillic_ef nop", {keyA, Modifiers::command}},
        Case{"ALetterOfNoLayout", "bindsym Mod4+Greek_alpha nop", {keyA, Modifiers::command}, false},
        Case{"ASignWithShift", "bindsym Ctrl+exclam nop", {keyOne, {Modifiers::control, Modifiers::shift}}},
        Case{"ASignWithoutShift", "bindsym Ctrl+exclam nop", {keyOne, Modifiers::control}, false},
        Case{"ASignWithItsShift", "bindsym Ctrl+Shift+1 nop", {keyOne, {Modifiers::control, Modifiers::shift}}},
        Case{"ASecondKeyOfTheShortcut", "bindsym Ctrl+Print exec shot", {keyF13, Modifiers::control}},
        Case{"NothingToBind", "bindsym\nbindsym --locked\nset $x\nmode\ninclude", {space, controlOption}, false},
        Case{"OneBraceTooMany", "}\n}\nbindsym Ctrl+Alt+space nop", {space, controlOption}}),
    [](const auto& test) { return test.param.what; });

class SwayIncludeTest : public testing::Test {
protected:
    bool isTaken(const std::string& text) const {
        ReservedKeys keys(SwayConfiguration::combinations(text, folder.path() / "config"));
        return keys.has({space, controlOption}, {"xkb:us"});
    }
    void write(const char* name, const std::string& text) const {
        std::filesystem::create_directories((folder.path() / name).parent_path());
        std::ofstream(folder.path() / name) << text;
    }

    support::TemporaryFolder folder;
};

TEST_F(SwayIncludeTest, FilesThatAreIncludedAreReadToo) {
    write("config.d/one", "bindsym $keys exec menu");
    EXPECT_TRUE(isTaken("set $keys Ctrl+Alt+space\ninclude config.d/*"));
    EXPECT_TRUE(isTaken("set $keys Ctrl+Alt+space\ninclude " + (folder.path() / "config.d/one").string()));
    EXPECT_FALSE(isTaken("set $keys Ctrl+Alt+space\ninclude other.d/*"));
}

TEST_F(SwayIncludeTest, OneIncludesOthersBesideIt) {
    write("config.d/one", "include more/two");
    write("config.d/more/two", "bindsym Ctrl+Alt+space nop");
    EXPECT_TRUE(isTaken("include config.d/one"));
}

TEST_F(SwayIncludeTest, OneThatIncludesItselfEnds) {
    write("loop", "include loop\nbindsym Ctrl+Alt+space nop");
    EXPECT_TRUE(isTaken("include loop"));
}

TEST_F(SwayIncludeTest, NoCommandIsRun) {
    const std::filesystem::path trace = folder.path() / "trace";
    EXPECT_FALSE(isTaken("include `touch " + trace.string() + "`"));
    EXPECT_FALSE(isTaken("include $(touch " + trace.string() + ")"));
    EXPECT_FALSE(std::filesystem::exists(trace));
}

}  // namespace

}  // namespace quillmere
