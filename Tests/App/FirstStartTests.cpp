#include "Quillmere/AppDelegate.h"
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Support/FakePlatform.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QSystemTrayIcon>

#include <memory>

namespace quillmere {
namespace {

const QString fnHint = QStringLiteral("This keyboard does not tell of Fn: press the chip and choose another shortcut");

/// The application on a fake system on which nothing is stored: one group on Fn
/// alone with all sources.
class FirstStartTest : public testing::Test {
protected:
    FirstStartTest() { system.inputSources.records = {layout("a", "Alpha"), layout("b", "Beta")}; }
    ~FirstStartTest() override { Palette::setDark(false); }

    void launch() {
        delegate = std::make_unique<AppDelegate>(system.take());
        delegate->applicationDidFinishLaunching();
    }
    /// What stands in the settings.
    QStringList shownTexts() {
        delegate->openSettings();
        settle();
        return texts(*delegate->settingsWindow()->window());
    }

    FakePlatform system;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(FirstStartTest, ItIsOneUntilTheLaunch) {
    delegate = std::make_unique<AppDelegate>(system.take());
    EXPECT_TRUE(delegate->isFirstStart());
    delegate->applicationDidFinishLaunching();
    EXPECT_FALSE(delegate->isFirstStart());
}

TEST_F(FirstStartTest, ItIsNoneWithAStoredConfigurationBeItOneThatCannotBeRead) {
    system.defaults.setData("config", "{");
    delegate = std::make_unique<AppDelegate>(system.take());
    EXPECT_FALSE(delegate->isFirstStart());
}

TEST_F(FirstStartTest, ItIsNoneWhereTheLoginStartsTheProgram) {
    system.loginItem.enabled = true;
    delegate = std::make_unique<AppDelegate>(system.take());
    EXPECT_FALSE(delegate->isFirstStart());
}

TEST_F(FirstStartTest, WhereNoKeyboardTellsOfFnTheCardAndTheTraySaySo) {
    system.keyboards.tellOfFn = false;
    launch();
    system.trayHost.comeUp();
    EXPECT_TRUE(shownTexts().contains(fnHint));
    const QString toolTip = delegate->statusItem()->trayIcon()->toolTip();
    EXPECT_EQ(toolTip,
              QStringLiteral("Quillmere\nThis keyboard does not tell of Fn: choose another shortcut in the settings"));
}

TEST_F(FirstStartTest, WithAnotherShortcutNothingIsSaidOfFn) {
    system.keyboards.tellOfFn = false;
    launch();
    system.trayHost.comeUp();
    ASSERT_TRUE(shownTexts().contains(fnHint));
    Config config = delegate->model().config();
    config.groups.front().shortcut = Shortcut{Shortcut::space, Modifiers::control};
    delegate->model().setConfig(config);
    EXPECT_FALSE(texts(*delegate->settingsWindow()->window()).contains(fnHint));
    EXPECT_EQ(delegate->statusItem()->trayIcon()->toolTip(), QStringLiteral("Quillmere"));
}

TEST_F(FirstStartTest, AKeyboardThatIsPluggedInCountsFromTheNextLookOn) {
    system.keyboards.tellOfFn = false;
    launch();
    system.trayHost.comeUp();
    ASSERT_TRUE(shownTexts().contains(fnHint));
    system.keyboards.tellOfFn = true;
    EXPECT_FALSE(shownTexts().contains(fnHint));
    EXPECT_EQ(delegate->statusItem()->trayIcon()->toolTip(), QStringLiteral("Quillmere"));
}

TEST_F(FirstStartTest, WithNothingToSwitchToTheSettingsSayWhatToDo) {
    system.inputSources.records.clear();
    launch();
    EXPECT_TRUE(
        shownTexts().contains(QStringLiteral("No layouts found. Add some in the keyboard settings of this system.")));
    system.inputSources.records = {layout("a", "Alpha")};
    EXPECT_TRUE(shownTexts().contains(
        QStringLiteral("There is only one layout here, so nothing to switch to. Add another in the keyboard "
                       "settings of this system.")));
    system.inputSources.records.push_back(layout("b", "Beta"));
    EXPECT_FALSE(shownTexts().join(QString()).contains(QStringLiteral("settings of this system")));
}

}  // namespace
}  // namespace quillmere
