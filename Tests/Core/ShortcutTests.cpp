#include "QuillmereCore/Shortcut.h"

#include "QuillmereCore/JsonValue.h"

#include <gtest/gtest.h>
#include <boost/json/serialize.hpp>

#include <limits>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace quillmere {
namespace {

constexpr Modifiers command = Modifiers::command;
constexpr Modifiers shift = Modifiers::shift;
constexpr Modifiers option = Modifiers::option;
constexpr Modifiers control = Modifiers::control;

std::optional<Shortcut> decoded(std::string_view text) {
    return decodeShortcut(json::parse(text).value());
}

TEST(Modifiers, TheFourMembersHaveTheirStoredBits) {
    EXPECT_EQ(command.rawValue, 1);
    EXPECT_EQ(shift.rawValue, 2);
    EXPECT_EQ(option.rawValue, 4);
    EXPECT_EQ(control.rawValue, 8);
    EXPECT_EQ(Modifiers().rawValue, 0);
}

TEST(Modifiers, AreReadFromTheFlagWordOfAnEvent) {
    const struct {
        const char* held;
        std::uint64_t flags;
        Modifiers modifiers;
    } cases[] = {
        {"nothing", 0, Modifiers()},
        {"Command", 0x100000, command},
        {"Shift", 0x20000, shift},
        {"Option", 0x80000, option},
        {"Control", 0x40000, control},
        {"all four", 0x1E0000, {command, shift, option, control}},
        {"Caps Lock", 0x10000, Modifiers()},
        {"the numeric pad", 0x200000, Modifiers()},
        {"help", 0x400000, Modifiers()},
        {"Fn", 0x800000, Modifiers()},
        {"left-hand device bits and the plain-event bit", 0x12B, Modifiers()},
        {"Control and Option with Caps Lock and Fn", 0x8D0000, {control, option}},
        {"every bit of the word", ~std::uint64_t{0}, {command, shift, option, control}},
        {"every other bit of the word", ~std::uint64_t{0x1E0000}, Modifiers()},
    };
    for (const auto& [held, flags, modifiers] : cases)
        EXPECT_EQ(Modifiers::fromFlags(flags), modifiers) << held;
}

TEST(Modifiers, BehaveAsASet) {
    const Modifiers both{control, option};
    EXPECT_TRUE(Modifiers().isEmpty());
    EXPECT_FALSE(both.isEmpty());
    EXPECT_TRUE(both.contains(control));
    EXPECT_TRUE(both.contains(both));
    EXPECT_TRUE(both.contains(Modifiers()));
    EXPECT_FALSE(both.contains({control, shift}));
    EXPECT_TRUE(control.isSubset(both));
    EXPECT_FALSE(both.isSubset(control));
    EXPECT_TRUE(both.isDisjoint({command, shift}));
    EXPECT_FALSE(both.isDisjoint({command, option}));
    EXPECT_EQ(both.unionWith(shift), Modifiers({control, option, shift}));
    EXPECT_EQ(both | command, Modifiers({control, option, command}));
    EXPECT_EQ(both.intersection({option, shift}), option);
    EXPECT_EQ(both.symmetricDifference({option, shift}), Modifiers({control, shift}));
    EXPECT_EQ(both.subtracting(option), control);
    EXPECT_EQ(both.subtracting(shift), both);
}

TEST(Modifiers, AreInsertedAndRemovedInPlace) {
    Modifiers modifiers;
    modifiers.insert(shift);
    modifiers.insert(shift);
    EXPECT_EQ(modifiers, shift);
    modifiers.insert({command, option});
    modifiers.remove(shift);
    modifiers.remove(control);
    EXPECT_EQ(modifiers, Modifiers({command, option}));
}

TEST(Modifiers, AreEqualAndHashAlikeByTheirBitsAlone) {
    EXPECT_EQ(Modifiers({command, shift}), Modifiers({shift, command, shift}));
    EXPECT_NE(Modifiers(16), Modifiers());
    const std::unordered_set<Modifiers> set{Modifiers(3), Modifiers({command, shift}), Modifiers(16)};
    EXPECT_EQ(set.size(), 2U);
}

TEST(Modifiers, TheJsonFormIsOneIntegerAndKeepsUnknownBits) {
    EXPECT_EQ(encode(Modifiers{control, option}), json::parse("12").value());
    const std::pair<const char*, std::optional<Modifiers>> cases[] = {
        {"12", Modifiers{control, option}},
        {"0", Modifiers()},
        {"12.0", Modifiers(12)},
        {"1040", Modifiers(1040)},
        {"-1", Modifiers(-1)},
        {"12.5", std::nullopt},
        {"\"12\"", std::nullopt},
        {"null", std::nullopt},
        {"[12]", std::nullopt},
        {"true", std::nullopt},
        {"{\"rawValue\":12}", std::nullopt},
    };
    for (const auto& [text, modifiers] : cases)
        EXPECT_EQ(decodeModifiers(json::parse(text).value()), modifiers) << text;
}

TEST(Shortcut, TheStaticMembersNameSpaceAndFn) {
    EXPECT_EQ(Shortcut::space, 49);
    EXPECT_EQ(Shortcut::fnKeyCode, 63);
    EXPECT_EQ(Shortcut::fn, (Shortcut{63, Modifiers()}));
}

TEST(Shortcut, OnlyFnWithoutModifiersIsFnAlone) {
    EXPECT_TRUE(Shortcut::fn.isFnAlone());
    EXPECT_FALSE((Shortcut{63, shift}).isFnAlone());
    EXPECT_FALSE((Shortcut{63, Modifiers(16)}).isFnAlone());
    EXPECT_FALSE((Shortcut{49, Modifiers()}).isFnAlone());
}

TEST(Shortcut, FnAloneIsValidAndShownWithTheGlobe) {
    EXPECT_TRUE(Shortcut::fn.isValid());
    EXPECT_EQ(Shortcut::fn.displayString(), "🌐 Fn");
}

TEST(Shortcut, FnWithShiftIsInvalidAndShownByItsNumber) {
    const Shortcut shortcut{63, shift};
    EXPECT_FALSE(shortcut.isValid());
    EXPECT_EQ(shortcut.displayString(), "⇧Key 63");
}

TEST(Shortcut, ShiftAloneDoesNotMakeAKeyValidButControlDoes) {
    EXPECT_FALSE((Shortcut{49, shift}).isValid());
    const Shortcut shortcut{49, {shift, control}};
    EXPECT_TRUE(shortcut.isValid());
    EXPECT_EQ(shortcut.displayString(), "⌃⇧Space");
}

TEST(Shortcut, ABareKeyIsInvalidAndShownByItsName) {
    const Shortcut shortcut{0, Modifiers()};
    EXPECT_FALSE(shortcut.isValid());
    EXPECT_EQ(shortcut.displayString(), "A");
}

TEST(Shortcut, AllFourModifiersAreShownInTheirFixedOrder) {
    EXPECT_EQ((Shortcut{36, {command, shift, option, control}}).displayString(), "⌃⌥⇧⌘Return");
}

TEST(Shortcut, ValidityNeedsCommandOptionOrControlAndLooksAtNoKey) {
    for (const std::int64_t keyCode : {std::int64_t{0}, std::int64_t{10}, std::int64_t{63}, std::int64_t{-1},
                                       std::numeric_limits<std::int64_t>::max()})
        for (std::int64_t bits = 0; bits < 64; ++bits) {
            const Shortcut shortcut{keyCode, Modifiers(bits)};
            EXPECT_EQ(shortcut.isValid(), (bits & 13) != 0 || (keyCode == 63 && bits == 0))
                << keyCode << " with " << bits;
        }
}

TEST(Shortcut, EverySetOfModifiersIsShownBeforeTheKey) {
    const char* shown[] = {"Tab",  "⌘Tab",  "⇧Tab",  "⇧⌘Tab",  "⌥Tab",  "⌥⌘Tab",  "⌥⇧Tab",  "⌥⇧⌘Tab",
                           "⌃Tab", "⌃⌘Tab", "⌃⇧Tab", "⌃⇧⌘Tab", "⌃⌥Tab", "⌃⌥⌘Tab", "⌃⌥⇧Tab", "⌃⌥⇧⌘Tab"};
    for (std::int64_t bits = 0; bits < 16; ++bits)
        EXPECT_EQ((Shortcut{48, Modifiers(bits)}).displayString(), shown[bits]);
}

TEST(Shortcut, UnknownModifierBitsAreNotShown) {
    EXPECT_EQ((Shortcut{49, Modifiers(16 | 12)}).displayString(), "⌃⌥Space");
}

const std::map<std::int64_t, std::string> namedKeys{
    {0, "A"},      {1, "S"},     {2, "D"},     {3, "F"},       {4, "H"},    {5, "G"},    {6, "Z"},    {7, "X"},
    {8, "C"},      {9, "V"},     {11, "B"},    {12, "Q"},      {13, "W"},   {14, "E"},   {15, "R"},   {16, "Y"},
    {17, "T"},     {18, "1"},    {19, "2"},    {20, "3"},      {21, "4"},   {22, "6"},   {23, "5"},   {24, "="},
    {25, "9"},     {26, "7"},    {27, "-"},    {28, "8"},      {29, "0"},   {30, "]"},   {31, "O"},   {32, "U"},
    {33, "["},     {34, "I"},    {35, "P"},    {36, "Return"}, {37, "L"},   {38, "J"},   {39, "'"},   {40, "K"},
    {41, ";"},     {42, "\\"},   {43, ","},    {44, "/"},      {45, "N"},   {46, "M"},   {47, "."},   {48, "Tab"},
    {49, "Space"}, {50, "`"},    {96, "F5"},   {97, "F6"},     {98, "F7"},  {99, "F3"},  {100, "F8"}, {101, "F9"},
    {103, "F11"},  {109, "F10"}, {111, "F12"}, {118, "F4"},    {120, "F2"}, {122, "F1"}, {123, "←"},  {124, "→"},
    {125, "↓"},    {126, "↑"},
};

TEST(Shortcut, SixtySixKeysHaveTheirNamesAndEveryOtherShowsItsNumber) {
    ASSERT_EQ(namedKeys.size(), 66U);
    for (std::int64_t keyCode = -300; keyCode <= 1024; ++keyCode) {
        const auto named = namedKeys.find(keyCode);
        const std::string text = named != namedKeys.end() ? named->second : "Key " + std::to_string(keyCode);
        EXPECT_EQ((Shortcut{keyCode, command}).displayString(), "⌘" + text);
    }
}

TEST(Shortcut, TheLargestKeyCodesShowTheirNumbers) {
    EXPECT_EQ((Shortcut{std::numeric_limits<std::int64_t>::max(), {}}).displayString(), "Key 9223372036854775807");
    EXPECT_EQ((Shortcut{std::numeric_limits<std::int64_t>::min(), {}}).displayString(), "Key -9223372036854775808");
}

TEST(Shortcut, ShortcutsThatDifferInModifiersAreDistinctKeysOfATable) {
    const Shortcut plain{49, control};
    const Shortcut shifted{49, {control, shift}};
    EXPECT_NE(plain, shifted);
    EXPECT_NE(plain, (Shortcut{48, control}));
    EXPECT_EQ(plain, (Shortcut{Shortcut::space, Modifiers(8)}));
    std::unordered_map<Shortcut, std::string> table{{plain, "plain"}, {shifted, "shifted"}};
    EXPECT_EQ(table.size(), 2U);
    EXPECT_EQ(table.at(Shortcut{49, Modifiers(8)}), "plain");
    EXPECT_EQ(table.at(Shortcut{49, Modifiers(10)}), "shifted");
}

TEST(Shortcut, TheJsonFormHoldsTwoIntegers) {
    EXPECT_EQ(boost::json::serialize(encode(Shortcut{49, {control, option}})), R"({"keyCode":49,"modifiers":12})");
}

TEST(Shortcut, TheJsonFormDecodesToControlOptionSpace) {
    EXPECT_EQ(decoded(R"({"keyCode":49,"modifiers":12})"), (Shortcut{49, {control, option}}));
}

TEST(Shortcut, WhateverItsNumbersAShortcutSurvivesItsJsonForm) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    for (const Shortcut shortcut : {Shortcut::fn, Shortcut{-1, Modifiers(-1)}, Shortcut{largest, Modifiers(smallest)},
                                    Shortcut{smallest, Modifiers(largest)}})
        EXPECT_EQ(decodeShortcut(encode(shortcut)), shortcut) << shortcut.keyCode;
}

TEST(Shortcut, UnknownModifierBitsAndOtherKeysAreAcceptedWhenDecoding) {
    EXPECT_EQ(decoded(R"({"modifiers":1040,"keyCode":7,"name":"x","list":[1,{}]})"), (Shortcut{7, Modifiers(1040)}));
    EXPECT_EQ(decoded(R"({"modifiers":1.2e1,"keyCode":49.0})"), (Shortcut{49, Modifiers(12)}));
}

TEST(Shortcut, WithoutTwoIntegersDecodingFails) {
    for (const char* text : {
             R"({"keyCode":49})",
             R"({"modifiers":12})",
             R"({})",
             R"({"keycode":49,"modifiers":12})",
             R"({"keyCode":null,"modifiers":12})",
             R"({"keyCode":49,"modifiers":null})",
             R"({"keyCode":"49","modifiers":12})",
             R"({"keyCode":49,"modifiers":"12"})",
             R"({"keyCode":49.5,"modifiers":12})",
             R"({"keyCode":49,"modifiers":12.5})",
             R"({"keyCode":true,"modifiers":12})",
             R"({"keyCode":49,"modifiers":[12]})",
             R"({"keyCode":49,"modifiers":{"rawValue":12}})",
             R"({"keyCode":9223372036854775808,"modifiers":12})",
             R"({"keyCode":49,"modifiers":1e400})",
             R"([49,12])",
             R"("⌃⌥Space")",
             R"(49)",
             R"(null)",
         })
        EXPECT_FALSE(decoded(text)) << text;
}

}  // namespace
}  // namespace quillmere
