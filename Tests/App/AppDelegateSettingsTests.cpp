#include "Quillmere/AppDelegate.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Settings/GroupView.h"
#include "Quillmere/Settings/LayoutsTab.h"
#include "Quillmere/Settings/SettingsView.h"
#include "Quillmere/Settings/ShortcutChip.h"
#include "Quillmere/Settings/ShortcutRecorder.h"
#include "Tests/Support/FakePlatform.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>
#include <QWidget>

namespace quillmere {
namespace {

constexpr Shortcut commandK{40, Modifiers::command};

/// The application on a fake system, with two groups: ⌘K for "a" and "b", and
/// one without a shortcut.
class AppDelegateSettingsTest : public testing::Test {
protected:
    AppDelegateSettingsTest() {
        system.inputSources.records = {layout("a", "Alpha"), layout("b", "Beta")};
        system.inputSources.current.emplace("a");
        system.defaults.setData(
            "config",
            encodeConfig({true, {{makeUUID(), commandK, {"a", "b"}}, {makeUUID(), {}, {"a"}}}, PlateSettings()}));
        delegate = std::make_unique<AppDelegate>(system.take());
        delegate->applicationDidFinishLaunching();
    }
    ~AppDelegateSettingsTest() override { Palette::setDark(false); }

    InterceptDecision press(Shortcut shortcut) {
        const std::uint64_t flags = shortcut == commandK ? KeyEventFlags::command : 0;
        const InterceptDecision decision = system.tap.callback({KeyEventType::keyDown, shortcut.keyCode, 0, flags, 0});
        system.tap.callback({KeyEventType::keyUp, shortcut.keyCode, 0, flags, 0});
        return decision;
    }
    SettingsView& view() { return *delegate->settingsWindow()->view(); }
    ShortcutRecorder& recorder(std::size_t index) { return view().layoutsTab().cards().at(index)->recorder(); }

    FakePlatform system;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateSettingsTest, TheMenuOpensTheSettingsEachTimeInTheSameWindow) {
    QAction* const entry = delegate->statusItem()->menu().actions().at(1);
    ASSERT_EQ(entry->text(), "Settings…");
    EXPECT_EQ(delegate->settingsWindow(), nullptr) << "nothing is made before";
    entry->trigger();
    QWidget* const window = delegate->settingsWindow()->window();
    delegate->settings().setTab(SettingsTab::general);
    system.inputSources.records.push_back(layout("c", "Gamma"));
    entry->trigger();
    EXPECT_EQ(delegate->settingsWindow()->window(), window);
    EXPECT_EQ(delegate->settings().tab(), SettingsTab::layouts);
    EXPECT_EQ(delegate->model().available().size(), 3U);
    EXPECT_EQ(system.workspace.broughtToFront, std::vector<QWidget*>({window, window}));
}

TEST_F(AppDelegateSettingsTest, TheSettingsStateIsMadeOnce) {
    AppSettings* const first = &delegate->settings();
    EXPECT_EQ(&delegate->settings(), first);
}

TEST_F(AppDelegateSettingsTest, ClosingTheWindowWhileRecordingMakesTheNextKeyANormalOne) {
    delegate->openSettings();
    recorder(1).button().click();
    EXPECT_TRUE(system.tap.interest.everyKey);
    EXPECT_EQ(press(Shortcut{0, {}}), InterceptDecision::swallow);
    delegate->settingsWindow()->window()->close();
    EXPECT_FALSE(system.tap.interest.everyKey);
    EXPECT_EQ(press(Shortcut{0, {}}), InterceptDecision::pass);
    EXPECT_EQ(press(commandK), InterceptDecision::swallow);
    EXPECT_EQ(system.inputSources.current, "b");
}

TEST_F(AppDelegateSettingsTest, ARecordedShortcutSwitchesAtOnce) {
    delegate->openSettings();
    recorder(1).button().click();
    EXPECT_EQ(press(Shortcut::fn), InterceptDecision::swallow);
    EXPECT_EQ(recorder(1).button().title(), "🌐 Fn");
    EXPECT_EQ(system.tap.interest.shortcuts, std::vector<Shortcut>({commandK, Shortcut::fn}));
}

TEST_F(AppDelegateSettingsTest, TheActiveToggleAndTheMenuShowTheSame) {
    delegate->openSettings();
    delegate->toggleActive();
    EXPECT_FALSE(delegate->model().config().active);
    QMenu& menu = delegate->statusItem()->menu();
    emit menu.aboutToShow();
    EXPECT_FALSE(delegate->statusItem()->activeItem().isChecked());
}

}  // namespace
}  // namespace quillmere
