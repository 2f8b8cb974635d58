#include "Quillmere/Platform/Linux/Tap/Kde/KdeKeyNames.h"

#include <gtest/gtest.h>

#include <Qt>

#include <string>
#include <vector>

namespace quillmere {

namespace {

constexpr int control = Qt::ControlModifier;
constexpr int alt = Qt::AltModifier;
constexpr int shift = Qt::ShiftModifier;
constexpr int meta = Qt::MetaModifier;

struct Case {
    const char* what;
    std::int64_t keyCode;
    Modifiers modifiers;
    std::string current;
    std::vector<int> names;
};

class KdeKeyNamesTest : public testing::TestWithParam<Case> {};

TEST_P(KdeKeyNamesTest, NamesAShortcutByWhatItsKeyTypes) {
    const KdeKeyNames names({"xkb:us", "xkb:ua", "xkb:fr", "xkb:us+dvorak"});
    const Case& given = GetParam();
    EXPECT_EQ(names.names({given.keyCode, given.modifiers}, given.current), given.names);
}

constexpr std::int64_t keyA = 0;
constexpr std::int64_t keyQ = 12;
constexpr std::int64_t keyOne = 18;
constexpr std::int64_t keyTab = 48;

INSTANTIATE_TEST_SUITE_P(
    Shortcuts, KdeKeyNamesTest,
    testing::Values(
        Case{"ASpaceIsOneEverywhere", 49, {Modifiers::control, Modifiers::option}, "xkb:ua", {control | alt | 0x20}},
        Case{"ALetterInItsOwnLayout", keyQ, Modifiers::control, "xkb:us", {control | 'Q'}},
        Case{"TheSamePlaceInAnotherLayout", keyQ, Modifiers::control, "xkb:fr", {control | 'A'}},
        Case{"AVariantIsALayoutOfItsOwn", keyQ, Modifiers::control, "xkb:us+dvorak", {control | '\''}},
        Case{"ALetterOfAnotherScriptGoesByTheLatinOne", keyA, Modifiers::command, "xkb:ua", {meta | 'A'}},
        Case{"ALetterKeepsItsShift", keyA, {Modifiers::option, Modifiers::shift}, "xkb:us", {alt | shift | 'A'}},
        Case{"AFigureWithShiftIsASign", keyOne, {Modifiers::option, Modifiers::shift}, "xkb:us", {alt | '!'}},
        Case{"ATabKeepsItsShift", keyTab, {Modifiers::option, Modifiers::shift}, "xkb:us", {alt | shift | Qt::Key_Tab}},
        Case{"AFunctionKey", 122, Modifiers::control, "xkb:fr", {control | Qt::Key_F1}},
        Case{"AnUnknownCurrentLayoutCountsAsTheFirst", keyQ, Modifiers::control, "ibus:x", {control | 'Q'}},
        Case{"TheKeypadHasNoNamesOfItsOwn", 83, Modifiers::control, "xkb:us", {}},
        Case{"FnHasNone", 63, {}, "xkb:us", {}}),
    [](const testing::TestParamInfo<Case>& info) { return info.param.what; });

TEST(KdeKeyNames, WithoutAnyLayoutTheKeysAreTheAmericanOnes) {
    EXPECT_EQ(KdeKeyNames({}).names({keyQ, Modifiers::control}, std::nullopt), std::vector{control | 'Q'});
    EXPECT_EQ(KdeKeyNames({"kde:Homemade"}).names({keyQ, Modifiers::control}, "kde:Homemade"),
              std::vector{control | 'Q'});
}

}  // namespace

}  // namespace quillmere
