#include "Quillmere/AppDelegate.h"
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Settings/GroupView.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Support/FakePlatform.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
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
    QWidget& window() { return *delegate->settingsWindow()->window(); }
    QAbstractButton& recorder(std::size_t index) {
        settle();
        return *shown<QAbstractButton>(*shown<GroupView>(window()).at(index)).front();
    }
    /// How often an entry of the menu is chosen from now on.
    QSignalSpy choices(int entry) {
        return QSignalSpy(delegate->statusItem()->menu().actions().at(entry), &QAction::triggered);
    }

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
    recorder(1).click();
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
    recorder(1).click();
    EXPECT_EQ(press(Shortcut::fn), InterceptDecision::swallow);
    EXPECT_EQ(recorder(1).text(), "🌐 Fn");
    EXPECT_EQ(system.tap.interest.shortcuts, std::vector<Shortcut>({commandK, Shortcut::fn}));
}

TEST_F(AppDelegateSettingsTest, TheMenusKeyEquivalentsActInTheSettingsWindow) {
    delegate->openSettings();
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window(), 10000));
    delegate->settings().setTab(SettingsTab::general);
    QTest::keyClick(&window(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(delegate->settings().tab(), SettingsTab::layouts);
    EXPECT_EQ(system.workspace.broughtToFront.size(), 2U);
    const QSignalSpy quits = choices(3);
    QTest::keyClick(&window(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(quits.count(), 1);
}

TEST_F(AppDelegateSettingsTest, TheActiveToggleAndTheMenuShowTheSame) {
    delegate->openSettings();
    delegate->toggleActive();
    EXPECT_FALSE(delegate->model().config().active);
    QMenu& menu = delegate->statusItem()->menu();
    emit menu.aboutToShow();
    EXPECT_FALSE(menu.actions().front()->isChecked());
}

}  // namespace
}  // namespace quillmere
