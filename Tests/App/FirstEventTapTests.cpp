#include "Quillmere/Platform/Linux/Tap/FirstEventTap.h"
#include "Tests/App/PlayedFramework.h"
#include "Tests/Support/FakeEventTap.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

const KeyInterest fnInterest{.shortcuts = {Shortcut::fn}};

class FirstEventTapTest : public testing::Test {
protected:
    FirstEventTapTest() {
        std::vector<std::unique_ptr<EventTap>> list;
        for (FakeEventTap** fake : {&first, &second}) {
            auto made = std::make_unique<FakeEventTap>();
            *fake = made.get();
            list.push_back(std::move(made));
        }
        auto played = std::make_unique<PlayedFramework>();
        framework = played.get();
        framework->isThere = false;
        std::vector<std::unique_ptr<InputMethodFramework>> frameworks;
        frameworks.push_back(std::move(played));
        sources.emplace(std::make_unique<FakeInputSourceService>(), std::move(frameworks));
        taps = std::make_unique<FirstEventTap>(std::move(list), *sources);
        taps->setInterest(fnInterest);
    }
    bool install() {
        return taps->install([](const KeyEventFields&) { return InterceptDecision::swallow; });
    }

    void setRunning(bool isRunning) {
        framework->isThere = isRunning;
        framework->onRunningChanged();
    }

    PlayedFramework* framework = nullptr;
    std::optional<ComposedInputSources> sources;
    FakeEventTap* first = nullptr;
    FakeEventTap* second = nullptr;
    std::unique_ptr<FirstEventTap> taps;
};

TEST_F(FirstEventTapTest, TheFirstThatThereIsIsTheTapAndTheOthersHoldNoKey) {
    EXPECT_TRUE(install());
    EXPECT_EQ(first->callback({}), InterceptDecision::swallow);
    EXPECT_EQ(second->installCalls, 0);
    EXPECT_EQ(first->interest, fnInterest);
    EXPECT_EQ(second->interest, KeyInterest{});
    taps->enable();
    EXPECT_EQ(first->enableCalls, 1);
    EXPECT_EQ(second->enableCalls, 0);
    taps->setInterest({.everyKey = true});
    EXPECT_TRUE(first->interest.everyKey);
    EXPECT_FALSE(second->interest.everyKey);
}

TEST_F(FirstEventTapTest, WithoutTheFirstItIsTheNextAndWithoutAnyThereIsNone) {
    first->allowed = second->allowed = false;
    EXPECT_FALSE(install());
    taps->setInterest({.everyKey = true});
    EXPECT_TRUE(first->interest.everyKey) << "it may deliver a part";
    second->allowed = true;
    EXPECT_TRUE(install());
    EXPECT_TRUE(second->interest.everyKey);
    EXPECT_EQ(first->interest, KeyInterest{});
}

TEST_F(FirstEventTapTest, WhatADesktopHasSwitchedIsToldWhicheverItIs) {
    std::vector<std::string> told;
    taps->onSwitched = [&](const Shortcut&, const std::string& id) { told.push_back(id); };
    const std::vector<ArmedShortcut> table{{Shortcut::fn, {"a", "b"}}};
    taps->arm(table);
    EXPECT_EQ(first->armed, table);
    EXPECT_EQ(second->armed, table);
    second->onSwitched(Shortcut::fn, "b");
    EXPECT_EQ(told, std::vector<std::string>{"b"});
}

TEST_F(FirstEventTapTest, WhileInputMethodsRunADesktopTellsOfAShortcutAndSwitchesNothingByItself) {
    const std::vector<ArmedShortcut> switching{{Shortcut::fn, {"a", "b"}}};
    const std::vector<ArmedShortcut> telling{{Shortcut::fn, {}}};
    taps->arm(switching);
    setRunning(true);
    EXPECT_EQ(first->armed, telling);
    EXPECT_EQ(second->armed, telling);
    taps->arm(switching);
    EXPECT_EQ(first->armed, telling);
    setRunning(false);
    EXPECT_EQ(first->armed, switching);
    taps.reset();
    setRunning(true);
}

}  // namespace

}  // namespace quillmere
