#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/Contrast.h"
#include "Tests/Support/RealPanel.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace quillmere::support {

namespace {

/// Into the user's own icon theme.
void installIcons(const Desktop& desktop) {
    const std::filesystem::path data = desktop.environment().at("XDG_DATA_HOME");
    const auto folder = data / "icons" / "hicolor" / "symbolic" / "apps";
    std::filesystem::create_directories(folder);
    for (const char* name : {"quillmere-symbolic.svg", "quillmere-inactive-symbolic.svg"})
        std::filesystem::copy_file(std::filesystem::path(QUILLMERE_ICONS) / name, folder / name);
}

Program::Options onDesktop(const char* name) {
    return {.additions = {{"XDG_CURRENT_DESKTOP", name}}, .prepare = {}};
}

struct PanelLook {
    const char* name;
    RealPanel::Kind kind;
    bool isDark;
    /// Whether the icon themes have the program's icons.
    bool isInstalled;
    const char* desktop;  ///< as it names itself
};

/// A desktop whose scheme says light, whatever the panel's colour: many panels
/// are dark on light desktops.
class PanelIconTest : public DesktopTest, public testing::WithParamInterface<PanelLook> {
protected:
    void startPanel() {
        startDesktop({.hasTray = false});
        if (GetParam().isInstalled) installIcons(desktop());
        panel_ = std::make_unique<RealPanel>(GetParam().kind, GetParam().isDark, desktop());
    }

    /// The panel with the icon of the program that starts switched on or off.
    QImage panelWithIcon(bool isActive) {
        storeConfiguration(configurationText({{.sources = threeSources}}, isActive));
        startProgramWithoutShortcut(onDesktop(GetParam().desktop));
        QImage picture;
        const auto isDrawn = [&] {
            picture = desktop().screen().shot().copy(panel_->frame());
            return pixelsAbove(picture, 1.4) >= leastPixels;
        };
        EXPECT_TRUE(waitUntil(isDrawn)) << "no icon on the panel";
        const std::string file = std::string(GetParam().name) + (isActive ? "" : "-inactive") + ".png";
        savePicture(picture.copy(0, 0, 100, picture.height()), artefacts() / "panel" / file);
        killProgram();
        return picture;
    }

    bool waitForEmptyPanel() {
        return waitUntil([&] { return pixelsAbove(desktop().screen().shot().copy(panel_->frame()), 1.2) == 0; });
    }

    /// How much each pixel of the panel's first part stands out from its ground.
    static std::vector<double> contrasts(const QImage& panel) {
        const QColor ground = panel.pixelColor(panel.width() / 2, panel.height() / 2);
        std::vector<double> result;
        // Panels have edges of their own.
        for (int y = 3; y < panel.height() - 3; ++y)
            for (int x = 0; x < 100; ++x)
                result.push_back(contrast(panel.pixelColor(x, y), ground));
        return result;
    }
    static long pixelsAbove(const QImage& panel, double least) {
        return std::ranges::count_if(contrasts(panel), [least](double value) { return value >= least; });
    }
    static double strongest(const QImage& panel) { return std::ranges::max(contrasts(panel)); }

    static constexpr long leastPixels = 40;

private:
    std::unique_ptr<RealPanel> panel_;
};

TEST_P(PanelIconTest, IsLegibleAndDimWhileInactive) {
    if (!RealPanel::isInstalled(GetParam().kind)) GTEST_SKIP() << "this panel is not packaged here";
    ASSERT_NO_FATAL_FAILURE(startPanel());
    const QImage active = panelWithIcon(true);
    EXPECT_GE(pixelsAbove(active, iconContrast), leastPixels);
    ASSERT_TRUE(waitForEmptyPanel());
    const QImage inactive = panelWithIcon(false);
    EXPECT_LT(strongest(inactive), 0.7 * strongest(active));
}

INSTANTIATE_TEST_SUITE_P(Panels, PanelIconTest,
                         testing::Values(PanelLook{"xfceDark", RealPanel::Kind::xfce, true, true, "XFCE"},
                                         PanelLook{"xfceLight", RealPanel::Kind::xfce, false, true, "XFCE"},
                                         PanelLook{"xfceDarkFromTheBuild", RealPanel::Kind::xfce, true, false, "XFCE"},
                                         PanelLook{"panelThatTintsNothing", RealPanel::Kind::xfce, true, true,
                                                   "Unknown"},
                                         PanelLook{"trayerDark", RealPanel::Kind::trayer, true, true, "Unknown"},
                                         PanelLook{"trayerLight", RealPanel::Kind::trayer, false, true, "Unknown"}),
                         [](const auto& info) { return info.param.name; });

class IconNameTest : public DesktopTest {
protected:
    void startOn(const char* desktopName, bool isInstalled) {
        startDesktop();
        if (isInstalled) installIcons(desktop());
        storeConfiguration(configurationText({{.sources = threeSources}}));
        ASSERT_NO_FATAL_FAILURE(startProgram(onDesktop(desktopName)));
    }

    bool isNamed(const std::string& name) {
        return waitUntil([&] { return tray().property("IconName") == name; });
    }
};

TEST_F(IconNameTest, ATrayThatTintsIsToldTheIconOfTheMoment) {
    ASSERT_NO_FATAL_FAILURE(startOn("ubuntu:GNOME", true));
    EXPECT_TRUE(isNamed("quillmere-symbolic"));
    ASSERT_TRUE(tray().click("Active"));
    EXPECT_TRUE(isNamed("quillmere-inactive-symbolic"));
    EXPECT_FALSE(tray().icon(22).isNull()) << "the drawing is there all the same";
}

TEST_F(IconNameTest, ATrayThatDrawsFilesAsTheyAreIsToldNone) {
    ASSERT_NO_FATAL_FAILURE(startOn("LXQt", true));
    EXPECT_EQ(tray().property("IconName"), "");
    EXPECT_FALSE(tray().icon(22).isNull());
}

TEST_F(IconNameTest, AnIconThatIsNotInstalledIsNotNamed) {
    ASSERT_NO_FATAL_FAILURE(startOn("XFCE", false));
    EXPECT_EQ(tray().property("IconName"), "");
    EXPECT_FALSE(tray().icon(22).isNull());
}

}  // namespace

}  // namespace quillmere::support
