#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/DBusCall.h"
#include "Tests/Support/Kwin.h"
#include "Tests/Support/KwinTypist.h"

#include <QDBusArgument>

#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

// The whole program on KDE's compositor with nothing faked but the hands: no
// key-tap service, so the desktop itself catches the shortcuts.
namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

constexpr const char* shortcut = "+ctrl +alt +space -space -alt -ctrl";

class KdeTest : public testing::Test {
protected:
    // Qt::CTRL | Qt::ALT | Qt::Key_…
    static constexpr int controlAltSpace = 0x0C000020;
    static constexpr int controlAltK = 0x0C00004B;
    /// From the window's opening to the recorder of the first group.
    static constexpr int tabsToTheRecorder = 4;

    KdeTest()
        : environment(baseEnvironment(folder.makeFolder("home").string())),
          bus(folder.makeFolder("session"), environment),
          connection(bus.connect()),
          kwin(folder.path(), environment, bus.address(), connection, {.hasXwayland = true}),
          typist(kwin.waylandDisplay()),
          tray(bus.connect()),
          settings(folder.makeFolder("settings")) {
        environment["XDG_CONFIG_HOME"] = settings.folder().parent_path();
        environment["XDG_RUNTIME_DIR"] = folder.makeFolder("run");
        environment["XDG_SESSION_TYPE"] = "wayland";
        environment["XDG_CURRENT_DESKTOP"] = "KDE";
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
        environment["WAYLAND_DISPLAY"] = kwin.waylandDisplay();
        environment["DISPLAY"] = kwin.xDisplay();
    }

    void TearDown() override {
        if (HasFailure() && program) std::cout << "The program wrote: " << program->output() << '\n';
    }

    void store(const std::vector<StoredGroup>& groups) { settings.set("config", configurationText(groups)); }

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

    /// The same, with one group on ⌃⌥Space, and waits until the desktop has it.
    void startSwitching() {
        store({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
        ASSERT_NO_FATAL_FAILURE(startProgram());
        ASSERT_TRUE(waitUntil([this] { return ownerOf(controlAltSpace) == "quillmere"; }));
    }

    QDBusMessage callShortcuts(const char* method, const QVariantList& arguments) const {
        return callMethod(connection, "org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel", method,
                          arguments);
    }
    /// The program that has this combination; empty when nobody has.
    std::string ownerOf(int key) const {
        const QDBusMessage reply = callShortcuts("getGlobalShortcutsByKey", {key});
        const auto list = reply.arguments().value(0).value<QDBusArgument>();
        if (list.currentSignature() != QLatin1String("a(ssssssaiai)")) return {};
        QString name;
        QString label;
        QString component;
        list.beginArray();
        if (!list.atEnd()) {
            list.beginStructure();
            list >> name >> label >> component;
        }
        return component.toStdString();
    }
    bool waitForOwner(int key, const std::string& owner) const {
        return waitUntil([&] { return ownerOf(key) == owner; });
    }
    /// What the desktop would know after the next login.
    std::string storedShortcuts() const {
        std::ifstream stream(kwin.configHome() / "kglobalshortcutsrc");
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    bool waitForLayout(int index) const {
        return waitUntil([&] { return kwin.layoutInUse() == index; });
    }
    bool asksForPermission() {
        return XConnection(kwin.xDisplay()).visibleWindow("Quillmere needs permission").has_value();
    }

    TemporaryFolder folder;
    Environment environment;
    SessionBus bus;
    QDBusConnection connection;
    Kwin kwin;
    KwinTypist typist;
    TrayPanel tray;
    StoredSettings settings;
    std::optional<ChildProcess> program;
};

TEST_F(KdeTest, AShortcutSwitchesTheDesktopWithNoPermissionAsked) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    Witness witness(kwin.xDisplay(), Witness::Size::normal);
    for (const int layout : {1, 2, 0, 1}) {
        typist.type(shortcut);
        EXPECT_TRUE(waitForLayout(layout));
    }
    typist.type("+a -a");
    ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
    EXPECT_EQ(witness.text(), "ф");
    EXPECT_FALSE(witness.saw(keys::space));
    EXPECT_FALSE(asksForPermission());
}

TEST_F(KdeTest, AHeldShortcutSwitchesOnce) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    typist.type("+ctrl +alt +space");
    ASSERT_TRUE(waitForLayout(1));
    // Longer than the desktop waits before it repeats a key.
    EXPECT_TRUE(holdsFor([this] { return kwin.layoutInUse() == 1; }, 900ms));
    typist.type("-space -alt -ctrl");
    typist.type(shortcut);
    EXPECT_TRUE(waitForLayout(2));
}

TEST_F(KdeTest, AShortcutIsOnItsPlaceInEveryLayout) {
    kwin.setLayouts("us,ua,fr");
    // The key that types "q" in the first layout and "a" in the last one.
    store({{.keyCode = 12, .sources = {"xkb:us", "xkb:ua", "xkb:fr"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    constexpr int controlAltA = 0x0C000041;
    constexpr int controlAltQ = 0x0C000051;
    ASSERT_TRUE(waitForOwner(controlAltQ, "quillmere"));
    for (const int layout : {1, 2}) {
        typist.type("+ctrl +alt +q -q -alt -ctrl");
        ASSERT_TRUE(waitForLayout(layout));
    }
    ASSERT_TRUE(waitForOwner(controlAltA, "quillmere"));
    EXPECT_TRUE(waitForOwner(controlAltQ, ""));
    typist.type("+ctrl +alt +q -q -alt -ctrl");
    EXPECT_TRUE(waitForLayout(0));
}

TEST_F(KdeTest, SwitchedOffOrEndedItLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_TRUE(waitUntil([this] { return storedShortcuts().find("[quillmere]") != std::string::npos; }));
    ASSERT_TRUE(tray.click("Active"));
    EXPECT_TRUE(waitForOwner(controlAltSpace, ""));
    EXPECT_TRUE(waitUntil([this] { return storedShortcuts().find("quillmere") == std::string::npos; }));
    ASSERT_TRUE(tray.click("Active"));
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    ASSERT_TRUE(tray.click("Quit Quillmere"));
    ASSERT_EQ(program->waitForExit(patience), 0);
    EXPECT_EQ(ownerOf(controlAltSpace), "");
    EXPECT_TRUE(waitUntil([this] { return storedShortcuts().find("quillmere") == std::string::npos; }));
}

TEST_F(KdeTest, WhatAKilledProgramLeftIsTakenBackByTheNext) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    program->kill();
    ASSERT_TRUE(waitUntil([this] { return !tray.hasItem(); }));
    ASSERT_EQ(ownerOf(controlAltSpace), "quillmere");
    store({{.keyCode = 40, .sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_TRUE(waitForOwner(controlAltK, "quillmere"));
    EXPECT_TRUE(waitForOwner(controlAltSpace, ""));
}

TEST_F(KdeTest, AShortcutOfTheUsersOwnStaysTheirs) {
    const QStringList theirs{"terminal", "open", "Terminal", "Open"};
    callShortcuts("doRegister", {theirs});
    callShortcuts("setShortcut", {theirs, QVariant::fromValue(QList<int>{controlAltSpace}), 6U});
    ASSERT_EQ(ownerOf(controlAltSpace), "terminal");
    store({{.sources = {"xkb:us", "xkb:ua"}}, {.keyCode = 40, .sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForOwner(controlAltK, "quillmere"));
    EXPECT_EQ(ownerOf(controlAltSpace), "terminal");
    typist.type(shortcut);
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    EXPECT_TRUE(waitForLayout(1)) << "by the second one alone";
}

TEST_F(KdeTest, WhereAGroupIsOnFnThePermissionIsAskedForAndTheOthersWork) {
    store({{.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua"}}, {.sources = {"xkb:us", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_TRUE(waitUntil([this] { return asksForPermission(); }));
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    typist.type(shortcut);
    EXPECT_TRUE(waitForLayout(2));
}

TEST_F(KdeTest, AShortcutIsRecordedAsItIsTypedIntoTheSettings) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_TRUE(tray.click("Settings…"));
    XConnection xwayland(kwin.xDisplay());
    ASSERT_TRUE(waitUntil([&] {
        const auto window = xwayland.visibleWindow("Quillmere");
        return window && xwayland.focusedWindow() == window->id;
    }));
    for (int i = 0; i < tabsToTheRecorder; ++i)
        typist.type("+tab -tab");
    typist.type("+space -space");
    ASSERT_TRUE(waitForOwner(controlAltSpace, "")) << "the recorder may be given the present shortcut, too";
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    ASSERT_TRUE(waitForOwner(controlAltK, "quillmere"));
    EXPECT_EQ(kwin.layoutInUse(), 0) << "what is recorded does not switch";
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    EXPECT_TRUE(waitForLayout(1));
}

TEST_F(KdeTest, NoLetterIsLostHoweverFastItFollowsTheShortcut) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    Witness witness(kwin.xDisplay(), Witness::Size::normal);
    constexpr int bursts = 30;
    for (int burst = 1; burst <= bursts; ++burst) {
        typist.type("+ctrl +alt +space -space -alt -ctrl +a -a");
        ASSERT_TRUE(waitForLayout(burst % 3));
        ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == static_cast<std::size_t>(burst); }));
    }
    EXPECT_FALSE(witness.saw(keys::space));
}

}  // namespace

}  // namespace quillmere::support
