#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/GnomeShell.h"
#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/XServer.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The whole program on GNOME's Shell that an X server has the keyboard of: the X
// server catches the shortcuts, and the shell, which puts back what anybody else
// does to the layout, is asked to switch.
namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

// After which a press is let go unanswered is a little more.
constexpr auto longestSwitch = 350ms;

constexpr unsigned int controlAltBits = modifierBits::control | modifierBits::alt;

class GnomeXorgTest : public testing::Test {
protected:
    using Texts = std::vector<std::string>;

    explicit GnomeXorgTest(const std::filesystem::path& extension = QUILLMERE_GNOME_EXTENSION,
                           const Texts& sources = {"xkb:us", "xkb:ua", "xkb:de"})
        : environment(baseEnvironment(folder.makeFolder("home").string())),
          bus(folder.makeFolder("session"), environment),
          server(folder.makeFolder("server"), environment, {640, 480}),
          shell(folder.path(), environment, bus,
                {.sources = sources, .extension = extension, .xServer = server.display()}),
          typist(server.display()),
          tray(bus.connect()),
          settings(shell.environment().at("XDG_CONFIG_HOME")) {}

    void SetUp() override {
        if (!shell.fits(QUILLMERE_GNOME_EXTENSION)) GTEST_SKIP() << "The extension is for no GNOME " << shell.version();
    }
    void TearDown() override {
        if (HasFailure() && program) std::cout << "The program wrote: " << program->output() << '\n';
        if (HasFailure()) std::cout << "The shell wrote: " << shell.process().output() << '\n';
    }

    /// One group on ⌃⌥Space; waits until the program holds it.
    void startProgram(const Texts& sources) {
        settings.set("config", configurationText({{.sources = sources}}));
        Environment programs = shell.environment();
        programs["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
        programs["XDG_STATE_HOME"] = folder.makeFolder("state");
        // As the desktop is: they share what is in its runtime folder.
        giveToOrdinaryUser(folder.path() / "state");
        giveToOrdinaryUser(shell.environment().at("XDG_CONFIG_HOME"));
        program.emplace(ChildProcess::Options{.arguments = {DesktopTest::programPath()},
                                              .environment = programs,
                                              .output = folder.path() / "quillmere.log",
                                              .inheritedDescriptors = {},
                                              .prepare = becomeOrdinaryUser});
        ASSERT_TRUE(waitUntil([this] { return tray.hasItem() || !program->isRunning(); }));
        ASSERT_TRUE(waitUntil([this] { return server.isGrabbed(keys::space, controlAltBits); }));
    }
    bool isCurrent(const std::string& source) const {
        const std::string current = "Main.panel.statusArea.keyboard._inputSourceManager.currentSource";
        return shell.evaluate(current + ".type + ':' + " + current + ".id") == '"' + source + '"';
    }
    void pressShortcut() { typist.chord(std::array{keys::leftControl, keys::leftAlt}, keys::space); }
    bool waitForPlate() {
        return waitUntil([this] { return isShown("Quillmere plate"); });
    }
    /// The shell draws by hand here: a plate that comes or goes may keep it from
    /// answering for longer than a switch may take.
    void waitForPlateAndRest() {
        waitUntil([this] { return isShown("Quillmere plate"); }, 2s);
        waitUntil([this] { return !isShown("Quillmere plate"); });
        for (int quick = 0; quick < 5;) {
            const auto start = std::chrono::steady_clock::now();
            shell.evaluate("1");
            quick = std::chrono::steady_clock::now() - start < 50ms ? quick + 1 : 0;
        }
    }
    bool isShown(const char* title) { return server.connection().visibleWindow(title).has_value(); }

    TemporaryFolder folder;
    Environment environment;
    SessionBus bus;
    XServer server;
    GnomeShell shell;
    Typist typist;
    TrayPanel tray;
    StoredSettings settings;
    std::optional<ChildProcess> program;
};

class StockGnomeXorgTest : public GnomeXorgTest {
protected:
    StockGnomeXorgTest() : GnomeXorgTest(std::filesystem::path()) {}
};

class GnomeXorgManySourcesTest : public GnomeXorgTest {
protected:
    // More than an X server's keymap holds: the shell changes it on the way.
    GnomeXorgManySourcesTest()
        : GnomeXorgTest(QUILLMERE_GNOME_EXTENSION, {"xkb:us", "xkb:ua", "xkb:de", "xkb:gr", "xkb:il"}) {}
};

TEST_F(GnomeXorgTest, AShortcutSwitchesTheShellAndThePlateIsShownWithNoPermissionAsked) {
    ASSERT_NO_FATAL_FAILURE(startProgram({"xkb:us", "xkb:ua", "xkb:de"}));
    for (const int index : {1, 2, 0}) {
        pressShortcut();
        EXPECT_TRUE(waitUntil([&] { return shell.sourceInUse() == index; }));
        EXPECT_TRUE(waitForPlate());
    }
    EXPECT_FALSE(isShown("Quillmere needs permission"));
}

TEST_F(GnomeXorgTest, EveryLetterIsInTheNewLayoutHoweverFastItFollowsTheShortcut) {
    ASSERT_NO_FATAL_FAILURE(startProgram({"xkb:us", "xkb:ua"}));
    Witness witness(server.display(), Witness::Size::normal);
    int inTime = 0;
    for (int burst = 1; burst <= 100; ++burst) {
        witness.clear();
        const bool wasFirst = shell.sourceInUse() == 0;
        const auto start = std::chrono::steady_clock::now();
        pressShortcut();
        typist.tap(keys::a);
        ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
        EXPECT_EQ(witness.presses(keys::space), 0U);
        // Here the shell draws by hand: on a busy machine it may not answer in time.
        if (std::chrono::steady_clock::now() - start > longestSwitch) continue;
        ++inTime;
        EXPECT_EQ(witness.text(), wasFirst ? "ф" : "a") << "of burst " << burst;
    }
    EXPECT_GT(inTime, 0);
}

TEST_F(GnomeXorgManySourcesTest, AShortcutGoesThroughThemAll) {
    const Texts order{"xkb:us", "xkb:ua", "xkb:gr", "xkb:il"};
    const Texts letters{"a", "ф", "α", "ש"};
    ASSERT_NO_FATAL_FAILURE(startProgram(order));
    Witness witness(server.display(), Witness::Size::normal);
    for (const std::size_t next : {1U, 2U, 3U, 0U, 1U}) {
        pressShortcut();
        ASSERT_TRUE(waitUntil([&] { return isCurrent(order[next]); })) << order[next];
        waitForPlateAndRest();
        witness.clear();
        typist.tap(keys::a);
        ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
        EXPECT_EQ(witness.text(), letters[next]);
        EXPECT_FALSE(witness.saw(keys::space));
    }
}

TEST_F(StockGnomeXorgTest, WithoutTheExtensionAShortcutSwitchesThroughTheDesktopsSettings) {
    // It writes down what a person chooses only beside IBus, which is not here.
    shell.evaluate("Main.panel.statusArea.keyboard._inputSourceManager._ibusReady = true");
    ASSERT_NO_FATAL_FAILURE(startProgram({"xkb:us", "xkb:ua", "xkb:de"}));
    Witness witness(server.display(), Witness::Size::normal);
    const Texts letters{"a", "ф", "a"};
    for (int switches = 0; switches < 3; ++switches) {
        const int before = shell.sourceInUse();
        // A shell that is very busy may miss what is written into its settings:
        // then it is the next press's.
        ASSERT_TRUE(waitUntil([&] {
            pressShortcut();
            return waitUntil([&] { return shell.sourceInUse() != before; }, 2s);
        }));
        EXPECT_TRUE(waitForPlate());
        witness.clear();
        typist.tap(keys::a);
        ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
        EXPECT_EQ(witness.text(), letters.at(static_cast<std::size_t>(shell.sourceInUse())));
    }
    EXPECT_FALSE(isShown("Quillmere needs permission"));
}

}  // namespace

}  // namespace quillmere::support
