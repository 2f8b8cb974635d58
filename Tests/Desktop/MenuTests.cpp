#include "Tests/Desktop/DesktopTest.h"

#include <algorithm>

namespace quillmere::support {

namespace {

using Scheme = SettingsPortal::Scheme;

constexpr int iconSize = 22;

class MenuTest : public DesktopTest {
protected:
    /// How opaque the icon's strongest pixel is, 0 to 255.
    int strength() {
        const QImage icon = tray().icon(iconSize);
        int strongest = 0;
        for (int y = 0; y < icon.height(); ++y)
            for (int x = 0; x < icon.width(); ++x)
                strongest = std::max(strongest, qAlpha(icon.pixel(x, y)));
        return strongest;
    }

    bool waitUntilDim() {
        return waitUntil([this] { return strength() < 160; });
    }
    bool waitUntilBright() {
        return waitUntil([this] { return strength() > 240; });
    }

    void turnOff() {
        ASSERT_TRUE(tray().click("Active"));
        ASSERT_TRUE(waitUntil([this] { return !program().holdsGrab(keys::space, controlAltBits); }));
    }

    bool isActiveChecked() {
        const std::vector<MenuEntry> entries = tray().openMenu();
        return !entries.empty() && entries.front().isChecked;
    }
};

TEST_F(MenuTest, HasItsFourEntriesInOrder) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    const std::vector<MenuEntry> entries = tray().openMenu();
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[0].label, "Active");
    EXPECT_EQ(entries[0].toggleType, "checkmark");
    EXPECT_TRUE(entries[0].isChecked);
    EXPECT_EQ(entries[1].label, "Settings…");
    EXPECT_EQ(entries[1].shortcut, (std::vector<std::string>{"Control", ","}));
    EXPECT_TRUE(entries[2].isSeparator);
    EXPECT_EQ(entries[3].label, "Quit Quillmere");
    EXPECT_EQ(entries[3].shortcut, (std::vector<std::string>{"Control", "Q"}));
}

TEST_F(MenuTest, TurningActiveOffLetsTheShortcutPass) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(turnOff());
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
    EXPECT_TRUE(witness().groups().empty());
    EXPECT_FALSE(isActiveChecked());
}

TEST_F(MenuTest, TurningActiveOnAgainSwitchesAgain) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(turnOff());
    ASSERT_TRUE(tray().click("Active"));
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    EXPECT_TRUE(isActiveChecked());
}

TEST_F(MenuTest, TheIconIsDimWhileInactive) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(waitUntilBright());
    ASSERT_TRUE(tray().click("Active"));
    EXPECT_TRUE(waitUntilDim());
    ASSERT_TRUE(tray().click("Active"));
    EXPECT_TRUE(waitUntilBright());
}

TEST_F(MenuTest, TheChoiceSurvivesARestart) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(turnOff());
    ASSERT_TRUE(waitUntilStored(false));
    killProgram();
    ASSERT_TRUE(waitUntil([&] { return !tray().hasItem(); }));
    ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
    EXPECT_TRUE(waitUntilDim());
    EXPECT_FALSE(isActiveChecked());
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
}

TEST_F(MenuTest, TheIconAppearsInATrayThatStartsLater) {
    ASSERT_NO_FATAL_FAILURE(startEverything({.hasTray = false}));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    desktop().startTray();
    EXPECT_TRUE(program().waitForTrayItem());
    EXPECT_EQ(tray().openMenu().size(), 4U);
    EXPECT_FALSE(tray().icon(iconSize).isNull());
}

TEST_F(MenuTest, TheIconComesBackWithATrayThatWasRestarted) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(program().waitForTrayItem());
    desktop().stopTray();
    desktop().startTray();
    EXPECT_TRUE(program().waitForTrayItem());
    EXPECT_EQ(tray().openMenu().size(), 4U);
}

TEST_F(MenuTest, QuitEndsTheProgramAndFreesTheShortcut) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_TRUE(tray().click("Quit Quillmere"));
    EXPECT_EQ(program().process().waitForExit(patience), 0);
    pressShortcut();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::space), 1U);
    EXPECT_TRUE(waitUntil([&] { return !tray().hasItem(); }));
}

struct Tint {
    const char* name;
    Scheme scheme;
    QColor ink;
};

class IconTest : public MenuTest, public testing::WithParamInterface<Tint> {};

/// Whether the icon is drawn, and in no other colour.
bool isDrawnIn(QColor ink, const QImage& icon) {
    int count = 0;
    for (int y = 0; y < icon.height(); ++y) {
        for (int x = 0; x < icon.width(); ++x) {
            // Of a translucent pixel, as the outline's, the colour is only known
            // roughly, and where ink meets outline the two are mixed a little.
            if (qAlpha(icon.pixel(x, y)) < 255) continue;
            if (!Screen::isNear(icon.pixelColor(x, y), ink, 8)) return false;
            ++count;
        }
    }
    return count > 20;
}

TEST_P(IconTest, IsTintedForThePanel) {
    ASSERT_NO_FATAL_FAILURE(startEverything({.scheme = GetParam().scheme}));
    const bool isTinted = waitUntil([&] { return isDrawnIn(GetParam().ink, tray().icon(iconSize)); });
    savePicture(tray().icon(2 * iconSize), artefacts() / "icon" / (std::string(GetParam().name) + ".png"));
    EXPECT_TRUE(isTinted);
}

TEST_P(IconTest, FollowsTheDesktopsPreference) {
    const Scheme other = GetParam().scheme == Scheme::dark ? Scheme::light : Scheme::dark;
    ASSERT_NO_FATAL_FAILURE(startEverything({.scheme = other}));
    ASSERT_TRUE(waitUntilBright());
    desktop().portal()->setScheme(GetParam().scheme);
    EXPECT_TRUE(waitUntil([&] { return isDrawnIn(GetParam().ink, tray().icon(iconSize)); }));
}

INSTANTIATE_TEST_SUITE_P(Tints, IconTest,
                         testing::Values(Tint{"light", Scheme::light, Qt::black},
                                         Tint{"dark", Scheme::dark, Qt::white}),
                         [](const auto& info) { return info.param.name; });

}  // namespace

}  // namespace quillmere::support
