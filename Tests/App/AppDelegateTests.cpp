#include "Quillmere/AppDelegate.h"
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Tests/Support/FakePlatform.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QLabel>
#include <QMenu>

#include <string>
#include <utility>
#include <vector>

namespace quillmere {
namespace {

constexpr Shortcut commandK{40, Modifiers::command};

class AppDelegateTest : public testing::Test {
protected:
    AppDelegateTest() {
        system.inputSources.records = {layout("a", "Alpha"), layout("b", "Beta"), layout("c", "Gamma")};
        system.inputSources.current = "a";
    }
    ~AppDelegateTest() override { Palette::setDark(false); }

    void store(std::vector<std::string> sourceIDs, PlateVisibility visibility = PlateVisibility::always) {
        system.defaults.setData(
            "config", encodeConfig({true, {{makeUUID(), commandK, std::move(sourceIDs)}}, PlateSettings(visibility)}));
    }
    void launch() {
        delegate = std::make_unique<AppDelegate>(system.take());
        delegate->applicationDidFinishLaunching();
    }
    InterceptDecision press(Shortcut shortcut = commandK) {
        const std::uint64_t flags = shortcut == commandK ? KeyEventFlags::command : 0;
        const InterceptDecision decision = system.tap.callback({KeyEventType::keyDown, shortcut.keyCode, 0, flags, 0});
        system.tap.callback({KeyEventType::keyUp, shortcut.keyCode, 0, flags, 0});
        EXPECT_FALSE(std::exchange(isFirstPress, false) && system.panel.isVisible())
            << "the keyboard must not wait for the plate";
        system.queue.advance(0);
        return decision;
    }

    /// What stands on the plate, from the top; the highlighted name in brackets.
    std::vector<std::string> plateNames() const {
        std::vector<std::string> names;
        // Children come in the order in which they were added, which is from the top.
        for (const auto* label : system.panel.content()->findChildren<QLabel*>()) {
            const auto name = label->text().toStdString();
            const auto* row = dynamic_cast<const PlateView*>(label->parent());
            const bool isHighlighted = row != nullptr && row->fill() == Palette::selection();
            names.push_back(isHighlighted ? "[" + name + "]" : name);
        }
        return names;
    }

    FakePlatform system;
    std::unique_ptr<AppDelegate> delegate;
    bool isFirstPress = true;  ///< which finds no plate on the screen
};

TEST_F(AppDelegateTest, WithPermissionTheTapIsInstalledOnceAndNothingPolls) {
    launch();
    EXPECT_EQ(system.tap.installCalls, 1);
    EXPECT_EQ(delegate->permissionGate()->state(), PermissionGate::State::granted);
    EXPECT_FALSE(delegate->isRetrying());
    system.queue.advance(10);
    EXPECT_EQ(system.tap.installCalls, 1);
}

TEST_F(AppDelegateTest, WithoutPermissionItIsAskedForEverySecondUntilItComes) {
    system.tap.allowed = false;
    launch();
    EXPECT_TRUE(delegate->isRetrying());
    system.queue.advance(3.5);
    EXPECT_EQ(system.tap.installCalls, 4);
    system.tap.allowed = true;
    system.queue.advance(0.5);
    EXPECT_EQ(delegate->permissionGate()->state(), PermissionGate::State::granted);
    EXPECT_FALSE(delegate->isRetrying());
    system.queue.advance(10);
    EXPECT_EQ(system.tap.installCalls, 5);
}

TEST_F(AppDelegateTest, TheLaunchGoesThePreviewTheSettingsTheTrayTheTapTheUpdates) {
    system.bundle.values["QuillmereUpdateFeed"] = "https://example.org/feed.json";
    std::vector<std::string> steps;
    std::size_t scheduled = 0;
    system.trayHost.onAsked = [&] {
        steps.emplace_back("tray");
        EXPECT_TRUE(delegate->model().onPreview);
        EXPECT_TRUE(delegate->settings().checkForUpdates);
        EXPECT_EQ(delegate->statusItem(), nullptr);
    };
    system.tap.onInstall = [&] {
        steps.emplace_back("tap");
        EXPECT_NE(delegate->statusItem(), nullptr);
        scheduled = system.queue.pendingCount();
    };
    delegate = std::make_unique<AppDelegate>(system.take());
    EXPECT_FALSE(delegate->model().onPreview);
    EXPECT_EQ(system.queue.pendingCount(), 0U);
    delegate->applicationDidFinishLaunching();
    EXPECT_EQ(steps, (std::vector<std::string>{"tray", "tap"}));
    EXPECT_EQ(scheduled, 0U);
    EXPECT_EQ(system.queue.pendingCount(), 2U) << "the first check and the hourly one";
}

TEST_F(AppDelegateTest, WithoutPermissionTheProgramAsksForItOnceTheTapWasRefused) {
    system.tap.allowed = false;
    system.tap.onInstall = [this] {
        EXPECT_EQ(system.tap.installCalls > 1, delegate->permissionWindow() != nullptr);
        EXPECT_EQ(system.tap.installCalls > 1, delegate->isRetrying());
    };
    launch();
    EXPECT_NE(delegate->permissionWindow(), nullptr);
    EXPECT_TRUE(delegate->isRetrying());
    system.queue.advance(1);
    EXPECT_EQ(system.tap.installCalls, 2);
}

TEST_F(AppDelegateTest, TheTapKnowsItsKeysBeforeItIsInstalled) {
    store({"a", "b"});
    system.tap.onInstall = [this] { EXPECT_EQ(system.tap.interest, KeyInterest{.shortcuts = {commandK}}); };
    launch();
    EXPECT_EQ(system.tap.installCalls, 1);
}

TEST_F(AppDelegateTest, TheInterceptorIsMadeOnce) {
    launch();
    EXPECT_EQ(&delegate->interceptor(), &delegate->interceptor());
}

TEST_F(AppDelegateTest, ASwitchShowsTheGroupsNamesAndTheSelectedOne) {
    store({"a", "gone", "c"});
    system.inputSources.current = "gone";
    launch();
    EXPECT_EQ(press(), InterceptDecision::swallow);
    EXPECT_EQ(system.inputSources.current, "c");
    EXPECT_TRUE(system.panel.isVisible());
    EXPECT_EQ(plateNames(), (std::vector<std::string>{"Alpha", "gone", "[Gamma]"}));
    press();
    EXPECT_EQ(plateNames(), (std::vector<std::string>{"[Alpha]", "gone", "Gamma"}));
}

TEST_F(AppDelegateTest, ManyOnlyHidesThePlateOfTwoButNotOfThree) {
    store({"a", "b"}, PlateVisibility::manyOnly);
    launch();
    press();
    EXPECT_EQ(system.inputSources.current, "b");
    EXPECT_FALSE(system.panel.isVisible());

    delegate->model().setConfig(
        {true, {{makeUUID(), commandK, {"a", "b", "c"}}}, PlateSettings(PlateVisibility::manyOnly)});
    press();
    EXPECT_EQ(system.inputSources.current, "c");
    EXPECT_TRUE(system.panel.isVisible());
}

TEST_F(AppDelegateTest, ManyOnlyCountsTheSourcesOfTheGroupNotTheInstalledOnes) {
    store({"a", "gone", "also gone"}, PlateVisibility::manyOnly);
    system.inputSources.current = "also gone";
    launch();
    press();
    EXPECT_TRUE(system.panel.isVisible());
}

TEST_F(AppDelegateTest, ARefusedSwitchShowsNoPlate) {
    store({"b"});
    system.inputSources.status = -1;
    launch();
    EXPECT_EQ(press(), InterceptDecision::swallow);
    EXPECT_FALSE(system.panel.isVisible());
}

TEST_F(AppDelegateTest, ThePreviewIsShownWhateverTheVisibility) {
    store({"a"}, PlateVisibility::manyOnly);
    launch();
    delegate->model().onPreview();
    EXPECT_TRUE(system.panel.isVisible());
    EXPECT_EQ(plateNames(), (std::vector<std::string>{"[English]", "Українська"}));
}

TEST_F(AppDelegateTest, TheTapLearnsOfEveryChangeAtOnce) {
    store({"a", "b"});
    launch();
    EXPECT_EQ(system.tap.interest, KeyInterest{.shortcuts = {commandK}});
    delegate->toggleActive();
    EXPECT_EQ(system.tap.interest, KeyInterest{});
    delegate->model().startRecording(makeUUID(), [](std::int64_t, Modifiers) {});
    EXPECT_EQ(system.tap.interest, KeyInterest{.everyKey = true});
    delegate->model().endRecording();
    EXPECT_EQ(system.tap.interest, KeyInterest{});
}

TEST_F(AppDelegateTest, ADesktopThatSwitchesByItselfIsArmedWithWhatCanFire) {
    store({"a", "b"});
    system.tap.onInstall = [this] { EXPECT_EQ(system.tap.armed.size(), 1U) << "before it is the tap"; };
    launch();
    EXPECT_EQ(system.tap.armed, (std::vector<ArmedShortcut>{{commandK, {"a", "b"}}}));
    delegate->model().setConfig({true, {{makeUUID(), commandK, {"b", "c"}}}, {}});
    EXPECT_EQ(system.tap.armed, (std::vector<ArmedShortcut>{{commandK, {"b", "c"}}}));
    delegate->toggleActive();
    EXPECT_EQ(system.tap.armed, std::vector<ArmedShortcut>{});
}

TEST_F(AppDelegateTest, WhatTheDesktopHasSwitchedByItselfIsShownAndNotDecidedAgain) {
    store({"a", "b", "c"});
    launch();
    system.tap.onSwitched(commandK, "c");
    system.queue.advance(0);
    EXPECT_TRUE(system.panel.isVisible());
    EXPECT_EQ(plateNames(), (std::vector<std::string>{"Alpha", "Beta", "[Gamma]"}));
    EXPECT_EQ(system.inputSources.current, "a") << "nothing is selected";
}

TEST_F(AppDelegateTest, ASwitchOfAGroupThatIsGoneShowsNothing) {
    store({"a", "b"});
    launch();
    delegate->toggleActive();
    system.tap.onSwitched(commandK, "b");
    system.queue.advance(0);
    EXPECT_FALSE(system.panel.isVisible());
}

TEST_F(AppDelegateTest, AGroupThatIsPutOnAnUnheardFnAsksForThePermissionAndTheOthersGoOn) {
    store({"a", "b"});
    system.tap.hearsFn = false;
    launch();
    ASSERT_EQ(delegate->permissionWindow(), nullptr);
    Config config = delegate->model().config();
    config.groups.push_back({makeUUID(), Shortcut::fn, {"a", "c"}});
    delegate->model().setConfig(config);
    ASSERT_NE(delegate->permissionWindow(), nullptr);
    QWidget* const window = delegate->permissionWindow()->window();
    EXPECT_EQ(window->windowTitle(), "Quillmere needs permission");
    system.queue.advance(2);
    EXPECT_EQ(system.tap.installCalls, 4) << "it is probed for";
    EXPECT_EQ(press(), InterceptDecision::swallow);
    EXPECT_EQ(system.inputSources.current, "b");

    config.active = false;
    delegate->model().setConfig(config);
    config.active = true;
    delegate->model().setConfig(config);
    EXPECT_EQ(delegate->permissionWindow()->window(), window) << "which it did already";
    system.tap.hearsFn = true;
    system.queue.advance(1);
    EXPECT_EQ(window->windowTitle(), "Quillmere is ready");
    EXPECT_FALSE(delegate->isRetrying());
}

TEST_F(AppDelegateTest, EachTimeThatFnIsUnheardItIsAskedForAnew) {
    store({"a", "b"});
    system.tap.hearsFn = false;
    launch();
    const Config without = delegate->model().config();
    Config with = without;
    with.groups.push_back({makeUUID(), Shortcut::fn, {"a", "c"}});
    for (int time = 0; time < 2; ++time) {
        delegate->model().setConfig(with);
        EXPECT_EQ(delegate->permissionWindow()->window()->windowTitle(), "Quillmere needs permission");
        EXPECT_TRUE(delegate->isRetrying());
        delegate->model().setConfig(without);
        system.queue.advance(1);
        EXPECT_EQ(delegate->permissionWindow()->window()->windowTitle(), "Quillmere is ready");
        EXPECT_FALSE(delegate->isRetrying());
    }
}

TEST_F(AppDelegateTest, TurningOffAndOnRestoresTheConfigurationAndStoresBoth) {
    store({"a", "b"});
    launch();
    const Config before = delegate->model().config();
    const int writes = system.defaults.writes("config");
    delegate->toggleActive();
    EXPECT_FALSE(decodeConfig(system.defaults.data("config").value())->active);
    EXPECT_EQ(press(), InterceptDecision::pass);
    delegate->toggleActive();
    EXPECT_EQ(delegate->model().config(), before);
    EXPECT_EQ(system.defaults.writes("config"), writes + 2);
    EXPECT_EQ(press(), InterceptDecision::swallow);
}

TEST_F(AppDelegateTest, TheMenuTogglesAndItsCheckMarkFollowsTheConfiguration) {
    launch();
    QMenu& menu = delegate->statusItem()->menu();
    QAction& active = *delegate->statusItem()->menu().actions().front();
    emit menu.aboutToShow();
    EXPECT_TRUE(active.isChecked());
    active.trigger();
    EXPECT_FALSE(delegate->model().config().active);
    emit menu.aboutToShow();
    EXPECT_FALSE(active.isChecked());
    Config config = delegate->model().config();
    config.active = true;
    delegate->model().setConfig(config);
    emit menu.aboutToShow();
    EXPECT_TRUE(active.isChecked());
}

TEST_F(AppDelegateTest, ColoursFollowTheSystem) {
    launch();
    EXPECT_FALSE(Palette::isDark());
    system.appearance.setDark(true);
    EXPECT_TRUE(Palette::isDark());
}

TEST_F(AppDelegateTest, StartingAloneWritesTheUpdateSettingBackAndNothingElse) {
    system.defaults.remove("config");
    const int writes = system.defaults.writes();
    launch();
    system.queue.advance(29);
    EXPECT_EQ(system.defaults.writes(), writes + 1);
    EXPECT_EQ(system.defaults.boolean("updateAutomatic"), true);
    EXPECT_EQ(system.defaults.count(), 1U);
}

}  // namespace
}  // namespace quillmere
