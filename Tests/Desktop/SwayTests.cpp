#include "Tests/Desktop/SwayTest.h"

#include <csignal>
#include <fstream>
#include <iterator>

namespace quillmere::support {

namespace {

/// Whether a window of Xwayland is there, with an icon.
bool showsIcon(const Sway& sway, const char* title) {
    const XConnection xwayland(sway.xDisplay());
    const std::optional<WindowInfo> window = xwayland.visibleWindow(title);
    return window && xwayland.number(window->id, "_NET_WM_ICON").has_value();
}

TEST_F(SwayTest, AShortcutSwitchesTheDesktopAndShowsThePlate) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    for (const int layout : {1, 2, 0, 1}) {
        pressShortcut();
        EXPECT_TRUE(waitForLayout(layout));
    }
    const QRect plate = waitForPlate("plate");
    EXPECT_EQ(plate.size(), QSize(244, 192));
    EXPECT_NEAR(plate.center().x(), 640, 1);
    EXPECT_NEAR(plate.center().y(), 400, 1);
    EXPECT_TRUE(waitUntilPlateIsGone());
}

TEST_F(SwayTest, ThePlateFadesAway) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    const int empty = screen.color(corner).lightness();
    // A busy machine may miss the whole of a fade.
    const bool isSeen = waitUntil([&] {
        pressShortcut();
        if (!waitForPicture("fade")) return false;
        const int full = screen.color(besideTheRows).lightness();
        bool isBetween = false;
        return waitUntil([&] {
                   const int now = screen.color(besideTheRows).lightness();
                   isBetween = isBetween || (now > empty + 10 && now < full - 10);
                   return now == empty;
               })
               && isBetween;
    });
    EXPECT_TRUE(isSeen);
}

TEST_F(SwayTest, WithTheCompositorStoppedTheProgramGoesOnAndSwitchesAfterwards) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    pressShortcut();
    ASSERT_TRUE(waitForLayout(1));
    sway->process().signal(SIGSTOP);
    pressShortcut();
    service->type("+a -a");
    EXPECT_TRUE(waitUntil([this] { return service->output().ends_with("+a -a"); })) << service->output();
    sway->process().signal(SIGCONT);
    ASSERT_TRUE(waitForLayout(1)) << "what came to nothing is not made up for";
    pressShortcut();
    EXPECT_TRUE(waitForLayout(2));
}

TEST_F(SwayTest, WithoutTheServiceThePermissionWindowIsShown) {
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitUntil([this] { return sway->showsTitle("Quillmere needs permission"); }));
    EXPECT_TRUE(waitForPicture("permission"));
    EXPECT_TRUE(showsIcon(*sway, "Quillmere needs permission"));
}

class SwayRecorderTest : public SwayTest {
protected:
    // Swallowed by the compositor, unless it lets a recorder have it.
    SwayRecorderTest()
        : SwayTest({.hasXwayland = true, .configuration = "bindcode Ctrl+Mod1+45 exec touch $HOME/caught"}) {}

    bool hasCaught() const { return std::filesystem::exists(folder.path() / "sway" / "caught"); }
    void pressK() { typist.chord(std::array{keys::leftControl, keys::leftAlt}, keys::k); }

    Typist typist{server.display()};
};

TEST_F(SwayRecorderTest, WithoutTheServiceEvenAShortcutOfTheDesktopIsRecorded) {
    store({{.sources = {"xkb:us", "xkb:ua"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(tray.click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return sway->focusedTitle() == "Quillmere"; }));
    ASSERT_TRUE(waitForPicture("before-recording"));
    for (int i = 0; i < tabsToTheRecorder; ++i)
        typist.tap(keys::tab);
    typist.tap(keys::space);
    ASSERT_TRUE(waitUntil([this] { return sway->focusedTitle().empty(); })) << "the recorder has the keyboard";
    pressK();
    EXPECT_TRUE(waitUntil([this] { return storedKeyCode() == 40; }));
    EXPECT_FALSE(hasCaught());
    EXPECT_TRUE(waitUntil([this] { return sway->focusedTitle() == "Quillmere"; }));
    EXPECT_TRUE(waitUntil([this] {
        pressK();
        return waitUntil([this] { return hasCaught(); }, std::chrono::seconds(1));
    })) << "afterwards it is the desktop's again";
}

TEST_F(SwayTest, WhatTheProgramStartsChoosesItsOwnDisplay) {
    const std::filesystem::path started = folder.path() / "started";
    const std::filesystem::path tools = folder.makeFolder("tools");
    std::ofstream(tools / "xdg-open") << "#!/bin/sh\nenv > " << started.string() << ".part\nmv " << started.string()
                                      << ".part " << started.string() << '\n';
    std::filesystem::permissions(tools / "xdg-open", std::filesystem::perms::owner_all);
    environment["PATH"] = tools.string() + ":" + environment["PATH"];
    // Or the settings would be shown as well.
    store({{.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitUntil([this] { return sway->focusedTitle() == "Quillmere needs permission"; }));
    ASSERT_TRUE(waitForPicture("permission"));
    // Without the service the button opens its documentation.
    Typist(server.display()).play(Strokes().tap(keys::tab).tap(keys::space));
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(started); }));
    std::ifstream stream(started);
    const std::string variables{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_NE(variables.find("WAYLAND_DISPLAY="), std::string::npos);
    EXPECT_EQ(variables.find("QT_QPA_PLATFORM"), std::string::npos);
}

TEST_F(SwayTest, TheSettingsListTheDesktopsLayoutsAndHaveTheProgramsIcon) {
    store({{.sources = {"xkb:us", "xkb:ua"}}});
    startService();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(tray.click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return sway->showsTitle("Quillmere"); }));
    EXPECT_TRUE(waitForPicture("settings"));
    EXPECT_TRUE(showsIcon(*sway, "Quillmere"));
}

}  // namespace

}  // namespace quillmere::support
