#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxMethods.h"
#include "Tests/App/PlayedFramework.h"
#include "Tests/Support/FakeInputSourceService.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

using Texts = std::vector<std::string>;

class ComposedInputSourcesTest : public testing::Test {
protected:
    ComposedInputSourcesTest() {
        auto ownDesktop = std::make_unique<FakeInputSourceService>();
        desktop = ownDesktop.get();
        desktop->records = {layout("xkb:us"), layout("xkb:ua")};
        desktop->current = "xkb:us";
        std::vector<std::unique_ptr<InputMethodFramework>> frameworks;
        frameworks.push_back(nullptr);
        for (PlayedFramework** framework : {&first, &second}) {
            auto played = std::make_unique<PlayedFramework>();
            *framework = played.get();
            frameworks.push_back(std::move(played));
        }
        second->now.sources = {layout("xkb:us"), method("ibus:anthy")};
        sources = std::make_unique<ComposedInputSources>(std::move(ownDesktop), std::move(frameworks));
    }

    Texts ids() const {
        Texts result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    int select(const char* id) const { return sources->select({.id = id}); }

    FakeInputSourceService* desktop = nullptr;
    PlayedFramework* first = nullptr;
    PlayedFramework* second = nullptr;
    std::unique_ptr<ComposedInputSources> sources;
};

TEST_F(ComposedInputSourcesTest, TheDesktopsLayoutsComeFirstAndThenTheMethods) {
    EXPECT_EQ(ids(), (Texts{"xkb:us", "xkb:ua", "fcitx:hangul"}));
}

TEST_F(ComposedInputSourcesTest, OnlyTheFirstFrameworkThatRunsCounts) {
    EXPECT_NE(select("ibus:anthy"), 0);
    first->isThere = false;
    EXPECT_EQ(ids(), (Texts{"xkb:us", "xkb:ua", "ibus:anthy"}));
    EXPECT_EQ(select("ibus:anthy"), 0);
    second->isThere = false;
    EXPECT_EQ(ids(), (Texts{"xkb:us", "xkb:ua"}));
    EXPECT_EQ(first->selected, Texts{});
}

TEST_F(ComposedInputSourcesTest, OneThatDoesNotAnswerLeavesTheDesktopToItself) {
    first->answers = false;
    EXPECT_EQ(ids(), (Texts{"xkb:us", "xkb:ua"}));
    EXPECT_EQ(sources->currentID(), "xkb:us");
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(desktop->selected, Texts{"xkb:ua"});
}

TEST_F(ComposedInputSourcesTest, AMethodIsCurrentWhileItIsInUseAndElseTheLayout) {
    first->now.current = "fcitx:hangul";
    EXPECT_EQ(sources->currentID(), "fcitx:hangul");
    for (const std::optional<std::string>& plain : {std::optional<std::string>("xkb:de"), {std::nullopt}}) {
        first->now.current = plain;
        EXPECT_EQ(sources->currentID(), "xkb:us");
    }
}

TEST_F(ComposedInputSourcesTest, ALayoutPutsTheFrameworkOnItsKeyboardAndOnlyIfItIsNotThereAlready) {
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(first->selected, Texts{});
    for (const char* current : {"fcitx:hangul", "xkb:de"}) {
        first->now.current = current;
        first->selected.clear();
        EXPECT_EQ(select("xkb:ua"), 0);
        EXPECT_EQ(first->selected, Texts{"xkb:us"}) << "it would type " << current;
    }
}

TEST_F(ComposedInputSourcesTest, ALayoutUnderAMethodThatStaysIsRefused) {
    first->now.current = "fcitx:hangul";
    first->obeys = false;
    EXPECT_NE(select("xkb:ua"), 0);
    first->obeys = true;
    first->now.keyboard.reset();
    EXPECT_NE(select("xkb:ua"), 0) << "a list of methods alone";
    EXPECT_EQ(desktop->selected, Texts{});
}

TEST_F(ComposedInputSourcesTest, AMethodTakesTheDesktopToTheLayoutThatItReads) {
    desktop->current = "xkb:ua";
    EXPECT_EQ(select("fcitx:hangul"), 0);
    EXPECT_EQ(first->selected, Texts{"fcitx:hangul"});
    EXPECT_EQ(desktop->selected, Texts{"xkb:us"});
    desktop->records = {layout("xkb:ua"), layout("xkb:ru")};
    EXPECT_EQ(select("fcitx:hangul"), 0) << "where the desktop has it";
    EXPECT_EQ(desktop->selected.size(), 1U);
}

TEST_F(ComposedInputSourcesTest, AMethodThatIsRefusedChangesNoLayout) {
    desktop->current = "xkb:ua";
    first->obeys = false;
    EXPECT_NE(select("fcitx:hangul"), 0);
    EXPECT_EQ(desktop->selected, Texts{});
}

TEST_F(ComposedInputSourcesTest, WhatNeitherHasIsRefusedAndLeavesTheMethod) {
    first->now.current = "fcitx:hangul";
    for (const char* id : {"xkb:fr", "xkb:de", "fcitx:pinyin", ""})
        EXPECT_NE(select(id), 0) << id;
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(first->selected, Texts{});
    EXPECT_EQ(desktop->selected, Texts{});
}

TEST_F(ComposedInputSourcesTest, ADesktopWithOneLayoutOrNoneLeavesThemToAFrameworkThatHasThem) {
    for (const std::vector<InputSourceRecord>& layouts : {std::vector{layout("xkb:us")}, {}}) {
        desktop->records = layouts;
        EXPECT_EQ(ids(), (Texts{"xkb:us", "fcitx:hangul", "xkb:de"}));
        EXPECT_EQ(select("xkb:de"), 0);
        EXPECT_EQ(sources->currentID(), "xkb:de");
    }
    EXPECT_EQ(desktop->selected, Texts{});
    first->now.sources.clear();
    desktop->records = {layout("xkb:us")};
    EXPECT_EQ(ids(), Texts{"xkb:us"}) << "but not to an empty one";
}

TEST_F(ComposedInputSourcesTest, AFrameworkWithoutLayoutsOfItsOwnAddsItsMethodsToTheOne) {
    first->typesLayouts = false;
    desktop->records = {layout("xkb:ua")};
    EXPECT_EQ(ids(), (Texts{"xkb:ua", "fcitx:hangul"}));
    EXPECT_NE(select("xkb:de"), 0);
}

TEST_F(ComposedInputSourcesTest, WithoutAWindowToTypeInTheDesktopsOnlyLayoutIsThere) {
    desktop->records = {layout("xkb:us")};
    first->now.current.reset();
    first->obeys = false;
    EXPECT_EQ(sources->currentID(), "xkb:us");
    EXPECT_EQ(select("xkb:us"), 0);
    EXPECT_NE(select("fcitx:hangul"), 0);
    desktop->status = 1;
    EXPECT_NE(select("xkb:de"), 0);
}

TEST(FcitxMethods, APlainKeyboardIsTheLayoutThatEveryDesktopKnows) {
    for (const auto& [name, id] : {std::pair{"keyboard-us", "xkb:us"},
                                   {"keyboard-us-dvorak", "xkb:us+dvorak"},
                                   {"keyboard-us-altgr-intl", "xkb:us+altgr-intl"},
                                   {"hangul", "fcitx:hangul"},
                                   {"wbx-pinyin", "fcitx:wbx-pinyin"}})
        EXPECT_EQ(fcitxMethods::idOf(name), id);
}

}  // namespace

}  // namespace quillmere
