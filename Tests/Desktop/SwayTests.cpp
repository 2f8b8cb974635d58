#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/Sway.h"
#include "Tests/TapService/TapServiceHost.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

// The whole program on a Wayland desktop. Only the keyboard is played: the
// key-tap service reads it from the test, since a real one takes a kernel.
namespace quillmere::support {

namespace {

class SwayTest : public testing::Test {
protected:
    SwayTest()
        : environment(baseEnvironment(folder.makeFolder("home").string())),
          bus(folder.makeFolder("session"), environment),
          systemBus(folder.makeFolder("system"), environment),
          server(folder.path(), environment, QSize(1280, 800)),
          sway(folder.path(), environment, {.display = server.display(), .hasXwayland = true}),
          xwayland(sway.xDisplay()),
          screen(server.display()),
          tray(bus.connect()),
          settings(folder.makeFolder("config")) {
        environment["XDG_CONFIG_HOME"] = settings.folder().parent_path();
        environment["XDG_RUNTIME_DIR"] = folder.makeFolder("run");
        environment["XDG_SESSION_TYPE"] = "wayland";
        environment["XDG_CURRENT_DESKTOP"] = "sway";
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = systemBus.address();
        environment["SWAYSOCK"] = sway.socket();
        environment["WAYLAND_DISPLAY"] = sway.waylandDisplay();
        environment["DISPLAY"] = sway.xDisplay();
    }

    void TearDown() override {
        if (!HasFailure()) return;
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        savePicture(screen.shot(), DesktopTest::artefacts() / "failures" / ("SwayTest." + name + ".png"));
        if (program) std::cout << "The program wrote: " << program->output() << '\n';
    }

    void startService() {
        service.emplace(systemBus.address(), folder.path());
        service->grant();
    }

    /// Starts the program and waits for its icon in the tray.
    void startProgram() {
        program.emplace(ChildProcess::Options{.arguments = {DesktopTest::programPath()},
                                              .environment = environment,
                                              .output = folder.path() / "quillmere.log",
                                              .inheritedDescriptors = {},
                                              .prepare = {}});
        ASSERT_TRUE(waitUntil([this] { return tray.hasItem() || !program->isRunning(); }));
        ASSERT_TRUE(program->isRunning());
    }

    /// The same, with one group on ⌃⌥Space, and waits until it has the keyboard.
    void startSwitching() {
        settings.set("config", configurationText({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}}));
        startService();
        ASSERT_NO_FATAL_FAILURE(startProgram());
        ASSERT_TRUE(waitUntil([this] { return service->isGrabbed(); }));
    }

    void pressShortcut() { service->type("+ctrl +alt +space -space -alt -ctrl"); }
    bool waitForLayout(int index) {
        return waitUntil([&] { return sway.layoutsInUse(Sway::serverKeyboard) == std::vector{index}; });
    }
    std::optional<WindowInfo> plate() const { return xwayland.visibleWindow("Quillmere plate"); }
    /// Whether the middle of the screen comes to show something, and its
    /// picture.
    bool waitForPicture(const std::string& name) {
        const QColor empty = screen.color(corner);
        const bool isShown = waitUntil([&] { return screen.color(middle) != empty; });
        savePicture(screen.shot(), DesktopTest::artefacts() / "sway" / (name + ".png"));
        return isShown;
    }
    bool showsIcon(const std::string& title) const {
        const std::optional<WindowInfo> window = xwayland.visibleWindow(title);
        return window && xwayland.number(window->id, "_NET_WM_ICON").has_value();
    }

    static constexpr QPoint middle{640, 400};
    static constexpr QPoint corner{1270, 790};
    /// Within the plate's edge.
    static constexpr QPoint besideTheRows{523, 400};

    TemporaryFolder folder;
    Environment environment;
    SessionBus bus;
    SessionBus systemBus;
    XServer server;
    Sway sway;
    XConnection xwayland;
    Screen screen;
    TrayPanel tray;
    StoredSettings settings;
    std::optional<TapServiceHost> service;
    std::optional<ChildProcess> program;
};

TEST_F(SwayTest, AShortcutSwitchesTheDesktopAndShowsThePlate) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    for (const int layout : {1, 2, 0, 1}) {
        pressShortcut();
        EXPECT_TRUE(waitForLayout(layout));
    }
    ASSERT_TRUE(waitForPicture("plate"));
    ASSERT_TRUE(plate().has_value());
    const WindowInfo shown = plate().value();
    EXPECT_TRUE(shown.isOverrideRedirect);
    EXPECT_NEAR(shown.frame.center().x(), 640, 1);
    EXPECT_NEAR(shown.frame.center().y(), 400, 20) << "in the middle of what no bar covers";
    EXPECT_TRUE(waitUntil([this] { return !plate().has_value(); }));
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

TEST_F(SwayTest, ThePlateComesOverAFullScreenWindowAndLeavesItTheFocus) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    const QColor desktop = screen.color(corner);
    ASSERT_TRUE(tray.click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return sway.focusedTitle() == "Quillmere"; }));
    ASSERT_TRUE(sway.command("fullscreen enable"));
    ASSERT_TRUE(
        waitUntil([&] { return screen.color(corner) != desktop && screen.color(corner) == screen.color(middle); }));
    pressShortcut();
    EXPECT_TRUE(waitForPicture("over-full-screen"));
    EXPECT_EQ(sway.focusedTitle(), "Quillmere");
    ASSERT_TRUE(plate().has_value()) << "the focus was asked for too late";
    EXPECT_NE(xwayland.focusedWindow(), plate()->id);
}

TEST_F(SwayTest, WithTheCompositorStoppedTheProgramGoesOnAndSwitchesAfterwards) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    pressShortcut();
    ASSERT_TRUE(waitForLayout(1));
    sway.process().signal(SIGSTOP);
    pressShortcut();
    service->type("+a -a");
    EXPECT_TRUE(waitUntil([this] { return service->output().ends_with("+a -a"); })) << service->output();
    sway.process().signal(SIGCONT);
    ASSERT_TRUE(waitForLayout(1)) << "what came to nothing is not made up for";
    pressShortcut();
    EXPECT_TRUE(waitForLayout(2));
}

TEST_F(SwayTest, WithoutTheServiceThePermissionWindowIsShown) {
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitUntil([this] { return sway.showsTitle("Quillmere needs permission"); }));
    EXPECT_TRUE(waitForPicture("permission"));
    EXPECT_TRUE(showsIcon("Quillmere needs permission"));
}

TEST_F(SwayTest, WhatTheProgramStartsChoosesItsOwnDisplay) {
    const std::filesystem::path started = folder.path() / "started";
    const std::filesystem::path tools = folder.makeFolder("tools");
    std::ofstream(tools / "xdg-open") << "#!/bin/sh\nenv > " << started.string() << ".part\nmv " << started.string()
                                      << ".part " << started.string() << '\n';
    std::filesystem::permissions(tools / "xdg-open", std::filesystem::perms::owner_all);
    environment["PATH"] = tools.string() + ":" + environment["PATH"];
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitUntil([this] { return sway.focusedTitle() == "Quillmere needs permission"; }));
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
    startService();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(tray.click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return sway.showsTitle("Quillmere"); }));
    EXPECT_TRUE(waitForPicture("settings"));
    EXPECT_TRUE(showsIcon("Quillmere"));
}

}  // namespace

}  // namespace quillmere::support
