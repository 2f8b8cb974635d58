#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandEventTap.h"
#include "Quillmere/Platform/Linux/Tap/ShortcutConflicts.h"
#include "Tests/Support/FakeHyprland.h"
#include "Tests/Support/FakeInputSourceService.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

namespace quillmere {

namespace {

using namespace std::chrono_literals;
using support::FakeHyprland;
using support::holdsFor;
using support::waitUntil;
using Version = FakeHyprland::Version;

constexpr Shortcut controlOptionSpace{Shortcut::space, {Modifiers::control, Modifiers::option}};
constexpr Shortcut commandShiftK{40, {Modifiers::command, Modifiers::shift}};
constexpr unsigned int controlAlt = 12;
constexpr unsigned int shiftSuper = 65;
constexpr unsigned int spaceKey = 65;
constexpr unsigned int kKey = 45;

class HyprlandEventTapTest : public testing::TestWithParam<Version> {
protected:
    HyprlandEventTapTest() { sources.records = {layout("xkb:us"), layout("xkb:ua")}; }

    /// As the application does at its start.
    bool start(const std::vector<Shortcut>& shortcuts) {
        QCoreApplication::processEvents();
        tap.emplace(folder.path().string(), sources);
        tap->setInterest({.shortcuts = shortcuts});
        return tap->install([this](const KeyEventFields& event) {
            if (event.type == KeyEventType::keyDown)
                pressed.push_back({event.keyCode, Modifiers::fromFlags(event.flags)});
            return InterceptDecision::swallow;
        });
    }
    /// Each in a turn of the event loop of its own, since one turn has the time
    /// of one switch only.
    void setInterest(const KeyInterest& interest) {
        QCoreApplication::processEvents();
        tap->setInterest(interest);
    }
    bool pressesReach(unsigned int modifiers, unsigned int key, const Shortcut& shortcut) {
        pressed.clear();
        return desktop->press(modifiers, key) && waitUntil([&] { return pressed == std::vector{shortcut}; });
    }

    support::TemporaryFolder folder;
    std::optional<FakeHyprland> desktop{std::in_place, folder.path(), GetParam()};
    FakeInputSourceService sources;
    std::vector<Shortcut> pressed;
    std::optional<HyprlandEventTap> tap;
};

INSTANTIATE_TEST_SUITE_P(Versions, HyprlandEventTapTest, testing::Values(Version::hyprlang, Version::lua),
                         [](const auto& info) { return info.param == Version::lua ? "Lua" : "Hyprlang"; });

TEST_P(HyprlandEventTapTest, APressIsSwallowedAndToldOnce) {
    ASSERT_TRUE(start({controlOptionSpace, commandShiftK}));
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace));
    EXPECT_TRUE(pressesReach(shiftSuper, kKey, commandShiftK));
    EXPECT_FALSE(desktop->press(controlAlt, kKey));
}

TEST_P(HyprlandEventTapTest, EventsOfOthersAreNoPress) {
    ASSERT_TRUE(start({controlOptionSpace}));
    for (const char* line : {"custom>>quillmere\n", "custom>>quillmere 65 13\n", "custom>>65 12\n", "custom>>\n",
                             "openwindow>>quillmere 65 12\n"})
        desktop->announce(line);
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace)) << "and nothing before it";
}

TEST_P(HyprlandEventTapTest, WhatIsOfNoInterestIsFreed) {
    ASSERT_TRUE(start({controlOptionSpace}));
    setInterest({.shortcuts = {controlOptionSpace}, .everyKey = true});
    EXPECT_FALSE(desktop->press(controlAlt, spaceKey)) << "the recorder may be given a present one, too";
    setInterest({.shortcuts = {controlOptionSpace, commandShiftK}});
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace));
    setInterest({.shortcuts = {commandShiftK}});
    EXPECT_FALSE(desktop->press(controlAlt, spaceKey));
    EXPECT_TRUE(pressesReach(shiftSuper, kKey, commandShiftK));
    setInterest({});
    EXPECT_EQ(desktop->bindCount(), 0U);
}

TEST_P(HyprlandEventTapTest, TheEndTakesEverythingBack) {
    ASSERT_TRUE(start({controlOptionSpace, commandShiftK}));
    ASSERT_EQ(desktop->bindCount(), 2U);
    QCoreApplication::processEvents();
    tap.reset();
    EXPECT_EQ(desktop->bindCount(), 0U);
}

TEST_P(HyprlandEventTapTest, WhatAKilledProgramLeftIsTakenBackByTheNext) {
    ASSERT_TRUE(start({controlOptionSpace, commandShiftK}));
    // It cannot take them back any more.
    desktop->setAnswer("eval", "error");
    desktop->setAnswer("keyword", "error");
    QCoreApplication::processEvents();
    tap.reset();
    desktop->clearAnswers();
    ASSERT_EQ(desktop->bindCount(), 2U);
    ASSERT_TRUE(start({controlOptionSpace}));
    EXPECT_EQ(desktop->bindCount(), 1U);
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace)) << "once, not twice";
}

TEST_P(HyprlandEventTapTest, AfterAReloadEverythingIsBoundAgainAsTheNewConfigurationLeavesIt) {
    ASSERT_TRUE(start({controlOptionSpace, commandShiftK}));
    desktop->setOwnBinds({{.modifiers = shiftSuper, .key = "K", .submap = {}}});
    desktop->reload();
    EXPECT_TRUE(waitUntil([this] { return tap->taken().all() == std::vector{commandShiftK}; }));
    EXPECT_TRUE(waitUntil([this] { return desktop->bindCount() == 1; }));
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace));
}

TEST_P(HyprlandEventTapTest, WhatIsBoundBetweenAReloadAndItsNewsIsNotDoubled) {
    ASSERT_TRUE(start({controlOptionSpace}));
    desktop->reloadUntold();
    setInterest({.shortcuts = {controlOptionSpace, commandShiftK}});
    desktop->announce("configreloaded>>\n");
    EXPECT_TRUE(waitUntil([this] { return desktop->bindCount() == 2; }));
    EXPECT_TRUE(pressesReach(shiftSuper, kKey, commandShiftK)) << "once, not twice";
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace));
}

TEST_P(HyprlandEventTapTest, WhatTheUserHasBoundStaysTheirsAndIsSaid) {
    for (const auto& own :
         {FakeHyprland::OwnBind{.modifiers = controlAlt, .key = "SPACE", .submap = {}},
          FakeHyprland::OwnBind{.modifiers = controlAlt, .key = {}, .keyCode = spaceKey, .submap = {}}}) {
        desktop->setOwnBinds({own, {.modifiers = shiftSuper, .key = "k", .submap = "resize"}});
        ASSERT_TRUE(start({controlOptionSpace, commandShiftK}));
        EXPECT_EQ(desktop->bindCount(), 1U);
        EXPECT_TRUE(pressesReach(shiftSuper, kKey, commandShiftK)) << "in a submap it is not in the way";
        const ShortcutConflicts conflicts(tap->taken(), QStringLiteral("taken: %1"));
        EXPECT_TRUE(conflicts.isOpen());
        EXPECT_EQ(conflicts.text(), QStringLiteral("taken: ⌃⌥Space"));
        setInterest({.shortcuts = {commandShiftK}});
        EXPECT_FALSE(conflicts.isOpen());
    }
}

TEST_P(HyprlandEventTapTest, WithoutHyprlandThereIsNoneAndOneThatComesLaterIsTakenThen) {
    desktop.reset();
    EXPECT_FALSE(start({controlOptionSpace}));
    EXPECT_FALSE(HyprlandEventTap("", sources).install({}));
    desktop.emplace(folder.path(), GetParam());
    EXPECT_TRUE(tap->install([this](const KeyEventFields&) {
        pressed.push_back(controlOptionSpace);
        return InterceptDecision::swallow;
    }));
    EXPECT_TRUE(desktop->press(controlAlt, spaceKey));
    EXPECT_TRUE(waitUntil([this] { return !pressed.empty(); }));
}

TEST_P(HyprlandEventTapTest, ACompositorThatAnswersLateIsBoundOnceWhenItDoes) {
    ASSERT_TRUE(start({}));
    desktop->setSilent(true);
    setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_TRUE(holdsFor([this] { return desktop->bindCount() == 0; }, 300ms));
    desktop->setSilent(false);
    EXPECT_TRUE(waitUntil([this] { return desktop->bindCount() == 1; }));
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace));
}

TEST_P(HyprlandEventTapTest, ABindThatWasDoneButAnsweredTooLateIsNotDoubled) {
    ASSERT_TRUE(start({controlOptionSpace}));
    // The combinations of the user's own are known: the bind is what waits.
    desktop->setSilent(true);
    setInterest({.shortcuts = {controlOptionSpace, commandShiftK}});
    desktop->setSilent(false);
    EXPECT_TRUE(waitUntil([this] { return desktop->bindCount() == 2; }));
    EXPECT_TRUE(pressesReach(shiftSuper, kKey, commandShiftK));
    // Should it be tried again it would be now.
    EXPECT_TRUE(holdsFor([this] { return desktop->bindCount() <= 2; }, 400ms));
    EXPECT_TRUE(waitUntil([this] { return desktop->bindCount() == 2; }));
}

TEST_P(HyprlandEventTapTest, AConnectionThatWasClosedIsMadeAnew) {
    ASSERT_TRUE(start({controlOptionSpace}));
    desktop->hangUp();
    EXPECT_TRUE(waitUntil([this] {
        pressed.clear();
        desktop->press(controlAlt, spaceKey);
        return waitUntil([this] { return !pressed.empty(); }, 500ms);
    }));
    EXPECT_EQ(desktop->bindCount(), 1U);
}

TEST_P(HyprlandEventTapTest, ACompositorThatEndsEndsNothingElse) {
    ASSERT_TRUE(start({controlOptionSpace}));
    desktop.reset();
    setInterest({});
    setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_TRUE(tap->deliversAll());
}

TEST_P(HyprlandEventTapTest, WhatIsNoListOfBindsIsAskedForAgain) {
    for (const std::string& bytes : {std::string("["), std::string("unknown"), std::string(5U << 20, ' ')}) {
        ASSERT_TRUE(start({}));
        desktop->setAnswer("j/binds", bytes);
        setInterest({.shortcuts = {controlOptionSpace}});
        EXPECT_EQ(desktop->bindCount(), 0U);
        desktop->clearAnswers();
        EXPECT_TRUE(waitUntil([this] { return desktop->bindCount() == 1; }));
    }
}

TEST_P(HyprlandEventTapTest, ABindThatIsRefusedNeedsAnotherTap) {
    desktop->setAnswer("keyword bind", "Invalid dispatcher");
    desktop->setAnswer("eval quillmere", "error: attempt to index a nil value");
    EXPECT_FALSE(start({controlOptionSpace}));
    setInterest({});
    EXPECT_TRUE(tap->deliversAll());
}

TEST_P(HyprlandEventTapTest, ALoneFnIsNotHeardAndTheOthersWork) {
    EXPECT_FALSE(start({Shortcut::fn, controlOptionSpace}));
    EXPECT_TRUE(pressesReach(controlAlt, spaceKey, controlOptionSpace));
}

}  // namespace

}  // namespace quillmere
