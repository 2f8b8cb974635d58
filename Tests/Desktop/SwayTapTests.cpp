#include "Tests/Desktop/SwayTest.h"
#include "Tests/Support/Fcitx.h"
#include "Tests/Support/SwayKeyboard.h"

#include <csignal>
#include <fstream>
#include <optional>

// sway itself as the tap: there is no key-tap service here. The keys are those
// of a keyboard that a program has made: the one of the X server that the
// desktop is shown on takes its layout back with every modifier.
namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

class SwayTapTest : public SwayTest {
protected:
    explicit SwayTapTest(const Sway::Options& options = {.hasXwayland = true}) : SwayTest(options) {}

    int layoutInUse() const { return sway->layoutsInUse(Sway::virtualKeyboard).front(); }
    bool waitForLayoutInUse(int layout) const {
        return waitUntil([&] { return layoutInUse() == layout; });
    }
    void type(const char* movements) { keyboard.type(movements, layoutInUse()); }
    /// Presses a shortcut once; what it does has been done then.
    void press(const char* key) {
        type(("+ctrl +alt +" + std::string(key) + " -" + key).c_str());
        type("-alt -ctrl");
    }
    void pressSpace() { press("space"); }
    /// Whether ⌃⌥ and this key come to be bound: the first layout is in use
    /// before and afterwards.
    bool waitForBinding(const char* key = "space") {
        return waitUntil([&] {
                   press(key);
                   return layoutInUse() != 0;
               })
               && sway->command("input type:keyboard xkb_switch_layout 0");
    }
    /// Whether the shortcut comes to lead from the first layout to this one.
    bool waitForStep(const char* key, int layout) {
        return waitUntil([&] {
            sway->command("input type:keyboard xkb_switch_layout 0");
            press(key);
            return layoutInUse() == layout;
        });
    }
    /// Starts it with one group on ⌃⌥Space, and waits until sway has it.
    void startArmed() {
        store({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
        ASSERT_NO_FATAL_FAILURE(startProgram());
        ASSERT_TRUE(waitForBinding());
    }
    bool asksForPermission() const { return sway->showsTitle("Quillmere needs permission"); }
    /// Whether nothing is bound: an application gets the keys, and the layout
    /// stays.
    testing::AssertionResult isFree(Witness& witness, const char* keyName, Key key) {
        const int before = layoutInUse();
        witness.clear();
        press(keyName);
        if (!waitUntil([&] { return witness.saw(key); })) return testing::AssertionFailure() << "swallowed";
        if (layoutInUse() != before) return testing::AssertionFailure() << "switched";
        return testing::AssertionSuccess();
    }

    SwayKeyboard keyboard{sway->waylandDisplay(), SwayKeyboard::keymap("us,ua,de")};
};

TEST_F(SwayTapTest, AShortcutSwitchesTheDesktopWithNoPermissionAskedAndShowsThePlate) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    for (const int layout : {1, 2, 0, 1}) {
        pressSpace();
        EXPECT_EQ(layoutInUse(), layout);
        EXPECT_TRUE(waitForLayout(layout)) << "on the other keyboard, too";
    }
    EXPECT_EQ(waitForPlate("armed-plate").size(), QSize(244, 192));
    EXPECT_FALSE(asksForPermission());
    EXPECT_TRUE(waitUntilPlateIsGone());
}

TEST_F(SwayTapTest, WhatIsTypedRightAfterTheShortcutIsInTheNewLayout) {
    // No plate is shown for two layouts.
    settings.set("config",
                 configurationText({{.sources = {"xkb:us", "xkb:de"}}}, true, R"({"visibility":"manyOnly"})"));
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForBinding());
    Witness witness(sway->xDisplay(), Witness::Size::normal);
    const auto layout = [](int burst) { return burst % 2 == 0 ? 0 : 2; };
    int wrong = 0;
    int lost = 0;
    for (int burst = 1; burst <= 100; ++burst) {
        witness.clear();
        keyboard.type("+ctrl +alt +space -space +a -a", layout(burst - 1));
        if (!waitUntil([&] { return witness.presses(keys::a) == 1; }, 2s)) ++lost;
        for (const SeenKey& key : witness.keys())
            if (key.isPress && key.key == keys::a && key.group != layout(burst)) ++wrong;
        EXPECT_FALSE(witness.saw(keys::space));
        keyboard.type("-alt -ctrl", layout(burst));
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(lost, 0);
}

TEST_F(SwayTapTest, EveryOneOfTwoPressesInARowSwitches) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    type("+ctrl +alt +space -space +space -space");
    EXPECT_EQ(layoutInUse(), 2);
}

TEST_F(SwayTapTest, AHeldShortcutSwitchesOnce) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    type("+ctrl +alt +space");
    ASSERT_EQ(layoutInUse(), 1);
    // Longer than the desktop waits before it repeats a key.
    EXPECT_TRUE(holdsFor([this] { return layoutInUse() == 1; }, 900ms));
    type("-space -alt -ctrl");
    pressSpace();
    EXPECT_EQ(layoutInUse(), 2);
}

TEST_F(SwayTapTest, LocksThatAreOnAreNotInTheWay) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    type("+caps -caps");
    pressSpace();
    EXPECT_EQ(layoutInUse(), 1);
    type("+num -num");
    pressSpace();
    EXPECT_EQ(layoutInUse(), 2);
}

TEST_F(SwayTapTest, WhileTheScreenIsLockedNothingIsSwitched) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    const QColor paint("#a020f0");
    ChildProcess locker({.arguments = {"swaylock", "--color", paint.name().mid(1).toStdString()},
                         .environment = environment,
                         .output = folder.path() / "locker",
                         .inheritedDescriptors = {},
                         .prepare = {}});
    ASSERT_TRUE(waitUntil([&] { return screen.color(corner) == paint; })) << locker.output();
    pressSpace();
    EXPECT_EQ(layoutInUse(), 0);
    // By which it lets the user in.
    locker.signal(SIGUSR1);
    ASSERT_TRUE(waitUntil([&] { return !locker.isRunning(); }));
    EXPECT_TRUE(waitForStep("space", 1));
}

TEST_F(SwayTapTest, SwitchedOffOrEndedItLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    Witness witness(sway->xDisplay(), Witness::Size::normal);
    ASSERT_TRUE(tray.click("Active"));
    EXPECT_TRUE(waitUntil([&] { return bool(isFree(witness, "space", keys::space)); }));
    ASSERT_TRUE(tray.click("Active"));
    ASSERT_TRUE(waitForBinding());
    ASSERT_TRUE(tray.click("Quit Quillmere"));
    ASSERT_EQ(program->waitForExit(patience), 0);
    EXPECT_TRUE(isFree(witness, "space", keys::space));
}

TEST_F(SwayTapTest, WhatAKilledProgramLeftIsTakenBackByTheNext) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    program->kill();
    ASSERT_TRUE(waitUntil([this] { return !tray.hasItem(); }));
    ASSERT_TRUE(waitForBinding()) << "sway keeps it";
    store({{.keyCode = 40, .sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForBinding("k"));
    Witness witness(sway->xDisplay(), Witness::Size::normal);
    EXPECT_TRUE(isFree(witness, "space", keys::space));
}

TEST_F(SwayTapTest, WhereAGroupIsOnFnThePermissionIsAskedForAndTheOthersWork) {
    store({{.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua"}}, {.sources = {"xkb:us", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_TRUE(waitUntil([this] { return asksForPermission(); }));
    ASSERT_TRUE(waitForBinding());
    pressSpace();
    EXPECT_EQ(layoutInUse(), 2);
}

TEST_F(SwayTapTest, SwayTakesOverWhenTheServiceRefusesAndGivesWayToItAgain) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    service->revoke();
    ASSERT_TRUE(waitForBinding());
    service->grant();
    ASSERT_TRUE(waitUntil([this] { return service->isGrabbed(); }));
    Witness witness(sway->xDisplay(), Witness::Size::normal);
    EXPECT_TRUE(waitUntil([&] { return bool(isFree(witness, "space", keys::space)); })) << "or both would switch";
    pressShortcut();
    EXPECT_TRUE(waitForLayout(1));
}

class SwayOwnBindingTest : public SwayTapTest {
protected:
    SwayOwnBindingTest()
        : SwayTapTest({.hasXwayland = true,
                       .configuration = "set $menu Ctrl+Alt\nbindsym $menu+space exec touch $HOME/menu"}) {}
};

TEST_F(SwayOwnBindingTest, ABindingOfTheUsersOwnStaysTheirsAndTheDoctorKnows) {
    store({{.sources = {"xkb:us", "xkb:ua"}}, {.keyCode = 40, .sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForBinding("k"));
    pressSpace();
    EXPECT_TRUE(waitUntil([this] { return std::filesystem::exists(folder.path() / "sway" / "menu"); }));
    EXPECT_EQ(layoutInUse(), 0);
    ChildProcess doctor({.arguments = {DesktopTest::programPath().parent_path() / "quillmere-doctor"},
                         .environment = environment,
                         .output = folder.path() / "page",
                         .inheritedDescriptors = {},
                         .prepare = {}});
    ASSERT_EQ(doctor.waitForExit(60s), 0);
    const std::string page = doctor.output();
    for (const char* text : {"sway's key bindings, without Fn", "⌃⌥Space: sway's own, by its configuration\n",
                             "⌃⌥K: not in sway's configuration\n"})
        EXPECT_NE(page.find(text), std::string::npos) << text << " is not in:\n" << page;
    EXPECT_TRUE(waitForStep("k", 1)) << "what the program has bound is not the doctor's";
}

/// With fcitx beside sway, which knows nothing of it.
class SwayMethodsTest : public SwayTapTest {
protected:
    SwayMethodsTest() {
        fcitx.emplace(folder.path(), environment, bus.connect(), std::vector<std::string>{"keyboard-us", "hangul"});
        fcitx->openField();
        store({{.sources = {"xkb:us", "xkb:ua", "fcitx:hangul"}}});
    }
    bool waitFor(int layout, const std::string& method) const {
        return waitUntil([&] { return layoutInUse() == layout && fcitx->current() == method; });
    }
    /// Whether a press comes to lead from the first layout to the second.
    bool waitForFirstPress() {
        return waitUntil([this] {
            pressSpace();
            return waitUntil([this] { return layoutInUse() == 1; }, 2s);
        });
    }

    std::optional<Fcitx> fcitx;
};

TEST_F(SwayMethodsTest, AShortcutGoesThroughLayoutsAndMethodsAndThroughTheLayoutsWhereThereAreNone) {
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForFirstPress());
    for (const auto& [layout, method] :
         {std::pair{0, "hangul"}, {0, "keyboard-us"}, {1, "keyboard-us"}, {0, "hangul"}, {0, "keyboard-us"}}) {
        pressSpace();
        EXPECT_TRUE(waitFor(layout, method)) << method << ", but " << fcitx->current();
    }
    fcitx->process().kill();
    ASSERT_TRUE(waitForStep("space", 1)) << "which sway does by itself";
    pressSpace();
    EXPECT_EQ(layoutInUse(), 0);
    fcitx->start();
    fcitx->openField();
    ASSERT_TRUE(waitForFirstPress());
    pressSpace();
    EXPECT_TRUE(waitFor(0, "hangul"));
}

TEST_F(SwayMethodsTest, AShortcutOfLayoutsLeavesAMethod) {
    store({{.sources = {"xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForFirstPress());
    ASSERT_TRUE(waitUntil([this] {
        fcitx->use("hangul");
        return fcitx->current() == "hangul";
    }));
    pressSpace();
    EXPECT_TRUE(waitFor(1, "keyboard-us")) << "the group's first, for a method is none of its sources";
}

class SwayWithoutXwaylandTest : public SwayTapTest {
protected:
    SwayWithoutXwaylandTest() : SwayTapTest(Sway::Options{}) {
        // As where sway was started on a console.
        environment["XDG_SESSION_TYPE"] = "tty";
    }
};

TEST_F(SwayWithoutXwaylandTest, TheSettingsOpenAndThePlateIsShown) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    pressSpace();
    EXPECT_EQ(waitForPlate("wayland-plate").size(), QSize(244, 192));
    EXPECT_TRUE(waitUntilPlateIsGone());
    ASSERT_TRUE(tray.click("Settings…"));
    EXPECT_TRUE(waitUntil([this] { return sway->focusedTitle() == "Quillmere"; }));
    EXPECT_TRUE(waitForPicture("wayland-settings"));
}

TEST_F(SwayWithoutXwaylandTest, AfterAReloadOfItsConfigurationItSwitchesAgain) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    ASSERT_TRUE(sway->command("reload"));
    ASSERT_TRUE(waitForBinding());
    for (const int layout : {1, 2, 0}) {
        pressSpace();
        EXPECT_EQ(layoutInUse(), layout);
    }
}

TEST_F(SwayWithoutXwaylandTest, LayoutsThatComeAndGoAreGoneThroughAtOnce) {
    ASSERT_NO_FATAL_FAILURE(startArmed());
    ASSERT_TRUE(sway->command("input type:keyboard xkb_layout \"us,fr,de\""));
    ASSERT_TRUE(waitForStep("space", 2)) << "French is not in the group";
    pressSpace();
    EXPECT_EQ(layoutInUse(), 0);
    ASSERT_TRUE(sway->command("input type:keyboard xkb_layout \"us,ua\""));
    ASSERT_TRUE(waitForStep("space", 1));
    pressSpace();
    EXPECT_EQ(layoutInUse(), 0);
}

}  // namespace

}  // namespace quillmere::support
