#include "Tests/Desktop/SwayTest.h"
#include "Tests/Support/FakeHyprland.h"

// The whole program beside a stand-in for Hyprland, which does not run without a
// graphics card: layouts, binds and events are the stand-in's, the screen and its
// layer shell are those of a sway that nobody asks.
namespace quillmere::support {

namespace {

using namespace std::chrono_literals;
using Version = FakeHyprland::Version;
using Indices = std::vector<std::size_t>;

constexpr unsigned int controlAlt = 12;
constexpr unsigned int spaceKey = 65;
constexpr unsigned int kKey = 45;

class HyprlandTest : public SwayTest {
protected:
    explicit HyprlandTest(Version version = Version::lua)
        : SwayTest(Sway::Options{}), desktop(folder.path() / "run" / "hypr" / "instance", version) {
        environment["SWAYSOCK"] = "";
        environment["XDG_CURRENT_DESKTOP"] = "Hyprland";
        environment["HYPRLAND_INSTANCE_SIGNATURE"] = "instance";
    }

    bool waitForBinds(std::size_t count) {
        return waitUntil([&] { return desktop.bindCount() == count; });
    }
    bool waitForLayouts(std::size_t layout) {
        return waitUntil([&] { return desktop.layoutsInUse() == Indices{layout, layout}; });
    }
    /// Presses ⌃⌥ and this key: whether it was bound.
    bool press(unsigned int key) { return desktop.press(controlAlt, key); }
    /// Starts it with one group on ⌃⌥Space, and waits until that is bound.
    void startBound() {
        store({{.sources = {"xkb:us", "xkb:ua", "xkb:de+dvorak"}}});
        ASSERT_NO_FATAL_FAILURE(startProgram());
        ASSERT_TRUE(waitForBinds(1));
    }

    FakeHyprland desktop;
};

class HyprlandVersionsTest : public HyprlandTest, public testing::WithParamInterface<Version> {
protected:
    HyprlandVersionsTest() : HyprlandTest(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Versions, HyprlandVersionsTest, testing::Values(Version::hyprlang, Version::lua),
                         [](const auto& info) { return info.param == Version::lua ? "Lua" : "Hyprlang"; });

TEST_P(HyprlandVersionsTest, AShortcutSwitchesEveryKeyboardWithNoPermissionAskedAndShowsThePlate) {
    ASSERT_NO_FATAL_FAILURE(startBound());
    for (const std::size_t layout : {1U, 2U, 0U, 1U}) {
        ASSERT_TRUE(press(spaceKey));
        EXPECT_TRUE(waitForLayouts(layout));
    }
    EXPECT_EQ(waitForPlate("hyprland-plate").height(), 192) << "of three rows";
    EXPECT_FALSE(sway->showsTitle("Quillmere needs permission"));
    EXPECT_TRUE(waitUntilPlateIsGone());
    // A plugged-in keyboard starts with its first layout.
    desktop.plugIn("external", FakeHyprland::usualLayouts());
    EXPECT_TRUE(waitUntil([this] { return desktop.layoutsInUse() == Indices{1, 1, 1}; }));
}

TEST_P(HyprlandVersionsTest, AfterAReloadItSwitchesAgainAndSwitchedOffOrEndedItLeavesNothing) {
    ASSERT_NO_FATAL_FAILURE(startBound());
    desktop.reload();
    ASSERT_TRUE(waitForBinds(1));
    ASSERT_TRUE(press(spaceKey));
    EXPECT_TRUE(waitForLayouts(1));
    ASSERT_TRUE(tray.click("Active"));
    ASSERT_TRUE(waitForBinds(0));
    EXPECT_FALSE(press(spaceKey));
    ASSERT_TRUE(tray.click("Active"));
    ASSERT_TRUE(waitForBinds(1));
    ASSERT_TRUE(tray.click("Quit Quillmere"));
    ASSERT_EQ(program->waitForExit(patience), 0);
    EXPECT_EQ(desktop.bindCount(), 0U);
}

TEST_P(HyprlandVersionsTest, WhatAKilledProgramLeftIsTakenBackByTheNextAndTheUsersBindsAreTheirs) {
    ASSERT_NO_FATAL_FAILURE(startBound());
    program->kill();
    ASSERT_TRUE(waitUntil([this] { return !tray.hasItem(); }));
    ASSERT_EQ(desktop.bindCount(), 1U) << "Hyprland keeps it";
    desktop.setOwnBinds({{.modifiers = controlAlt, .key = "SPACE", .submap = {}}});
    store({{.sources = {"xkb:us", "xkb:ua"}}, {.keyCode = 40, .sources = {"xkb:us", "xkb:de+dvorak"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitUntil([this] { return press(kKey); }));
    EXPECT_TRUE(waitForLayouts(2));
    EXPECT_EQ(desktop.bindCount(), 1U) << "none on the combination that the user has bound";
    ChildProcess doctor({.arguments = {DesktopTest::programPath().parent_path() / "quillmere-doctor"},
                         .environment = environment,
                         .output = folder.path() / "page",
                         .inheritedDescriptors = {},
                         .prepare = {}});
    ASSERT_EQ(doctor.waitForExit(60s), 0);
    const std::string page = doctor.output();
    const char* version = GetParam() == Version::lua ? "Hyprland, Hyprland 0.57.0" : "Hyprland, Hyprland 0.49.0";
    for (const char* text : {version, "Hyprland's binds, without Fn", "⌃⌥Space: a bind of your own in Hyprland\n",
                             "⌃⌥K: none of your own binds in Hyprland\n"})
        EXPECT_NE(page.find(text), std::string::npos) << text << " is not in:\n" << page;
    EXPECT_EQ(desktop.bindCount(), 1U) << "what the program has bound is not the doctor's";
}

TEST_F(HyprlandTest, WhileTheCompositorStandsStillTheProgramAnswersAndGoesOnAfterwards) {
    ASSERT_NO_FATAL_FAILURE(startBound());
    desktop.setSilent(true);
    ASSERT_TRUE(press(spaceKey));
    ASSERT_TRUE(tray.click("Settings…"));
    EXPECT_TRUE(waitUntil([this] { return sway->showsTitle("Quillmere"); }));
    desktop.setSilent(false);
    EXPECT_TRUE(waitForLayouts(0)) << "what came to nothing is not made up for";
    EXPECT_TRUE(waitUntil([this] {
        press(spaceKey);
        return waitUntil([this] { return desktop.layoutsInUse() == Indices{1, 1}; }, 2s);
    }));
}

}  // namespace

}  // namespace quillmere::support
