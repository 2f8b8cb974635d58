#include "Quillmere/Platform/Linux/Tap/Kde/KdeEventTap.h"
#include "Tests/Desktop/KdeTest.h"
#include "Tests/Support/FakeInputSourceService.h"

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

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

TEST_F(KdeTest, AShortcutOnOneKeyboardSwitchesTheOtherToo) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    Witness witness(kwin.xDisplay(), Witness::Size::normal);
    KwinTypist other(kwin.waylandDisplay());
    typist.type(shortcut);
    ASSERT_TRUE(waitForLayout(1));
    other.type("+a -a");
    ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
    EXPECT_EQ(witness.text(), "ф");
    other.type(shortcut);
    ASSERT_TRUE(waitForLayout(2));
    witness.clear();
    typist.type("+a -a");
    ASSERT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
    EXPECT_EQ(witness.text(), "a");
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

TEST_F(KdeTest, TheTapKnowsWhichShortcutsTheDesktopHasForSomethingElse) {
    const QStringList theirs{"terminal", "open", "Terminal", "Open"};
    callShortcuts("doRegister", {theirs});
    callShortcuts("setShortcut", {theirs, QVariant::fromValue(QList<int>{controlAltSpace}), 6U});
    ASSERT_EQ(ownerOf(controlAltSpace), "terminal");
    const Shortcut taken{Shortcut::space, {Modifiers::control, Modifiers::option}};
    const Shortcut free{40, {Modifiers::control, Modifiers::option}};
    FakeInputSourceService sources;
    sources.records = {layout("xkb:us")};
    KdeEventTap tap(connection, sources);
    tap.setInterest({.shortcuts = {taken, free}});
    ASSERT_TRUE(tap.install([](const KeyEventFields&) { return InterceptDecision::pass; }));
    EXPECT_TRUE(waitUntil([&] { return tap.taken().all() == std::vector{taken}; }));
    tap.setInterest({.shortcuts = {free}});
    EXPECT_TRUE(waitUntil([&] { return tap.taken().all().empty(); }));
    callShortcuts("unregister", {"terminal", "open"});
    ASSERT_TRUE(waitForOwner(controlAltSpace, ""));
    tap.setInterest({.shortcuts = {taken, free}});
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    EXPECT_TRUE(tap.taken().all().empty());
}

TEST_F(KdeTest, TheDoctorKnowsWhoseAShortcutIs) {
    const QStringList theirs{"terminal", "open", "Terminal", "Open"};
    callShortcuts("doRegister", {theirs});
    callShortcuts("setShortcut", {theirs, QVariant::fromValue(QList<int>{controlAltK}), 6U});
    store({{.sources = {"xkb:us", "xkb:ua"}},
           {.keyCode = 40, .sources = {"xkb:us", "xkb:de"}},
           {.keyCode = 38, .sources = {"xkb:us"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    ChildProcess doctor({.arguments = {DesktopTest::programPath().parent_path() / "quillmere-doctor"},
                         .environment = environment,
                         .output = folder.path() / "page",
                         .inheritedDescriptors = {},
                         .prepare = {}});
    ASSERT_EQ(doctor.waitForExit(60s), 0);
    const std::string page = doctor.output();
    for (const char* text : {"KDE, KWin ", "KDE's global shortcuts, without Fn", "⌃⌥Space: Quillmere\n",
                             "⌃⌥K: Terminal\n", "⌃⌥J: Quillmere\n"})
        EXPECT_NE(page.find(text), std::string::npos) << text << " is not in:\n" << page;
}

TEST_F(KdeTest, WhereAGroupIsOnFnThePermissionIsAskedForAndTheOthersWork) {
    store({{.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua"}}, {.sources = {"xkb:us", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_TRUE(waitUntil([this] { return asksForPermission(); }));
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    typist.type(shortcut);
    EXPECT_TRUE(waitForLayout(2));
}

TEST_F(KdeTest, AGroupOnFnThatIsSwitchedOnLaterAsksForThePermission) {
    settings.set("config",
                 configurationText({{.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua"}}}, false));
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_FALSE(asksForPermission());
    ASSERT_TRUE(tray.click("Active"));
    EXPECT_TRUE(waitUntil([this] { return asksForPermission(); }));
}

TEST_F(KdeTest, AShortcutIsRecordedAsItIsTypedIntoTheSettings) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_NO_FATAL_FAILURE(startRecording());
    ASSERT_TRUE(waitForOwner(controlAltSpace, "")) << "the recorder may be given the present shortcut, too";
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    ASSERT_TRUE(waitForOwner(controlAltK, "quillmere"));
    EXPECT_EQ(kwin.layoutInUse(), 0) << "what is recorded does not switch";
    typist.type("+ctrl +alt +k -k -alt -ctrl");
    EXPECT_TRUE(waitForLayout(1));
}

TEST_F(KdeTest, AShortcutThatTheDesktopHasCanBeRecordedAndIsItsOwnAgainAfterwards) {
    const QStringList theirs{"terminal", "open", "Terminal", "Open"};
    callShortcuts("doRegister", {theirs});
    callShortcuts("setShortcut", {theirs, QVariant::fromValue(QList<int>{controlAltK}), 6U});
    ASSERT_EQ(ownerOf(controlAltK), "terminal");
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_NO_FATAL_FAILURE(startRecording());
    ASSERT_TRUE(waitUntil([this] {
        typist.type("+ctrl +alt +k -k -alt -ctrl");
        return waitUntil([this] { return storedKeyCode() == 40; }, 1s);
    }));
    EXPECT_EQ(ownerOf(controlAltK), "terminal") << "nothing is stolen";
    Witness witness(kwin.xDisplay(), Witness::Size::normal);
    typist.type("+a -a");
    EXPECT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; })) << "the keyboard is everybody's again";
}

TEST_F(KdeTest, ARecordingThatIsGivenUpGivesTheKeyboardBack) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_NO_FATAL_FAILURE(startRecording());
    ASSERT_TRUE(waitForOwner(controlAltSpace, ""));
    typist.type("+escape -escape");
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    EXPECT_EQ(storedKeyCode(), 49);
    EXPECT_TRUE(waitUntil([this] { return hasFocus("Quillmere"); })) << "which goes back to the settings";
    Witness witness(kwin.xDisplay(), Witness::Size::normal);
    typist.type("+a -a");
    EXPECT_TRUE(waitUntil([&] { return witness.presses(keys::a) == 1; }));
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
