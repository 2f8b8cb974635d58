#include "Quillmere/Platform/Linux/Doctor/FnKeyboards.h"
#include "Quillmere/Platform/Linux/Doctor/MethodFinding.h"
#include "Quillmere/Platform/Linux/Doctor/ServiceAccess.h"
#include "Quillmere/Platform/Linux/Doctor/SessionFindings.h"
#include "Quillmere/Platform/Linux/Doctor/ShortcutHolders.h"
#include "Quillmere/Platform/Linux/Doctor/StoreFinding.h"
#include "Quillmere/Platform/Linux/Doctor/TapFindings.h"
#include "Quillmere/Platform/Linux/KernelKeyboards.h"
#include "Tests/App/FakeSway.h"
#include "Tests/App/PlayedFramework.h"
#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/Environment.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/StoredSettings.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace quillmere {

namespace {

using support::StoredSettings;
using support::TemporaryFolder;
using Kind = ServiceAccess::Kind;

// The tap

LinuxSession onX11() {
    return {.hasWayland = false, .hasX11 = true, .swaySocket = {}, .hyprlandFolder = {}, .desktops = {}};
}

LinuxSession onWayland() {
    return {.hasWayland = true, .hasX11 = true, .swaySocket = {}, .hyprlandFolder = {}, .desktops = {}};
}

TEST(TapFindingsTest, SayWhichTapIsTakenAndWhatItLacks) {
    struct Case {
        const char* sentence;
        TapChoices choices;
        const char* tap;
        bool isWrong;
    };
    const Case cases[] = {
        {"X11 alone", {.session = onX11(), .hasX11Tap = true, .service = {Kind::missing, {}}}, "the X server's", false},
        {"X11 and the service",
         {.session = onX11(), .hasX11Tap = true, .service = {Kind::given, {}}},
         "the X server's, and Fn from the service",
         false},
        {"no answer on X11",
         {.session = onX11(), .service = {Kind::given, {}}},
         "none: the X server does not answer, or lacks XInput 2.2 or XKB",
         true},
        {"the service",
         {.session = onWayland(), .hasKde = true, .service = {Kind::given, {}}},
         "the key-tap service's",
         false},
        {"KDE, since the service is not there",
         {.session = onWayland(), .hasKde = true, .service = {Kind::missing, {}}},
         "KDE's global shortcuts, without Fn\nthe service comes first, but: not installed",
         false},
        {"sway, since the service is not there",
         {.session = onWayland(), .hasSway = true, .service = {Kind::missing, {}}},
         "sway's key bindings, without Fn\nthe service comes first, but: not installed",
         false},
        {"Hyprland, since the service is not there",
         {.session = onWayland(), .hasHyprland = true, .service = {Kind::missing, {}}},
         "Hyprland's binds, without Fn\nthe service comes first, but: not installed",
         false},
        {"GNOME with the extension",
         {.session = onWayland(), .hasGnome = true, .service = {Kind::missing, {}}},
         "GNOME Shell's, through Quillmere's extension, without Fn\nthe service comes first, but: not installed",
         false},
        {"nothing, since there is no access",
         {.session = onWayland(), .service = {Kind::refused, {}}},
         "none: this desktop lends none of its own\nthe service comes first, but: installed, but you have no access",
         true},
        {"nothing, since the service does not start",
         {.session = onWayland(), .service = {Kind::silent, "no device"}},
         "none: this desktop lends none of its own\nthe service comes first, but: does not answer: no device",
         true},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.sentence);
        const std::vector<Finding> rows = tapFindings(each.choices);
        EXPECT_EQ(rows.front().state, each.tap);
        EXPECT_EQ(!rows.front().advice.empty(), each.isWrong);
    }
}

TEST(TapFindingsTest, TheServiceIsMissedOnlyWhereNothingElseCatchesKeys) {
    const auto adviceOf = [](const LinuxSession& session, bool hasKde, Kind kind) {
        return tapFindings({.session = session, .hasX11Tap = true, .hasKde = hasKde, .service = {kind, {}}})
            .back()
            .advice;
    };
    for (const Kind kind : {Kind::noBus, Kind::missing, Kind::silent, Kind::refused}) {
        EXPECT_FALSE(adviceOf(onWayland(), false, kind).empty());
        EXPECT_TRUE(adviceOf(onWayland(), true, kind).empty());
        EXPECT_TRUE(adviceOf(onX11(), false, kind).empty());
    }
    EXPECT_TRUE(adviceOf(onWayland(), false, Kind::given).empty());
}

// Fn

/// As the kernel lists it: the keys' words of 64 bits, the highest first.
std::string device(const std::string& name, const std::string& keys) {
    return "I: Bus=0003 Vendor=1 Product=1 Version=1\nN: Name=\"" + name
           + "\"\nH: Handlers=sysrq kbd\nB: EV=120013\nB: KEY=" + keys + "\n\n";
}
const std::string letters = "fffffffffffffffe";
const std::string wakeUp = "8000 0 " + letters;               // bit 143
const std::string fnItself = "10000 0 0 0 0 0 0 " + letters;  // bit 0x1d0

TEST(FnKeyboardsTest, EachKeyboardIsSaidToTellOfFnOrNot) {
    const std::string devices = device("Plain", "0 0 " + letters) + device("Power Button", "8000 10000000000000 0")
                                + device("Laptop", wakeUp) + device("New", fnItself);
    const Finding seen = fnFinding(devices, FnSight::every);
    EXPECT_EQ(seen.state, "Plain: keeps Fn to itself\nLaptop: can tell of Fn\nNew: can tell of Fn");
    EXPECT_EQ(seen.advice, "");
}

TEST(FnKeyboardsTest, AKeyboardKnowsWhetherItTellsOfFnInAnyForm) {
    const auto keyboards =
        kernelKeyboards(device("Plain", letters) + device("Laptop", wakeUp) + device("New", fnItself));
    ASSERT_EQ(keyboards.size(), 3);
    EXPECT_FALSE(keyboards[0].tellsOfFn());
    EXPECT_TRUE(keyboards[1].tellsOfFn());
    EXPECT_TRUE(keyboards[2].tellsOfFn());
}

TEST(FnKeyboardsTest, ATapThatMissesTheFormOfFnSaysSo) {
    EXPECT_EQ(fnFinding(device("New", fnItself), FnSight::x11).state, "New: tells of Fn, which this tap misses");
    EXPECT_FALSE(fnFinding(device("New", fnItself), FnSight::x11).advice.empty());
    EXPECT_EQ(fnFinding(device("Laptop", wakeUp), FnSight::x11).state, "Laptop: can tell of Fn");
    EXPECT_EQ(fnFinding(device("Laptop", wakeUp), FnSight::none).state, "Laptop: tells of Fn, which this tap misses");
}

TEST(FnKeyboardsTest, WithoutAKeyboardAnotherShortcutIsAdvised) {
    for (const char* devices : {"", "N: Name=\n", "B: KEY=\n", "B: KEY=zz\nN: Name=\"x"}) {
        SCOPED_TRACE(devices);
        EXPECT_EQ(fnFinding(devices, FnSight::every).state, "none that the kernel knows");
        EXPECT_FALSE(fnFinding(devices, FnSight::every).advice.empty());
    }
}

// The store

class StoreFindingTest : public testing::Test {
protected:
    Finding finding() const { return storedIn(settings.file()).finding; }
    /// Everything that lies beside the store, byte for byte.
    std::vector<std::string> files() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(settings.folder())) {
            std::ifstream file(entry.path(), std::ios::binary);
            result.push_back(entry.path().string() + ": " + std::string(std::istreambuf_iterator<char>(file), {}));
        }
        std::ranges::sort(result);
        return result;
    }

    TemporaryFolder folder;
    StoredSettings settings{folder.path()};
};

TEST_F(StoreFindingTest, AStoreThatIsNotThereYetIsNotMadeByLooking) {
    EXPECT_EQ(finding().state, settings.file().string() + "\nnothing is stored yet");
    EXPECT_EQ(finding().advice, "");
    EXPECT_FALSE(std::filesystem::exists(settings.folder()));
}

TEST_F(StoreFindingTest, WhatIsStoredIsReadAndLeftAsItIs) {
    settings.set("config", support::configurationText({{.sources = {"xkb:us"}}}));
    const std::vector<std::string> before = files();
    const auto stored = storedIn(settings.file());
    EXPECT_EQ(stored.finding.state, settings.file().string() + "\ncan be read");
    ASSERT_TRUE(stored.config);
    EXPECT_EQ(stored.config->groups.front().sourceIDs, std::vector<std::string>{"xkb:us"});
    EXPECT_EQ(files(), before);
}

TEST_F(StoreFindingTest, ADamagedStoreIsSaidToBeAndNotSetAside) {
    settings.set("config", "x");
    std::ofstream(settings.file(), std::ios::binary | std::ios::trunc) << std::string(4096, 'x');
    const std::vector<std::string> before = files();
    EXPECT_EQ(finding().state, settings.file().string() + "\nis damaged");
    EXPECT_FALSE(finding().advice.empty());
    EXPECT_EQ(files(), before);
}

TEST_F(StoreFindingTest, GroupsThatCannotBeReadAreToldFromNone) {
    settings.set("other", "x");
    EXPECT_EQ(finding().state, settings.file().string() + "\nno groups are stored yet");
    settings.set("config", "{");
    EXPECT_EQ(finding().state, settings.file().string() + "\nholds groups that cannot be read");
    EXPECT_FALSE(finding().advice.empty());
}

// The session

class BusFindingsTest : public testing::Test {
protected:
    TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    QDBusConnection connection = bus.connect();
};

TEST_F(BusFindingsTest, TheProgramRunsWhileItHasItsName) {
    EXPECT_EQ(programFinding(connection).state, "does not run");
    QDBusConnection program = bus.connect();
    ASSERT_TRUE(program.registerService("org.quillmere.Quillmere"));
    EXPECT_EQ(programFinding(connection), (Finding{"Program", "runs", {}}));
}

TEST_F(BusFindingsTest, AServiceThatNobodyOffersIsMissing) {
    EXPECT_EQ(ServiceAccess::asked(connection).kind, Kind::missing);
    EXPECT_EQ(ServiceAccess::asked(QDBusConnection("none")).kind, Kind::noBus);
}

TEST_F(BusFindingsTest, ADesktopIsNamedWithWhatShowsItsWindows) {
    const LinuxSession sway{
        .hasWayland = true, .hasX11 = false, .swaySocket = {}, .hyprlandFolder = {}, .desktops = {"sway", "wlroots"}};
    const Finding finding = desktopFinding(sway, connection);
    EXPECT_EQ(finding.state, "sway:wlroots, on Wayland, without Xwayland");
    EXPECT_NE(finding.advice.find("xwayland"), std::string::npos);
    EXPECT_EQ(desktopFinding(onX11(), connection), (Finding{"Desktop", "without a name, on X11", {}}));
    EXPECT_FALSE(desktopFinding({}, connection).advice.empty());
}

TEST_F(BusFindingsTest, OnADesktopThatHasALayerForThePlateXwaylandIsNotMissed) {
    FakeSway sway(folder.path() / "sway");
    const LinuxSession session{.hasWayland = true,
                               .hasX11 = false,
                               .swaySocket = (folder.path() / "sway").string(),
                               .hyprlandFolder = {},
                               .desktops = {"sway"}};
    const Finding finding = desktopFinding(session, connection);
    EXPECT_NE(finding.state.find("sway, sway 1.7"), std::string::npos) << finding.state;
    EXPECT_EQ(finding.advice, "");
}

TEST(MethodFindingTest, WhichFrameworkRunsAndWhetherItAnswersAreTold) {
    EXPECT_EQ(methodFinding(nullptr).advice, "");
    PlayedFramework framework;
    EXPECT_EQ(methodFinding(&framework), (Finding{"Input methods", "played runs, with 1 of them", {}}));
    framework.now.current.reset();
    EXPECT_NE(methodFinding(&framework).advice.find("text field"), std::string::npos);
    framework.now.sources = {layout("xkb:us")};
    EXPECT_NE(methodFinding(&framework).advice.find("settings of played"), std::string::npos);
    framework.answers = false;
    const Finding finding = methodFinding(&framework);
    EXPECT_EQ(finding.state, "played runs and does not answer");
    EXPECT_NE(finding.advice.find("Restart"), std::string::npos);
}

TEST(ShortcutHoldersTest, AGroupWithoutAnyShortcutIsAdvisedToHaveOne) {
    EXPECT_FALSE(untoldHolders({}).advice.empty());
    EXPECT_EQ(untoldHolders({Shortcut::fn}).state, Shortcut::fn.displayString() + ": tapped alone, nobody else's");
}

}  // namespace

}  // namespace quillmere
