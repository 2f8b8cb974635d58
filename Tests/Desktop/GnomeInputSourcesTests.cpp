#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtensionSources.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsHelper.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsSources.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Tests/Desktop/ListedSources.h"
#include "Tests/Support/GnomeShell.h"
#include "Tests/Support/GnomeTypist.h"
#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/WaylandWitness.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <optional>
#include <thread>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

using Ids = std::vector<std::string>;

/// What a busy machine may add to a promised time.
constexpr auto allowance = 300ms;

/// The sources of the real GNOME Shell, asked for by the real backend.
class GnomeInputSourcesTest : public testing::Test {
protected:
    void start(const GnomeShell::Options& options) {
        shell.emplace(folder.path(), environment, bus, options);
        // The helper is this process's own child here.
        for (const char* name :
             {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS", "GSETTINGS_BACKEND"})
            variables.emplace_back(name, shell->environment().at(name));
        const std::filesystem::path state = folder.makeFolder("state");
        giveToOrdinaryUser(state);
        variables.emplace_back("XDG_STATE_HOME", state);
        // The extension answers nobody else.
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.quillmere.Quillmere")));
        auto bySettings = std::make_unique<GnomeSettingsSources>(helperOfTheUser());
        settings = bySettings.get();
        std::vector<std::unique_ptr<GnomeSourceAccess>> ways;
        ways.push_back(std::make_unique<GnomeExtensionSources>(connection));
        ways.push_back(std::move(bySettings));
        sources.emplace(connection, std::move(ways));
    }
    /// The helper's program, for the user whom the desktop is: the settings' library
    /// shares files among the programs of one user, and of no other.
    std::string helperOfTheUser() const {
        const std::filesystem::path original = GnomeSettingsHelper::standardProgram();
        if (geteuid() != 0) return original;
        const std::filesystem::path copy = folder.path() / original.filename();
        std::filesystem::copy_file(original, copy);
        return programOfOrdinaryUser(copy, folder.path() / "helper");
    }
    void startStock(const Ids& list = {"xkb:us", "xkb:ua", "xkb:de"}) {
        start({.sources = list});
        // It writes down what a person chooses only beside IBus, which is not here.
        shell->evaluate("Main.panel.statusArea.keyboard._inputSourceManager._ibusReady = true");
    }
    bool hasAskedSettings() const { return settings->helper().process() != 0; }

    Ids ids() {
        QCoreApplication::processEvents();
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    bool waitForIds(const Ids& expected) {
        return waitUntil([&] { return ids() == expected; });
    }
    /// In a turn of the event loop of its own, as each press is.
    int select(const std::string& id) {
        QCoreApplication::processEvents();
        return sources->select({.id = id});
    }
    /// At the latest when a machine that is busy with others has a moment.
    bool selects(const std::string& id) {
        return waitUntil([&] { return select(id) == 0; });
    }
    /// A shell that is very busy may miss what is written into its settings: then
    /// it is the next press's.
    bool switchesTo(const std::string& id, int index) {
        return waitUntil([&] { return select(id) == 0 && shell->sourceInUse() == index; });
    }
    std::string storedSources() const { return shell->setting("org.gnome.desktop.input-sources", "sources"); }

    void goThroughTheList(const Ids& all) {
        for (const std::size_t next : {1U, 2U, 0U, 1U}) {
            EXPECT_TRUE(switchesTo(all[next], static_cast<int>(next)));
            EXPECT_EQ(sources->currentID(), all[next]);
        }
        EXPECT_TRUE(selects(all[1])) << "the current one can be selected again";
        EXPECT_NE(select("xkb:fr"), 0) << "it is not there";
        shell->useSource(2);
        EXPECT_TRUE(waitUntil([&] { return sources->currentID() == all[2]; })) << "whoever has chosen it";
    }
    void followTheList() {
        shell->setSources({"xkb:de+neo", "xkb:us", "xkb:fr", "xkb:ua", "xkb:gr"});
        EXPECT_TRUE(waitForIds({"xkb:de+neo", "xkb:us", "xkb:fr", "xkb:ua", "xkb:gr"})) << "more than a keymap holds";
        EXPECT_TRUE(switchesTo("xkb:ua", 3));
        shell->setSources({"xkb:ua", "xkb:us"});
        EXPECT_TRUE(waitForIds({"xkb:ua", "xkb:us"}));
        EXPECT_NE(select("xkb:fr"), 0);
        EXPECT_TRUE(switchesTo("xkb:us", 1));
        shell->setSources({"xkb:de"});
        EXPECT_TRUE(waitForIds({"xkb:de"}));
        EXPECT_TRUE(selects("xkb:de"));
    }

    TemporaryFolder folder;
    Environment environment = baseEnvironment(folder.path().string());
    SessionBus bus{folder.makeFolder("session"), environment};
    QDBusConnection connection = bus.connect();
    std::list<OwnVariable> variables;
    std::optional<GnomeShell> shell;
    GnomeSettingsSources* settings = nullptr;
    std::optional<GnomeInputSources> sources;
};

/// The same beside the extension, where there is one for the shell.
class ExtendedGnomeInputSourcesTest : public GnomeInputSourcesTest {
protected:
    void SetUp() override {
        start({.extension = QUILLMERE_GNOME_EXTENSION});
        if (!shell->hasExtension()) GTEST_SKIP() << "The extension is for no GNOME " << shell->version();
        ASSERT_TRUE(waitUntil([this] { return GnomeExtension(connection).isLive(); }));
    }
};

TEST_F(GnomeInputSourcesTest, AStockDesktopsSourcesAreListedWithNamesAndLanguages) {
    startStock({"xkb:us", "xkb:us+dvorak", "xkb:ua"});
    expectEnglishDvorakAndUkrainian(sources->sources());
    EXPECT_EQ(sources->currentID(), "xkb:us");
}

TEST_F(GnomeInputSourcesTest, AStockDesktopIsSwitchedAndItsListStaysAsItWas) {
    startStock();
    const std::string before = storedSources();
    goThroughTheList({"xkb:us", "xkb:ua", "xkb:de"});
    EXPECT_EQ(storedSources(), before);
    followTheList();
}

TEST_F(GnomeInputSourcesTest, AnApplicationOnAStockDesktopTypesInTheNewLayout) {
    startStock({"xkb:us", "xkb:ua"});
    const GnomeTypist typist(connection);
    WaylandWitness witness(shell->waylandDisplay());
    for (const char* text : {"ф", "a", "ф"}) {
        const bool isTyped = waitUntil([&] {
            if (select(*text == 'a' ? "xkb:us" : "xkb:ua") != 0) return false;
            witness.clear();
            typist.type("+a -a");
            return waitUntil([&] { return witness.presses(keys::a) == 1; }) && witness.text() == text;
        });
        EXPECT_TRUE(isTyped) << text;
    }
}

TEST_F(GnomeInputSourcesTest, AHelperThatIsKilledInTheMiddleOfASwitchLeavesTheListToTheNext) {
    startStock();
    const std::string before = storedSources();
    ASSERT_TRUE(selects("xkb:ua"));
    const pid_t helper = settings->helper().process();
    std::jthread killer([helper] {
        std::this_thread::sleep_for(20ms);
        kill(helper, SIGKILL);
    });
    select("xkb:de");
    EXPECT_TRUE(waitUntil([&] { return storedSources() == before; }));
    EXPECT_TRUE(switchesTo("xkb:de", 2));
    EXPECT_EQ(storedSources(), before);
}

TEST_F(ExtendedGnomeInputSourcesTest, WithTheExtensionTheSettingsAreNotTouched) {
    goThroughTheList({"xkb:us", "xkb:ua", "xkb:de"});
    followTheList();
    EXPECT_FALSE(hasAskedSettings());
    EXPECT_EQ(storedSources(), "[('xkb', 'de')]");
}

TEST_F(ExtendedGnomeInputSourcesTest, WithTheExtensionEveryLetterAfterASwitchIsInTheNewLayout) {
    const GnomeTypist typist(connection);
    WaylandWitness witness(shell->waylandDisplay());
    constexpr int bursts = 30;
    for (int burst = 0; burst < bursts; ++burst) {
        const bool isUkrainian = burst % 2 == 0;
        ASSERT_TRUE(selects(isUkrainian ? "xkb:ua" : "xkb:us"));
        witness.clear();
        typist.type("+a -a");
        ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
        EXPECT_EQ(witness.text(), isUkrainian ? "ф" : "a");
    }
}

TEST_F(ExtendedGnomeInputSourcesTest, AShellThatIsKilledLeavesNothingAndIsTakenUpWhenItIsBack) {
    ASSERT_TRUE(selects("xkb:ua"));
    shell->process().kill();
    EXPECT_TRUE(waitUntil([this] { return !sources->isAvailable(); }));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_NE(select("xkb:de"), 0);
    shell->start();
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "xkb:de"}));
    EXPECT_TRUE(switchesTo("xkb:de", 2));
}

TEST_F(ExtendedGnomeInputSourcesTest, AnExtensionThatIsSwitchedOffGivesWayToTheSettingsAndComesBack) {
    shell->setSetting("org.gnome.shell", "enabled-extensions", "@as []");
    ASSERT_TRUE(waitUntil([this] { return ids().size() == 3 && hasAskedSettings(); }));
    EXPECT_TRUE(switchesTo("xkb:ua", 1));
    shell->setSetting("org.gnome.shell", "enabled-extensions", std::string("['") + GnomeShell::extensionName + "']");
    EXPECT_TRUE(waitUntil([this] { return select("xkb:de") == 0 && shell->sourceInUse() == 2; }));
}

TEST_F(ExtendedGnomeInputSourcesTest, AStoppedShellIsWaitedForOnceAndSwitchesAfterwards) {
    ASSERT_TRUE(selects("xkb:ua"));
    shell->process().signal(SIGSTOP);
    ASSERT_TRUE(waitUntil([this] { return shell->process().state() == 'T'; }));
    QCoreApplication::processEvents();
    // What two presses of a shortcut ask, one after the other.
    const auto start = std::chrono::steady_clock::now();
    for (int press = 0; press < 2; ++press) {
        EXPECT_EQ(sources->currentID(), std::nullopt);
        EXPECT_EQ(ids(), Ids{});
        EXPECT_NE(select("xkb:us"), 0);
        QCoreApplication::processEvents();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, longestSwitch + allowance);
    shell->process().signal(SIGCONT);
    EXPECT_TRUE(waitUntil([this] { return sources->currentID() == "xkb:ua"; })) << "nothing was switched late";
    EXPECT_TRUE(switchesTo("xkb:us", 0));
}

}  // namespace

}  // namespace quillmere::support
