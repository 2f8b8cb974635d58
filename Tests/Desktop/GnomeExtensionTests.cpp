#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Desktop/GnomeExtensionClient.h"
#include "Tests/Support/GnomeShell.h"
#include "Tests/Support/GnomeTypist.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/TrayPanel.h"
#include "Tests/Support/WaylandWitness.h"

#include <QDBusConnectionInterface>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

#include <X11/X.h>

// The Shell extension in GNOME's real Shell, with the test in the program's
// place and real keys typed into a real window.
namespace quillmere::support {

namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

constexpr const char* shortcut = "+ctrl +alt +space -space -alt -ctrl";
constexpr const char* letter = "+a -a";

// On the release that this is developed on, where nothing may be left out.
constexpr int versionHere = 43;
// From here on the shell has another thread apply a keymap.
constexpr int versionThatAppliesLater = 49;

// Run within the shell.
constexpr const char* offAndOn = R"js((() => {
    const extension = Main.extensionManager.lookup('quillmere@quillmere.org').stateObj;
    extension.disable();
    const isGone = !Main.panel.statusArea.quillmere;
    extension.enable();
    return isGone;
})())js";
constexpr const char* entryTexts =
    "Main.panel.statusArea.quillmere.menu._getMenuItems().map(entry => entry.label?.text ?? '')";
constexpr const char* iconFile = "Main.panel.statusArea.quillmere.first_child.gicon.file.get_basename()";

class GnomeExtensionTest : public testing::Test {
protected:
    explicit GnomeExtensionTest(const Texts& sources = {"xkb:us", "xkb:ua", "xkb:de"})
        : environment(baseEnvironment(folder.makeFolder("home").string())),
          bus(folder.makeFolder("session"), environment),
          connection(bus.connect()),
          shell(folder.path(), environment, bus, {.sources = sources, .extension = QUILLMERE_GNOME_EXTENSION}),
          client(connection),
          typist(connection) {
        client.takeName();
    }

    void SetUp() override {
        if (shell.hasExtension()) return;
        ASSERT_NE(shell.version(), versionHere) << "no form is for it";
        GTEST_SKIP() << "The extension is for no GNOME " << shell.version();
    }
    void TearDown() override {
        if (HasFailure()) std::cout << "The shell wrote: " << shell.process().output() << '\n';
    }

    bool isThere() const { return connection.interface()->isServiceRegistered(GnomeExtensionClient::service); }
    bool isIndicatorShown() const {
        return shell.evaluate("Main.panel.statusArea.quillmere?.is_mapped() ?? false") == "true";
    }
    void savePicture(const std::string& name) const {
        const std::filesystem::path file = DesktopTest::artefacts() / "gnome" / (name + ".png");
        std::filesystem::create_directories(file.parent_path());
        shell.screenshot().save(QString::fromStdString(file));
    }
    /// How many of the extension's sessions the shell has, and one: by a function
    /// that each makes for itself.
    int sessionsInMemory() const {
        const std::string file = shell.environment().at("XDG_CACHE_HOME") + "/heap";
        // A dump is added to what is there.
        std::filesystem::remove(file);
        shell.evaluate("imports.system.gc(); imports.system.dumpHeap('" + file + "')");
        std::ifstream heap(file);
        int count = 0;
        for (std::string line; std::getline(heap, line);)
            if (line.ends_with(" Function ShowIndicator")) ++count;
        return count;
    }
    bool waitForCurrent(unsigned int index) const {
        return waitUntil([&] { return client.current() == index; });
    }
    /// Types a letter and waits for what the window makes of it.
    std::string typedLetter(WaylandWitness& witness) const { return typedLetter(witness, typist); }
    static std::string typedLetter(WaylandWitness& witness, const GnomeTypist& typist) {
        witness.clear();
        typist.type(letter);
        return waitUntil([&] { return witness.presses(keys::a) == 1; }) ? witness.text() : "";
    }

    /// Presses the shortcut and types a letter right after it, so many times, and
    /// counts the letters in another layout than the next one. Where the layout
    /// is applied later, the letter comes after the word that it is.
    int wrongLetters(WaylandWitness& witness, const Texts& letters, std::size_t bursts) const {
        int wrong = 0;
        for (std::size_t burst = 1; burst <= bursts; ++burst) {
            witness.clear();
            typist.type(shortcut);
            if (shell.version() >= versionThatAppliesLater) {
                EXPECT_TRUE(waitUntil([&] { return client.switches().size() == burst; }));
            }
            typist.type(letter);
            const bool isTyped = waitUntil([&] { return witness.presses(keys::a) == 1; });
            if (!isTyped || witness.text() != letters[burst % letters.size()]) ++wrong;
            EXPECT_EQ(witness.presses(keys::space), 0U) << "of burst " << burst;
        }
        return wrong;
    }

    TemporaryFolder folder;
    Environment environment;
    SessionBus bus;
    QDBusConnection connection;
    GnomeShell shell;
    GnomeExtensionClient client;
    GnomeTypist typist;
};

class GnomeManySourcesTest : public GnomeExtensionTest {
protected:
    // More than one keymap holds: the shell changes it on the way.
    GnomeManySourcesTest() : GnomeExtensionTest({"xkb:us", "xkb:ua", "xkb:de", "xkb:gr", "xkb:us+dvorak"}) {}
};

TEST_F(GnomeExtensionTest, ThePersonsSourcesAreTold) {
    EXPECT_EQ(client.sources(), (Texts{"xkb:us", "xkb:ua", "xkb:de"}));
    EXPECT_EQ(client.descriptions(), (Texts{"English (US) (eng)", "Ukrainian (ukr)", "German (deu)"}));
    EXPECT_EQ(client.current(), 0U);
    shell.setSources({"xkb:de", "xkb:us+dvorak"});
    ASSERT_TRUE(waitUntil([this] { return client.listChanges() > 0; }));
    EXPECT_EQ(client.sources(), (Texts{"xkb:de", "xkb:us+dvorak"}));
    shell.useSource(1);
    EXPECT_TRUE(waitUntil([this] { return !client.currents().empty() && client.currents().back() == 1; }));
    EXPECT_EQ(client.current(), 1U);
}

TEST_F(GnomeExtensionTest, AnActivatedSourceIsInEffectWhenTheAnswerComes) {
    WaylandWitness witness(shell.waylandDisplay());
    const std::vector<std::pair<std::string, std::string>> steps{
        {"xkb:ua", "ф"}, {"xkb:de", "a"}, {"xkb:ua", "ф"}, {"xkb:ua", "ф"}, {"xkb:us", "a"}};
    for (const auto& [source, text] : steps) {
        EXPECT_TRUE(client.activate(source));
        EXPECT_EQ(typedLetter(witness), text);
    }
    EXPECT_FALSE(client.activate("xkb:fr")) << "it is not among the person's";
    EXPECT_FALSE(client.activate("ibus:us"));
    EXPECT_EQ(client.current(), 0U);
}

TEST_F(GnomeExtensionTest, AnArmedShortcutSwitchesBeforeTheNextLetter) {
    WaylandWitness witness(shell.waylandDisplay());
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
    constexpr std::size_t bursts = 100;
    EXPECT_EQ(wrongLetters(witness, {"a", "ф"}, bursts), 0);
    ASSERT_TRUE(waitUntil([this] { return client.switches().size() >= bursts; }));
    ASSERT_EQ(client.switches().size(), bursts);
    EXPECT_EQ(client.switches().front(), (ToldSwitch{"one", 1}));
    EXPECT_EQ(client.switches().back(), (ToldSwitch{"one", 0}));
}

TEST_F(GnomeManySourcesTest, AnArmedShortcutSwitchesBeforeTheNextLetter) {
    WaylandWitness witness(shell.waylandDisplay());
    const Texts order{"xkb:us", "xkb:ua", "xkb:gr"};
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", order}}), Texts{});
    EXPECT_EQ(wrongLetters(witness, {"a", "ф", "α"}, 30), 0);
    // From outside of the group it begins at its first.
    ASSERT_TRUE(client.activate("xkb:us+dvorak"));
    typist.type(shortcut);
    EXPECT_TRUE(waitForCurrent(0));
}

TEST_F(GnomeExtensionTest, AHeldShortcutSwitchesOnceAndWithCapsLockToo) {
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua", "xkb:de"}}}), Texts{});
    typist.type("+ctrl +alt +space");
    ASSERT_TRUE(waitUntil([this] { return client.switches() == std::vector<ToldSwitch>{{"one", 1}}; }));
    // Longer than the desktop waits before it repeats a key.
    EXPECT_TRUE(holdsFor([this] { return client.switches().size() == 1; }, 900ms));
    typist.type("-space -alt -ctrl +caps -caps");
    typist.type(shortcut);
    EXPECT_TRUE(waitForCurrent(2));
}

TEST_F(GnomeExtensionTest, AShortcutWithoutSourcesIsSwallowedAndToldOncePerPress) {
    WaylandWitness witness(shell.waylandDisplay());
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {}}}), Texts{});
    typist.type("+ctrl +alt +space");
    ASSERT_TRUE(waitUntil([this] { return client.presses() == Texts{"one"}; }));
    EXPECT_TRUE(holdsFor([this] { return client.presses().size() == 1; }, 900ms)) << "while it is held";
    typist.type("-space -alt -ctrl");
    typist.type(shortcut);
    EXPECT_TRUE(waitUntil([this] { return client.presses().size() == 2; }));
    EXPECT_EQ(typedLetter(witness), "a");
    EXPECT_EQ(witness.presses(keys::space), 0U);
    EXPECT_TRUE(client.switches().empty());
}

TEST_F(GnomeExtensionTest, AShortcutByItsKeyCodeIsOnItsPlaceInEveryLayout) {
    WaylandWitness witness(shell.waylandDisplay());
    shell.setSources({"xkb:us", "xkb:ua", "xkb:fr"});
    ASSERT_TRUE(waitUntil([this] { return client.sources().back() == "xkb:fr"; }));
    // The key that types "q" in the first layout and "a" in the last one.
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>0x18", {"xkb:us", "xkb:ua", "xkb:fr"}}}), Texts{});
    for (const unsigned int index : {1U, 2U, 0U, 1U}) {
        typist.type("+ctrl +alt +q -q -alt -ctrl");
        ASSERT_TRUE(waitForCurrent(index));
    }
    EXPECT_EQ(typedLetter(witness), "ф");
    EXPECT_EQ(witness.presses(keys::q), 0U);
}

TEST_F(GnomeExtensionTest, AShortcutOnOneKeyboardSwitchesTheOtherToo) {
    WaylandWitness witness(shell.waylandDisplay());
    const GnomeTypist other(connection);
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
    typist.type(shortcut);
    ASSERT_TRUE(waitForCurrent(1));
    EXPECT_EQ(typedLetter(witness, other), "ф");
    other.type(shortcut);
    ASSERT_TRUE(waitForCurrent(0));
    EXPECT_EQ(typedLetter(witness), "a");
    EXPECT_EQ(typedLetter(witness, other), "a");
}

TEST_F(GnomeExtensionTest, AShortcutThatSomebodyHasIsRefusedAndLeftAlone) {
    shell.setSetting("org.gnome.desktop.wm.keybindings", "maximize", "['<Control><Alt>k']");
    const std::string action = "global.display.get_keybinding_action(" + std::to_string(keys::k) + ", "
                               + std::to_string(ControlMask | Mod1Mask) + ")";
    ASSERT_TRUE(waitUntil([&] { return shell.evaluate(action) != "0"; }));
    const Texts both{"xkb:us", "xkb:ua"};
    EXPECT_EQ(client.arm({{"theirs", "<Control><Alt>k", both},
                          {"ours", "<Control><Alt>space", both},
                          {"again", "<Control><Alt>space", both},
                          {"nonsense", "<Control><Alt>nonsense", both},
                          {"overview", "<Super>s", both}}),
              (Texts{"theirs", "again", "nonsense", "overview"}));
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    typist.type(shortcut);
    EXPECT_TRUE(waitUntil([this] { return client.switches() == std::vector<ToldSwitch>{{"ours", 1}}; }));
    // What is armed anew does not stand in its own way.
    EXPECT_EQ(client.arm({{"ours", "<Control><Alt>space", both}}), Texts{});
}

TEST_F(GnomeExtensionTest, ASourceThatThePersonDoesNotHaveIsNotSwitchedTo) {
    ASSERT_EQ(client.arm({{"gone", "<Control><Alt>space", {"xkb:us", "xkb:fr"}},
                          {"there", "<Control><Alt>k", {"xkb:us", "xkb:de"}}}),
              Texts{});
    typist.type(shortcut);
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    ASSERT_TRUE(waitUntil([this] { return !client.switches().empty(); }));
    EXPECT_EQ(client.switches(), (std::vector<ToldSwitch>{{"there", 1}}));
}

TEST_F(GnomeExtensionTest, AStrangerGetsNoAnswerAndHearsNothing) {
    GnomeExtensionClient stranger(bus.connect());
    const QVariantList two{"xkb", "ua"};
    for (const QDBusMessage& answer : {stranger.call("List"), stranger.call("Current"), stranger.call("Activate", two)})
        EXPECT_EQ(answer.errorName(), "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_THROW(stranger.arm({{"theirs", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), SupportError);
    ASSERT_TRUE(client.activate("xkb:de"));
    ASSERT_TRUE(waitUntil([this] { return !client.currents().empty(); }));
    EXPECT_EQ(client.currents(), (std::vector{2U}));
    EXPECT_TRUE(stranger.currents().empty());
    client.leaveName();
    ASSERT_TRUE(waitUntil([this] { return client.call("List").type() == QDBusMessage::ErrorMessage; }));
}

TEST_F(GnomeExtensionTest, WhatWasArmedGoesWithTheProgram) {
    WaylandWitness witness(shell.waylandDisplay());
    const QString killed = QStringLiteral("killed");
    {
        client.leaveName();
        GnomeExtensionClient program(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), killed));
        program.takeName();
        ASSERT_EQ(program.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
        typist.type(shortcut);
        ASSERT_TRUE(waitUntil([&] { return program.switches().size() == 1; }));
        EXPECT_EQ(typedLetter(witness), "ф");
    }
    QDBusConnection::disconnectFromBus(killed);
    ASSERT_TRUE(waitUntil([&] {
        typist.type(shortcut);
        return witness.saw(keys::space);
    }));
    EXPECT_EQ(typedLetter(witness), "ф");
    client.takeName();
    EXPECT_EQ(client.current(), 1U);
    EXPECT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
}

TEST_F(GnomeExtensionTest, OnTheLockScreenItIsNotThere) {
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
    shell.evaluate("Main.sessionMode.pushMode('unlock-dialog')");
    ASSERT_TRUE(waitUntil([this] { return !isThere(); }));
    typist.type(shortcut);
    typist.type(letter);
    shell.evaluate("Main.sessionMode.popMode('unlock-dialog')");
    ASSERT_TRUE(waitUntil([this] { return isThere(); }));
    EXPECT_EQ(client.current(), 0U);
    EXPECT_TRUE(client.switches().empty());
    ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
    typist.type(shortcut);
    EXPECT_TRUE(waitForCurrent(1));
}

TEST_F(GnomeExtensionTest, SwitchedOffItLeavesNothingBehindHoweverOften) {
    // Far more often in a longer run: a person does so with every lock.
    const char* times = std::getenv("QUILLMERE_GNOME_CYCLES");
    const int cycles = times != nullptr ? std::stoi(times) : 100;
    const int before = sessionsInMemory();
    ASSERT_GT(before, 0);
    for (int cycle = 0; cycle < cycles; ++cycle) {
        ASSERT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
        client.showIndicator(true, true);
        ASSERT_EQ(shell.evaluate(offAndOn), "true");
        ASSERT_TRUE(waitUntil([this] { return client.call("List").type() == QDBusMessage::ReplyMessage; }));
    }
    // Some of the last are in the caches of compiled code, which are few.
    const int most = before + cycles / 10;
    EXPECT_TRUE(waitUntil([&] { return sessionsInMemory() < most; })) << sessionsInMemory() << ", at first " << before;
    EXPECT_EQ(shell.evaluate("Main.panel.statusArea.quillmere === undefined"), "true");
    EXPECT_EQ(client.arm({{"one", "<Control><Alt>space", {"xkb:us", "xkb:ua"}}}), Texts{});
}

TEST_F(GnomeExtensionTest, WhereIconsHaveNoPlaceItShowsOneWithTheMenu) {
    client.showIndicator(true, true);
    ASSERT_TRUE(waitUntil([this] { return isIndicatorShown(); }));
    EXPECT_EQ(shell.evaluate(entryTexts), R"(["Active","Settings…","","Quit Quillmere"])");
    EXPECT_EQ(shell.evaluate(iconFile), R"("quillmere-symbolic.svg")");
    savePicture("indicator-active");
    for (const char* entry : {"0", "1", "3"}) {
        const std::size_t before = client.choices().size();
        shell.evaluate(std::string("Main.panel.statusArea.quillmere.menu._getMenuItems()[") + entry
                       + "].activate(null)");
        ASSERT_TRUE(waitUntil([&] { return client.choices().size() > before; }));
    }
    EXPECT_EQ(client.choices(), (Texts{"active", "settings", "quit"}));
    client.showIndicator(true, false);
    EXPECT_TRUE(waitUntil([this] { return shell.evaluate(iconFile) == R"("quillmere-inactive-symbolic.svg")"; }));
    savePicture("indicator-inactive");
    client.showIndicator(false, false);
    EXPECT_TRUE(waitUntil([this] { return !isIndicatorShown(); }));
    client.showIndicator(true, true);
    ASSERT_TRUE(waitUntil([this] { return isIndicatorShown(); }));
    client.leaveName();
    EXPECT_TRUE(waitUntil([this] { return !isIndicatorShown(); }));
}

TEST_F(GnomeExtensionTest, WhereAnotherHasAPlaceForIconsItShowsNone) {
    std::optional<TrayPanel> panel(std::in_place, bus.connect());
    client.showIndicator(true, true);
    ASSERT_EQ(client.current(), 0U);
    EXPECT_FALSE(isIndicatorShown());
    panel.reset();
    EXPECT_TRUE(waitUntil([this] { return isIndicatorShown(); }));
    panel.emplace(bus.connect());
    EXPECT_TRUE(waitUntil([this] { return !isIndicatorShown(); }));
}

}  // namespace

}  // namespace quillmere::support
