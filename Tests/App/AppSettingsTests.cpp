#include "Quillmere/Settings/AppSettings.h"
#include "Tests/Support/FakeLoginItem.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/MemoryDefaults.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

constexpr const char* automaticKey = "updateAutomatic";

class AppSettingsTest : public testing::Test {
protected:
    AppSettings make(bool updatesEnabled = true) { return {updateStore, updatesEnabled, loginItem, workspace, offers}; }

    MemoryDefaults defaults;
    UpdateStore updateStore{defaults};
    FakeLoginItem loginItem;
    std::vector<std::unique_ptr<Offer>> offers;
    FakeWorkspace workspace;
};

TEST_F(AppSettingsTest, ANewOneShowsTheStateOutside) {
    updateStore.setAutomatic(false);
    loginItem.enabled = true;
    const AppSettings settings = make();
    EXPECT_EQ(settings.tab(), SettingsTab::layouts);
    EXPECT_FALSE(settings.automaticUpdates());
    EXPECT_TRUE(settings.launchAtLogin());
    settings.checkForUpdates();
}

TEST_F(AppSettingsTest, EachChangeOfAutomaticUpdatesIsWrittenAtOnce) {
    AppSettings settings = make();
    const int before = defaults.writes(automaticKey);
    settings.setAutomaticUpdates(false);
    EXPECT_FALSE(updateStore.automatic());
    settings.setAutomaticUpdates(false);
    EXPECT_EQ(defaults.writes(automaticKey) - before, 2);
}

TEST_F(AppSettingsTest, RefreshReadsWhatOthersChanged) {
    AppSettings settings = make();
    updateStore.setAutomatic(false);
    loginItem.enabled = true;
    settings.refresh();
    EXPECT_FALSE(settings.automaticUpdates());
    EXPECT_TRUE(settings.launchAtLogin());
}

TEST_F(AppSettingsTest, LaunchAtLoginIsRegisteredAndUnregistered) {
    AppSettings settings = make();
    settings.setLaunchAtLogin(true);
    EXPECT_TRUE(settings.launchAtLogin());
    settings.setLaunchAtLogin(false);
    EXPECT_FALSE(settings.launchAtLogin());
    EXPECT_EQ(loginItem.requested, std::vector<bool>({true, false}));
    EXPECT_EQ(workspace.beeps, 0);
}

TEST_F(AppSettingsTest, ARefusalBeepsAndShowsTheRealState) {
    loginItem.refuses = true;
    AppSettings settings = make();
    settings.setLaunchAtLogin(true);
    EXPECT_EQ(workspace.beeps, 1);
    EXPECT_FALSE(settings.launchAtLogin());
}

TEST_F(AppSettingsTest, ARefusalToUnregisterLeavesItOn) {
    loginItem.enabled = true;
    loginItem.refuses = true;
    AppSettings settings = make();
    settings.setLaunchAtLogin(false);
    EXPECT_EQ(workspace.beeps, 1);
    EXPECT_TRUE(settings.launchAtLogin());
}

TEST_F(AppSettingsTest, WithoutALoginServiceNothingIsAskedAndItStaysOff) {
    loginItem.available = false;
    loginItem.enabled = true;
    AppSettings settings = make();
    settings.refresh();
    settings.setLaunchAtLogin(true);
    EXPECT_FALSE(settings.canLaunchAtLogin());
    EXPECT_FALSE(settings.launchAtLogin());
    EXPECT_TRUE(loginItem.requested.empty());
    EXPECT_EQ(workspace.beeps, 0);
}

}  // namespace
}  // namespace quillmere
