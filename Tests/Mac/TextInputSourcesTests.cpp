#include "Quillmere/Platform/Mac/TextInputSources.h"
#include "Quillmere/Switching/InputSources.h"
#include "Tests/Mac/Doubles/TextInput.h"
#include "Tests/Mac/MacTest.h"

namespace quillmere {
namespace {

class TextInputSourcesTest : public MacTest {
protected:
    TextInputSources service;
    InputSources sources{service};
};

TEST_F(TextInputSourcesTest, TheSwitchableOnesAreListedInTheSystemsOrder) {
    textinput::installed = {
        {.id = "z", .name = "ABC", .languages = {"en", "de"}},
        {.id = "palette", .type = "TISTypeCharacterPalette", .name = "Emoji"},
        {.id = "nameless", .languages = {"uk"}},
        {.id = "disabled", .name = "Français", .isEnabled = false},
        {.id = "container", .name = "Japanese", .isSelectCapable = false},
        {.id = "mode", .type = "TISTypeKeyboardInputMode", .name = "ひらがな"},
        {.id = "typeless", .type = ""},
        {.name = "without an identifier"},
    };
    const std::vector<SourceInfo> expected{
        {"z", "ABC", "en"},
        {"nameless", "nameless", "uk"},
        {"mode", "ひらがな", ""},
    };
    EXPECT_EQ(sources.available(), expected);
    for (const char* id : {"palette", "disabled", "container", "typeless", ""})
        EXPECT_FALSE(sources.select(id)) << id;
    EXPECT_EQ(textinput::selections(), 0) << "the system is not even asked";
}

TEST_F(TextInputSourcesTest, WhatIsListedWithoutBeingAskedForIsNotOfferedEither) {
    textinput::listsAll = true;
    textinput::installed[0].isEnabled = false;
    textinput::installed[1].isSelectCapable = false;
    const auto records = service.sources();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_FALSE(records[0].enabled);
    EXPECT_FALSE(records[1].selectCapable);
    ASSERT_EQ(sources.available().size(), 1U);
    EXPECT_EQ(sources.available()[0].id, japanese);
}

TEST_F(TextInputSourcesTest, LanguagesThatAreNoListAreNone) {
    textinput::installed = {{.id = "a", .name = "A", .languageText = "uk"}};
    EXPECT_EQ(sources.available(), (std::vector<SourceInfo>{{"a", "A", ""}}));
}

TEST_F(TextInputSourcesTest, WhatIsSelectedIsCurrent) {
    EXPECT_EQ(sources.currentID(), english);
    EXPECT_TRUE(sources.select(japanese));
    EXPECT_EQ(sources.currentID(), japanese);
    EXPECT_TRUE(sources.select(japanese));
    EXPECT_EQ(textinput::selections(), 2) << "the system is asked even for the current one";
}

TEST_F(TextInputSourcesTest, ARefusalIsTold) {
    textinput::refusal = -50;
    EXPECT_FALSE(sources.select(ukrainian));
    EXPECT_EQ(sources.currentID(), english);
    InputSourceRecord record = service.sources().at(1);
    EXPECT_EQ(service.select(record), -50);
    textinput::refusal = 0;
    record.id = "gone";
    EXPECT_NE(service.select(record), 0);
}

TEST_F(TextInputSourcesTest, ASourceThatTheUserHasDisabledSinceIsNotSelected) {
    ASSERT_EQ(sources.available().size(), 3U);
    textinput::installed[1].isEnabled = false;
    EXPECT_FALSE(sources.select(ukrainian));
    textinput::installed[1].isEnabled = true;
    EXPECT_TRUE(sources.select(ukrainian));
}

TEST_F(TextInputSourcesTest, OfTwoWithOneIdentifierTheKindDecides) {
    textinput::installed = {{.id = "same", .type = "TISTypeKeyboardInputMode"}, {.id = "same"}};
    const auto records = service.sources();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(service.select(records[1]), 0);
    EXPECT_EQ(textinput::current, 1U);
}

TEST_F(TextInputSourcesTest, ASelectionNeedsNoListBefore) {
    const auto records = TextInputSources().sources();
    EXPECT_EQ(service.select(records.at(1)), 0);
    EXPECT_EQ(currentSource(), ukrainian);
}

TEST_F(TextInputSourcesTest, WithoutAListThereAreNone) {
    textinput::answers = false;
    textinput::current.reset();
    EXPECT_TRUE(sources.available().empty());
    EXPECT_FALSE(sources.select(english));
    EXPECT_NE(service.select({.id = english, .type = InputSourceType::keyboardLayout}), 0);
    EXPECT_EQ(sources.currentID(), std::nullopt);
}

}  // namespace
}  // namespace quillmere
