#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/Fcitx.h"
#include "Tests/Support/GnomeShell.h"
#include "Tests/Support/GnomeTypist.h"
#include "Tests/Support/WaylandWitness.h"

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The whole program on GNOME with nothing faked but the hands: no key-tap
// service, so the desktop itself catches the shortcuts and switches.
namespace quillmere::support {

namespace {

constexpr const char* shortcut = "+ctrl +alt +space -space -alt -ctrl";

// From the settings' first control to the first group's recorder.
constexpr int tabsToTheRecorder = 4;

class GnomeTest : public testing::Test {
protected:
    explicit GnomeTest(const std::filesystem::path& extension = QUILLMERE_GNOME_EXTENSION)
        : bus(folder.makeFolder("session"), baseEnvironment(folder.makeFolder("home").string())),
          connection(bus.connect()),
          shell(folder.path(), baseEnvironment(folder.path().string()), bus,
                {.extension = extension, .hasXwayland = true}),
          typist(connection),
          tray(std::in_place, bus.connect()),
          settings(shell.environment().at("XDG_CONFIG_HOME")),
          xwayland(shell.xDisplay()) {}

    void SetUp() override {
        if (!shell.fits(QUILLMERE_GNOME_EXTENSION)) GTEST_SKIP() << "The extension is for no GNOME " << shell.version();
    }
    void TearDown() override {
        if (HasFailure() && program) std::cout << "The program wrote: " << program->output() << '\n';
    }

    void store(const std::vector<StoredGroup>& groups) { settings.set("config", configurationText(groups)); }

    /// Starts the program and waits for its icon in the tray.
    void startProgram() {
        Environment environment = shell.environment();
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
        environment["XDG_STATE_HOME"] = folder.makeFolder("state");
        program.emplace(ChildProcess::Options{.arguments = {DesktopTest::programPath()},
                                              .environment = environment,
                                              .output = folder.path() / "quillmere.log",
                                              .inheritedDescriptors = {},
                                              .prepare = {}});
        ASSERT_TRUE(waitUntil([this] { return tray->hasItem() || !program->isRunning(); }));
        ASSERT_TRUE(program->isRunning());
    }
    /// The same, with one group on ⌃⌥Space, and waits until it switches.
    void startSwitching(const std::vector<StoredGroup>& groups = {{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}}) {
        store(groups);
        ASSERT_NO_FATAL_FAILURE(startProgram());
        ASSERT_TRUE(waitUntil([this] { return isGrabbed(); }));
    }
    /// Whether the shell has the key of ⌃⌥Space for somebody.
    bool isGrabbed() const {
        const std::string taken =
            "(() => { const probe = global.display.grab_accelerator('<Control><Alt>0x41', 0);"
            " if (probe) global.display.ungrab_accelerator(probe); return probe === 0; })()";
        return shell.evaluate(taken) == "true";
    }
    bool waitForSource(int index) const {
        return waitUntil([&] { return shell.sourceInUse() == index; });
    }
    bool hasFocus(const char* title) const {
        const auto window = xwayland.visibleWindow(title);
        return window && xwayland.focusedWindow() == window->id;
    }
    bool asksForPermission() const { return xwayland.visibleWindow("Quillmere needs permission").has_value(); }
    bool waitForPlate() const {
        return waitUntil([this] { return xwayland.visibleWindow("Quillmere plate").has_value(); });
    }

    TemporaryFolder folder;
    SessionBus bus;
    QDBusConnection connection;
    GnomeShell shell;
    GnomeTypist typist;
    std::optional<TrayPanel> tray;
    StoredSettings settings;
    XConnection xwayland;
    std::optional<ChildProcess> program;
};

class StockGnomeTest : public GnomeTest {
protected:
    StockGnomeTest() : GnomeTest(std::filesystem::path()) {}
};

TEST_F(GnomeTest, AShortcutSwitchesInTheShellAndThePlateIsShownWithNoPermissionAsked) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    for (const int index : {1, 2, 0}) {
        typist.type(shortcut);
        EXPECT_TRUE(waitForSource(index));
        EXPECT_TRUE(waitForPlate());
    }
    EXPECT_FALSE(asksForPermission());
}

TEST_F(GnomeTest, EveryLetterIsInTheNewLayoutHoweverFastItFollowsTheShortcut) {
    if (shell.version() >= 49) GTEST_SKIP() << "From here on the shell has another thread apply a keymap.";
    ASSERT_NO_FATAL_FAILURE(startSwitching({{.sources = {"xkb:us", "xkb:ua"}}}));
    WaylandWitness witness(shell.waylandDisplay());
    constexpr int bursts = 50;
    for (int burst = 1; burst <= bursts; ++burst) {
        witness.clear();
        typist.type("+ctrl +alt +space -space -alt -ctrl +a -a");
        ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
        EXPECT_EQ(witness.text(), burst % 2 == 0 ? "a" : "ф");
        EXPECT_EQ(witness.presses(keys::space), 0U);
    }
}

TEST_F(GnomeTest, BesideFcitxAShortcutGoesThroughLayoutsAndMethods) {
    const Fcitx fcitx(folder.path(), shell.environment(), connection, {"keyboard-us", "hangul"});
    fcitx.openField();
    ASSERT_NO_FATAL_FAILURE(startSwitching({{.sources = {"xkb:us", "xkb:ua", "fcitx:hangul"}}}));
    for (const auto& [layout, method] :
         {std::pair{1, "keyboard-us"}, {0, "hangul"}, {0, "keyboard-us"}, {1, "keyboard-us"}}) {
        typist.type(shortcut);
        EXPECT_TRUE(waitUntil([&] { return shell.sourceInUse() == layout && fcitx.current() == method; }))
            << method << ", but " << fcitx.current();
    }
    EXPECT_TRUE(waitForPlate());
}

TEST_F(GnomeTest, SwitchedOffOrEndedOrKilledItLeavesNothingGrabbed) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_TRUE(tray->click("Active"));
    EXPECT_TRUE(waitUntil([this] { return !isGrabbed(); }));
    ASSERT_TRUE(tray->click("Active"));
    EXPECT_TRUE(waitUntil([this] { return isGrabbed(); }));
    program->kill();
    EXPECT_TRUE(waitUntil([this] { return !isGrabbed(); }));
    ASSERT_TRUE(waitUntil([this] { return !tray->hasItem(); }));
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_TRUE(tray->click("Quit Quillmere"));
    EXPECT_EQ(program->waitForExit(patience), 0);
    EXPECT_TRUE(waitUntil([this] { return !isGrabbed(); }));
}

TEST_F(GnomeTest, WhereNobodyElseHasAPlaceForIconsTheTopBarHasTheMenu) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    const std::string indicator = "Main.panel.statusArea.quillmere";
    EXPECT_EQ(shell.evaluate(indicator + " === undefined"), "true");
    tray.reset();
    ASSERT_TRUE(waitUntil([&] { return shell.evaluate(indicator + "?.is_mapped() ?? false") == "true"; }));
    const auto choose = [&](const char* entry) {
        shell.evaluate(indicator + ".menu._getMenuItems()[" + entry + "].activate(null)");
    };
    choose("0");
    EXPECT_TRUE(waitUntil([this] { return !isGrabbed(); }));
    choose("1");
    EXPECT_TRUE(waitUntil([this] { return xwayland.visibleWindow("Quillmere").has_value(); }));
    choose("3");
    EXPECT_EQ(program->waitForExit(patience), 0);
    EXPECT_TRUE(waitUntil([&] { return shell.evaluate(indicator + "?.is_mapped() ?? false") == "false"; }));
}

TEST_F(GnomeTest, AShortcutIsRecordedAsItIsTypedIntoTheSettings) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_TRUE(tray->click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return hasFocus("Quillmere"); }));
    for (int i = 0; i < tabsToTheRecorder; ++i)
        typist.type("+tab -tab");
    typist.type("+space -space");
    EXPECT_TRUE(waitUntil([this] { return !isGrabbed(); })) << "the recorder may be given the present shortcut, too";
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    ASSERT_TRUE(waitUntil([this] { return settings.value("config")->find("\"keyCode\":40") != std::string::npos; }));
    EXPECT_EQ(shell.sourceInUse(), 0) << "what is recorded does not switch";
    // Until it is grabbed it goes to the window.
    EXPECT_TRUE(waitUntil([this] {
        typist.type("+ctrl +alt +k -k -alt -ctrl");
        return waitUntil([this] { return shell.sourceInUse() == 1; }, std::chrono::seconds(1));
    }));
}

TEST_F(GnomeTest, ThePlateComesOverAFullScreenWindowAndLeavesItTheKeys) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    Witness witness(shell.xDisplay(), Witness::Size::fullScreen, Qt::blue);
    const auto hasColour = [](const QImage& screen, QPoint at) { return screen.pixelColor(at) == QColor(Qt::blue); };
    ASSERT_TRUE(waitUntil([&] { return hasColour(shell.screenshot(), {5, 5}); })) << "it fills the screen";
    const bool isSeen = waitUntil([&] {
        typist.type(shortcut);
        if (!waitForPlate()) return false;
        const QPoint middle = xwayland.visibleWindow("Quillmere plate")->frame.center();
        const QImage screen = shell.screenshot();
        return hasColour(screen, {5, 5}) && !hasColour(screen, middle);
    });
    EXPECT_TRUE(isSeen);
    typist.type("+a -a");
    EXPECT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
    EXPECT_EQ(witness.focusLosses(), 0);
}

TEST_F(GnomeTest, AnExtensionThatIsSwitchedOffAndOnIsArmedAgain) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    shell.setSetting("org.gnome.shell", "enabled-extensions", "@as []");
    EXPECT_TRUE(waitUntil([this] { return !isGrabbed(); }));
    shell.setSetting("org.gnome.shell", "enabled-extensions", std::string("['") + GnomeShell::extensionName + "']");
    EXPECT_TRUE(waitUntil([this] { return isGrabbed(); }));
    typist.type(shortcut);
    EXPECT_TRUE(waitForSource(1));
    EXPECT_TRUE(waitForPlate());
}

TEST_F(GnomeTest, WhereAGroupIsOnFnThePermissionIsAskedForAndTheOthersWork) {
    ASSERT_NO_FATAL_FAILURE(startSwitching(
        {{.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua"}}, {.sources = {"xkb:us", "xkb:de"}}}));
    EXPECT_TRUE(waitUntil([this] { return asksForPermission(); }));
    typist.type(shortcut);
    EXPECT_TRUE(waitForSource(2));
}

TEST_F(StockGnomeTest, WithoutTheExtensionThePermissionIsAskedFor) {
    store({{.sources = {"xkb:us", "xkb:ua"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_TRUE(waitUntil([this] { return asksForPermission(); }));
    EXPECT_FALSE(isGrabbed());
}

}  // namespace

}  // namespace quillmere::support
