#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusConnection.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusFramework.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"
#include "Tests/Desktop/SettingsTest.h"
#include "Tests/Support/Ibus.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <csignal>
#include <optional>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

using Ids = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

/// What a busy machine may add to a promised time.
constexpr auto allowance = 300ms;

/// The real IBus beside the layouts of a real X server, asked by the real
/// program's sources.
class IbusTest : public testing::Test {
protected:
    IbusTest() {
        environment["DISPLAY"] = server.display();
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    }

    void start(const Ids& engines, const std::string& layouts) {
        ibus.emplace(folder.path(), environment, bus.connect(), engines);
        configHome.emplace("XDG_CONFIG_HOME", ibus->configHome());
        server.setLayouts(layouts);
        ask();
    }
    /// As a program that starts now.
    void ask() {
        std::vector<std::unique_ptr<InputMethodFramework>> frameworks;
        auto layouts = XkbInputSources::create();
        frameworks.push_back(std::make_unique<IbusFramework>(
            [this] { return isDesktops; },
            [layouts = layouts.get()](const XkbLayout& layout) { return layouts->useAlone(layout); }));
        sources = std::make_unique<ComposedInputSources>(std::move(layouts), std::move(frameworks));
    }
    void stopDaemon() {
        ibus->process().signal(SIGSTOP);
        ASSERT_TRUE(waitUntil([this] { return ibus->process().state() == 'T'; }));
        QCoreApplication::processEvents();
    }
    /// How long everything takes that several presses of a shortcut ask.
    Clock::duration timeOfSwitchingLayouts() {
        const auto start = Clock::now();
        for (const char* next : {"xkb:ua", "xkb:us", "xkb:ua"}) {
            sources->currentID();
            EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
            EXPECT_EQ(select(next), 0);
            EXPECT_EQ(sources->currentID(), next);
            QCoreApplication::processEvents();
        }
        return Clock::now() - start;
    }

    static Ids idsOf(InputSourceService& service) {
        Ids result;
        for (const InputSourceRecord& record : service.sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    Ids ids() const { return idsOf(*sources); }
    Ids layoutsOfServer() const { return idsOf(sources->desktop()); }
    int select(const char* id) const { return sources->select({.id = id}); }
    // A busy machine may need more than the time of a switch.
    bool switchTo(const char* id) const {
        return waitUntil([&] { return select(id) == 0; });
    }
    bool waitForCurrent(const char* id) const {
        return waitUntil([&] { return sources->currentID() == id; });
    }
    bool waitForIds(const Ids& expected) const {
        return waitUntil([&] { return ids() == expected; });
    }

    TemporaryFolder folder;
    Environment environment = baseEnvironment(folder.path().string());
    SessionBus bus{folder.path(), environment};
    XServer server{folder.path(), environment, QSize(640, 480)};
    OwnVariable display{"DISPLAY", server.display()};
    OwnVariable wayland{"WAYLAND_DISPLAY", ""};
    OwnVariable address{"IBUS_ADDRESS", ""};
    std::optional<OwnVariable> configHome;
    std::optional<Ibus> ibus;
    bool isDesktops = false;
    std::unique_ptr<ComposedInputSources> sources;
};

TEST_F(IbusTest, ItsMethodsComeAfterTheDesktopsLayoutsWithNameAndLanguageFromTheFirstQuestionOn) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    const std::vector<InputSourceRecord> records = sources->sources();
    ASSERT_EQ(records.size(), 3U);
    const InputSourceRecord& hangul = records.back();
    EXPECT_EQ(hangul.id, "ibus:hangul");
    EXPECT_EQ(hangul.localizedName, "Hangul");
    EXPECT_EQ(hangul.languages, std::vector<std::string>{"ko"});
    EXPECT_EQ(hangul.type, InputSourceType::keyboardInputMode);
    EXPECT_TRUE(hangul.enabled && hangul.selectCapable);
}

TEST_F(IbusTest, AGroupOfLayoutsAndMethodsIsGoneThroughAndAMethodReadsTheLayoutOfItsKeyboard) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    EXPECT_EQ(sources->currentID(), "xkb:us") << "nobody has chosen any";
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(switchTo("ibus:hangul"));
        EXPECT_EQ(sources->currentID(), "ibus:hangul");
        EXPECT_EQ(ibus->current(), "hangul");
        EXPECT_EQ(server.group(), 0) << "whose letters it reads";
        EXPECT_TRUE(switchTo("xkb:ua"));
        EXPECT_EQ(sources->currentID(), "xkb:ua");
        EXPECT_EQ(ibus->current(), "xkb:us::eng");
        EXPECT_EQ(server.group(), 1);
        EXPECT_TRUE(switchTo("ibus:hangul"));
        EXPECT_TRUE(switchTo("xkb:us"));
        EXPECT_EQ(sources->currentID(), "xkb:us");
    }
}

TEST_F(IbusTest, BesideOneLayoutItsMethodsAreListedAndALayoutThatItDoesNotTypeIsNot) {
    start({"xkb:ua::ukr", "hangul"}, "us");
    EXPECT_EQ(ids(), (Ids{"xkb:us", "ibus:hangul"}));
    EXPECT_TRUE(switchTo("ibus:hangul"));
    EXPECT_TRUE(switchTo("xkb:us"));
    EXPECT_EQ(sources->currentID(), "xkb:us");
    EXPECT_NE(select("xkb:ua"), 0);
}

TEST_F(IbusTest, WhereItSetsTheServersOneLayoutItsListIsTheListAndIsGoneThrough) {
    start({"xkb:us::eng", "xkb:ua::ukr", "hangul", "xkb:us:dvorak:eng"}, "us");
    ibus->setLeavesLayouts(false);
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul", "xkb:us+dvorak"}));
    EXPECT_EQ(sources->sources()[1].languages, std::vector<std::string>{"ukr"});
    for (const auto& [id, layout] : {std::pair{"xkb:ua", "xkb:ua"},
                                     {"ibus:hangul", "xkb:kr+kr104"},
                                     {"xkb:us+dvorak", "xkb:us+dvorak"},
                                     {"xkb:us", "xkb:us"}}) {
        EXPECT_TRUE(switchTo(id));
        EXPECT_EQ(sources->currentID(), id);
        EXPECT_EQ(layoutsOfServer(), Ids{layout});
    }
}

TEST_F(IbusTest, WhereTheServerHasSeveralLayoutsTheyStay) {
    start({"xkb:us::eng", "xkb:fr::fra", "hangul"}, "us,ua");
    ibus->setLeavesLayouts(false);
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul"}));
    for (const char* id : {"ibus:hangul", "xkb:ua", "ibus:hangul", "xkb:us"}) {
        EXPECT_TRUE(switchTo(id));
        EXPECT_EQ(layoutsOfServer(), (Ids{"xkb:us", "xkb:ua"}));
    }
}

TEST_F(IbusTest, AListOfMethodsAloneIsLeftForALayoutToo) {
    start({"hangul"}, "us,ua");
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul"}));
    EXPECT_TRUE(switchTo("ibus:hangul"));
    EXPECT_TRUE(switchTo("xkb:ua"));
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    EXPECT_EQ(ibus->current(), "xkb:us::eng") << "which every IBus has";
}

TEST_F(IbusTest, WhatIsNotThereIsRefusedAndChangesNothing) {
    start({"xkb:us::eng", "hangul", "uninstalled"}, "us,ua");
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul"}));
    ASSERT_TRUE(switchTo("ibus:hangul"));
    for (const char* id :
         {"ibus:uninstalled", "ibus:libpinyin", "ibus:", "ibus:xkb:us::eng", "xkb:fr", "", "fcitx:hangul"})
        EXPECT_NE(select(id), 0) << id;
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(ibus->current(), "hangul");
    EXPECT_EQ(server.group(), 0);
}

TEST_F(IbusTest, TheCurrentOneIsThatOfIbusWhoeverHasChosenIt) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    ibus->use("hangul");
    EXPECT_EQ(sources->currentID(), "ibus:hangul");
    ibus->use("xkb:us::eng");
    server.setGroup(1);
    EXPECT_TRUE(waitForCurrent("xkb:ua"));
    ibus->use("hangul");
    EXPECT_EQ(sources->currentID(), "ibus:hangul");
    EXPECT_TRUE(switchTo("xkb:ua"));
    EXPECT_EQ(sources->currentID(), "xkb:ua");
}

TEST_F(IbusTest, AListThatChangesIsFollowedAtOnce) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    ASSERT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul"}));
    ibus->setEngines({"xkb:us::eng"});
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
    EXPECT_NE(select("ibus:hangul"), 0);
    ibus->setEngines({"hangul", "xkb:us::eng"});
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul"}));
    EXPECT_TRUE(switchTo("ibus:hangul"));
}

TEST_F(IbusTest, WhenItIsKilledTheLayoutsAreLeftAndItsMethodsComeBackWithIt) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    ASSERT_TRUE(switchTo("ibus:hangul"));
    ibus->process().kill();
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua"}));
    EXPECT_TRUE(waitForCurrent("xkb:us"));
    EXPECT_TRUE(switchTo("xkb:ua"));
    EXPECT_NE(select("ibus:hangul"), 0);
    ibus->start();
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "ibus:hangul"}));
    EXPECT_TRUE(switchTo("ibus:hangul"));
    EXPECT_EQ(ibus->current(), "hangul");
}

TEST_F(IbusTest, OneThatStartsLaterIsTakenUpAndNothingStartsIt) {
    server.setLayouts("us,ua");
    ask();
    configHome.emplace("XDG_CONFIG_HOME", folder.path() / "ibus/config");
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "ibus"));
    ibus.emplace(folder.path(), environment, bus.connect(), Ids{"xkb:us::eng", "hangul"});
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "ibus:hangul"}));
}

TEST_F(IbusTest, WhileItStandsStillLayoutsSwitchAndItIsWaitedForOnce) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    ASSERT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "ibus:hangul"}));
    ASSERT_NO_FATAL_FAILURE(stopDaemon());
    EXPECT_LT(timeOfSwitchingLayouts(), longestSwitch + allowance);
    EXPECT_LT(timeOfSwitchingLayouts(), allowance) << "nothing more is waited for";
    ibus->process().signal(SIGCONT);
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "ibus:hangul"}));
    EXPECT_TRUE(switchTo("ibus:hangul"));
}

TEST_F(IbusTest, AProgramThatStartsBesideOneThatStandsStillWaitsOnceAndHasItsMethodsLater) {
    start({"xkb:us::eng", "hangul"}, "us,ua");
    ASSERT_NO_FATAL_FAILURE(stopDaemon());
    const auto start = Clock::now();
    ask();
    QCoreApplication::processEvents();
    timeOfSwitchingLayouts();
    EXPECT_LT(Clock::now() - start, longestSwitch + allowance);
    ibus->process().signal(SIGCONT);
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "ibus:hangul"}));
    EXPECT_TRUE(switchTo("ibus:hangul"));
}

TEST_F(IbusTest, WhereItIsTheDesktopsOwnItIsLeftAlone) {
    isDesktops = true;
    start({"xkb:us::eng", "hangul"}, "us,ua");
    ibus->use("hangul");
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
    EXPECT_EQ(sources->currentID(), "xkb:us");
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(ibus->current(), "hangul");
    isDesktops = false;
    EXPECT_TRUE(waitForCurrent("ibus:hangul")) << "once the desktop has gone";
}

TEST_F(IbusTest, ADaemonThatStartsAnewIsGreetedWithoutAnyQuestion) {
    start({"hangul"}, "us");
    IbusConnection connection;
    bool isGreeted = false;
    QObject::connect(&connection, &IbusConnection::greeted, [&] { isGreeted = true; });
    QObject::connect(&connection, &IbusConnection::lost, [&] { isGreeted = false; });
    connection.look();
    ASSERT_TRUE(waitUntil([&] { return isGreeted; }));
    for (int round = 0; round < 2; ++round) {
        ibus->process().kill();
        ASSERT_TRUE(waitUntil([&] { return !connection.bus(); }));
        EXPECT_FALSE(isGreeted);
        ibus->start();
        ASSERT_TRUE(waitUntil([&] { return isGreeted; }));
    }
}

/// The whole program beside IBus: one group on ⌃⌥Space, of layouts and a method.
class IbusProgramTest : public SettingsTest {
protected:
    void startEverything() {
        startAccessibleDesktop({.layouts = "us,ua"});
        ibus.emplace(desktop().folder(), desktop().environment(), desktop().bus().connect(), Ids{plain, "hangul"});
        storeConfiguration(configurationText({{.sources = {"xkb:us", "xkb:ua", "ibus:hangul"}}}));
        startProgram(options());
        // The first use of a method starts it, which takes a busy machine long.
        ibus->use("hangul");
        ASSERT_TRUE(waitUntil([this] { return ibus->current() == "hangul"; }));
        ibus->use(plain);
    }
    void pressAndWaitFor(const std::string& engine, int group) {
        pressShortcut();
        ASSERT_TRUE(waitUntil([&] { return desktop().server().group() == group && ibus->current() == engine; }))
            << engine << " and " << group << ", but " << ibus->current();
    }

    static constexpr const char* plain = "xkb:us::eng";
    std::optional<Ibus> ibus;
};

TEST_F(IbusProgramTest, AShortcutGoesThroughItsLayoutsAndMethods) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    for (int round = 0; round < 2; ++round) {
        ASSERT_NO_FATAL_FAILURE(pressAndWaitFor(plain, 1));
        ASSERT_NO_FATAL_FAILURE(pressAndWaitFor("hangul", 0));
        EXPECT_TRUE(program().waitForPlate());
        ASSERT_NO_FATAL_FAILURE(pressAndWaitFor(plain, 0));
    }
}

TEST_F(IbusProgramTest, WhereIbusSetsTheServersOneLayoutAShortcutGoesThroughItsList) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ibus->setEngines({plain, "xkb:ua::ukr", "hangul"});
    ibus->setLeavesLayouts(false);
    desktop().server().setLayouts("us");
    const OwnVariable display("DISPLAY", desktop().display());
    const auto server = XkbInputSources::create();
    for (int round = 0; round < 2; ++round)
        for (const auto& [engine, layout] :
             {std::pair{"xkb:ua::ukr", "xkb:ua"}, {"hangul", "xkb:kr+kr104"}, {plain, "xkb:us"}}) {
            pressShortcut();
            ASSERT_TRUE(waitUntil([&] { return server->currentID() == layout && ibus->current() == engine; }))
                << engine;
        }
}

TEST_F(IbusProgramTest, WhereIbusSetsTheServersOneLayoutEveryOneOfTwoPressesInARowSwitches) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ibus->setEngines({plain, "xkb:ua::ukr", "hangul"});
    ibus->setLeavesLayouts(false);
    desktop().server().setLayouts("us");
    for (const char* engine : {"hangul", "xkb:ua::ukr", plain}) {
        typist().play(Strokes().chord(controlAlt, keys::space).chord(controlAlt, keys::space));
        EXPECT_TRUE(waitUntil([&] { return ibus->current() == engine; })) << ibus->current();
    }
}

TEST_F(IbusProgramTest, TheNextOneIsCountedFromWhatIbusHasBeenSwitchedToByItself) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ASSERT_NO_FATAL_FAILURE(pressAndWaitFor(plain, 1));
    ibus->use("hangul");
    ASSERT_NO_FATAL_FAILURE(pressAndWaitFor(plain, 0));
}

TEST_F(IbusProgramTest, TheSettingsNameTheMethod) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    openSettings();
    EXPECT_TRUE(waitFor("Hangul"));
    keepPicture("settings-ibus");
}

TEST_F(IbusProgramTest, BesideADaemonThatStandsStillLayoutsSwitchTheSettingsOpenAndItRests) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    ibus->process().signal(SIGSTOP);
    ASSERT_TRUE(waitUntil([this] { return ibus->process().state() == 'T'; }));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    openSettings();
    EXPECT_TRUE(settingsWindow());
    closeSettings();
    // Once the plate has gone there is nothing left to do.
    EXPECT_TRUE(program().waitForNoPlate());
    EXPECT_TRUE(waitUntil([this] {
        const long before = program().process().wakeUps();
        return !waitUntil([&] { return program().process().wakeUps() != before; }, 1s);
    }));
    ibus->process().signal(SIGCONT);
    ASSERT_TRUE(waitUntil([this] { return ibus->current() == plain; }));
    ASSERT_NO_FATAL_FAILURE(pressAndWaitFor("hangul", 0));
}

}  // namespace

}  // namespace quillmere::support
