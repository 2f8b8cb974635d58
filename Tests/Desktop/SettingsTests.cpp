#include "Tests/Desktop/SettingsTest.h"

#include <chrono>
#include <fstream>
#include <sstream>

namespace quillmere::support {

namespace {

constexpr Key backspace = 14 + 8;

const std::string noGroups = configurationText({});

std::string recorderName(int group, const std::string& title) {
    return "Shortcut of group " + std::to_string(group) + ": " + title;
}

class SettingsDesktopTest : public SettingsTest {
protected:
    /// One group on ⌃⌥Space with us, ua, de, and one without a shortcut.
    void openSettingsOverTwoGroups() {
        openSettingsOver(R"({"active":true,"groups":[)"
                         R"({"id":"00000000-0000-4000-8000-000000000001","shortcut":{"keyCode":49,"modifiers":12},)"
                         R"("sourceIDs":["xkb:us","xkb:ua","xkb:de"]},)"
                         R"({"id":"00000000-0000-4000-8000-000000000002","sourceIDs":["xkb:us","xkb:de"]}],)"
                         R"("plate":{"visibility":"always"}})");
    }
};

TEST_F(SettingsDesktopTest, AGroupBuiltFromNothingSwitchesAtOnceAndAfterARestart) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOver(noGroups));
    ASSERT_NO_FATAL_FAILURE(click("Add group"));
    ASSERT_NO_FATAL_FAILURE(addSource(1, 0));
    ASSERT_TRUE(waitFor("English (US)"));
    ASSERT_NO_FATAL_FAILURE(addSource(1, 0));
    ASSERT_TRUE(waitFor("Ukrainian"));
    ASSERT_NO_FATAL_FAILURE(startRecording(1, "Set shortcut"));
    typist().chord(controlAlt, keys::k);
    ASSERT_TRUE(waitFor(recorderName(1, "Ctrl+Alt+K")));
    EXPECT_TRUE(waitForStored(R"("shortcut":{"keyCode":40,"modifiers":12})"));
    EXPECT_TRUE(waitForStored(R"("sourceIDs":["xkb:us","xkb:ua"])"));

    ASSERT_TRUE(program().waitForGrab(keys::k, controlAltBits));
    typist().chord(controlAlt, keys::k);
    EXPECT_TRUE(waitForGroup(1));
    typist().chord(controlAlt, keys::k);
    EXPECT_TRUE(waitForGroup(0));

    ASSERT_NO_FATAL_FAILURE(restartProgram());
    ASSERT_TRUE(program().waitForGrab(keys::k, controlAltBits));
    typist().chord(controlAlt, keys::k);
    EXPECT_TRUE(waitForGroup(1));
    ASSERT_NO_FATAL_FAILURE(openSettings());
    EXPECT_TRUE(waitFor(recorderName(1, "Ctrl+Alt+K")));
    EXPECT_TRUE(waitFor("Move Ukrainian up"));
}

TEST_F(SettingsDesktopTest, WhileRecordingKeysGoNowhereElse) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    focusWitness();
    typist().tap(keys::a);
    EXPECT_TRUE(waitFor("Add ⌘, ⌥ or ⌃, or press Fn alone"));
    pressShortcut();
    EXPECT_TRUE(waitFor("Already used by another group"));
    typist().tap(keys::escape);
    ASSERT_TRUE(waitFor(recorderName(2, "Set shortcut")));
    waitForEverythingTyped();
    EXPECT_FALSE(witness().saw(keys::a));
    EXPECT_FALSE(witness().saw(keys::space));
    EXPECT_FALSE(witness().saw(keys::escape));
    EXPECT_EQ(desktop().server().group(), 0) << "a shortcut switched while it was being recorded";
}

TEST_F(SettingsDesktopTest, ARejectedKeyIsAnnouncedAndTheNextOneMayStillDo) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    accessibility().forgetShown();
    typist().chord(std::array{keys::leftShift}, keys::a);
    ASSERT_TRUE(waitFor("Add ⌘, ⌥ or ⌃, or press Fn alone"));
    const auto message = accessibility().find("Add ⌘, ⌥ or ⌃, or press Fn alone");
    EXPECT_EQ(message->role, atspi::role::alert);
    EXPECT_TRUE(waitUntil([&] { return std::ranges::count(accessibility().shown(), message->path) > 0; }))
        << "the alert does not announce itself";
    keepPicture("recording-invalid");
    typist().chord(std::array{keys::leftSuper}, keys::a);
    EXPECT_TRUE(waitFor(recorderName(2, "Super+A")));
}

TEST_F(SettingsDesktopTest, FnAloneIsRecorded) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    typist().tap(keys::fn);
    ASSERT_TRUE(waitFor(recorderName(2, "Fn")));
    EXPECT_TRUE(waitForStored(R"("shortcut":{"keyCode":63,"modifiers":0})"));
    typist().tap(keys::fn);
    EXPECT_TRUE(waitForGroup(2));
}

TEST_F(SettingsDesktopTest, DeleteRemovesTheShortcutAndEscapeLeavesIt) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(1, "Ctrl+Alt+Space"));
    typist().tap(keys::escape);
    ASSERT_TRUE(waitFor(recorderName(1, "Ctrl+Alt+Space")));
    EXPECT_TRUE(settingsWindow()) << "Escape closed the window";
    ASSERT_NO_FATAL_FAILURE(startRecording(1, "Ctrl+Alt+Space"));
    typist().tap(backspace);
    ASSERT_TRUE(waitFor(recorderName(1, "Set shortcut")));
    EXPECT_TRUE(waitUntil([&] { return !program().holdsGrab(keys::space, controlAltBits); }));
    EXPECT_EQ(storedConfiguration().find("shortcut"), std::string::npos);
}

TEST_F(SettingsDesktopTest, AnotherRecorderTakesOver) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(1, "Ctrl+Alt+Space"));
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    EXPECT_TRUE(accessibility().find(recorderName(1, "Ctrl+Alt+Space")));
    typist().chord(controlAlt, keys::k);
    EXPECT_TRUE(waitFor(recorderName(2, "Ctrl+Alt+K")));
    EXPECT_TRUE(accessibility().find(recorderName(1, "Ctrl+Alt+Space")));
}

TEST_F(SettingsDesktopTest, AfterTheGroupIsRemovedTheNextKeyPasses) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    ASSERT_NO_FATAL_FAILURE(click("Delete group 2"));
    ASSERT_TRUE(waitForNone("Delete group 2"));
    focusWitness();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::x), 1U);
}

TEST_F(SettingsDesktopTest, AfterTheWindowIsClosedTheNextKeyPassesAndTheShortcutSwitches) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    ASSERT_NO_FATAL_FAILURE(closeSettings());
    focusWitness();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::x), 1U);
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

TEST_F(SettingsDesktopTest, AfterAChangeOfTheTabTheNextKeyPasses) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Set shortcut"));
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_TRUE(waitFor("Preview"));
    focusWitness();
    waitForEverythingTyped();
    EXPECT_EQ(witness().presses(keys::x), 1U);
}

TEST_F(SettingsDesktopTest, TogglingReorderingAndRemovingActAtOnceAndLast) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(click("Move German up"));
    ASSERT_TRUE(waitForStored(R"(["xkb:us","xkb:de","xkb:ua"])"));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    ASSERT_NO_FATAL_FAILURE(click("Remove Ukrainian"));
    ASSERT_TRUE(waitForStored(R"("sourceIDs":["xkb:us","xkb:de"]},)"));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(0));
    ASSERT_NO_FATAL_FAILURE(click("Delete group 2"));
    ASSERT_TRUE(waitForNone("Delete group 2"));
    ASSERT_NO_FATAL_FAILURE(click("Active"));
    ASSERT_TRUE(waitForStored(R"("active":false)"));
    EXPECT_FALSE(program().holdsGrab(keys::space, controlAltBits));

    ASSERT_NO_FATAL_FAILURE(restartProgram());
    ASSERT_NO_FATAL_FAILURE(openSettings());
    ASSERT_TRUE(waitFor("Active"));
    EXPECT_FALSE(accessibility().find("Active")->has(atspi::state::checked));
    EXPECT_TRUE(accessibility().find("Move German up"));
    EXPECT_FALSE(accessibility().find("Ukrainian"));
    EXPECT_FALSE(accessibility().find("Delete group 2"));
}

// Each step of the drag is stored, and the shortcut must not queue up behind
// the steps: it is pressed in their midst, with as many still to come.
TEST_F(SettingsDesktopTest, ASwitchDuringADragOfTheSliderDoesNotWaitForItsEnd) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_NO_FATAL_FAILURE(pointAt("Background opacity"));
    const auto slider = accessibility().find("Background opacity");
    const QRect frame = slider->frame;
    typist().movePointer(QPoint(frame.right() - 8, frame.center().y()));
    typist().pressButton();
    const auto drag = [&](int from, int to) {
        for (int step = from; step < to; ++step) {
            const int x = frame.right() - 8 - step * (frame.width() - 16) / 200;
            typist().movePointer(QPoint(x, frame.center().y()));
        }
    };
    drag(0, 100);
    const auto before = std::chrono::steady_clock::now();
    pressShortcut();
    ASSERT_TRUE(waitForGroup(1));
    const auto delay = std::chrono::steady_clock::now() - before;
    RecordProperty("switchDuringDragMicroseconds",
                   static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(delay).count()));
    drag(100, 200);
    pressShortcut();
    ASSERT_TRUE(waitForGroup(2));
    typist().releaseButton();
    ASSERT_TRUE(waitFor("0 %"));
    EXPECT_EQ(accessibility().value(*slider), 0);
    EXPECT_TRUE(waitForStored(R"("opacity":0E0)") || waitForStored(R"("opacity":0)"));
}

TEST_F(SettingsDesktopTest, AnOpacitySetWithTheMouseIsFoundAgainAfterARestart) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_TRUE(waitFor("80 %"));
    ASSERT_NO_FATAL_FAILURE(click("Background opacity"));
    ASSERT_TRUE(waitForNone("80 %"));
    const auto set = accessibility().value(*accessibility().find("Background opacity"));
    EXPECT_NEAR(set, 50, 3);
    ASSERT_NO_FATAL_FAILURE(restartProgram());
    ASSERT_NO_FATAL_FAILURE(openSettings());
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_TRUE(waitFor("Background opacity"));
    EXPECT_DOUBLE_EQ(accessibility().value(*accessibility().find("Background opacity")), set);
}

TEST_F(SettingsDesktopTest, ThePreviewShowsThePlate) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_NO_FATAL_FAILURE(click("Preview"));
    EXPECT_TRUE(program().waitForPlate());
}

TEST_F(SettingsDesktopTest, LaunchAtLoginMakesAndRemovesTheAutostartEntry) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    const std::filesystem::path entry = desktop().configHome() / "autostart" / "quillmere.desktop";
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_NO_FATAL_FAILURE(click("Launch at login"));
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(entry); }));
    std::stringstream text;
    text << std::ifstream(entry).rdbuf();
    EXPECT_NE(text.str().find("Exec=" + std::filesystem::canonical(programPath()).string() + "\n"), std::string::npos)
        << text.str();
    const auto isOn = [&] { return accessibility().find("Launch at login")->has(atspi::state::checked); };
    EXPECT_TRUE(waitUntil(isOn));
    std::filesystem::remove(entry);
    ASSERT_NO_FATAL_FAILURE(openSettings());
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_TRUE(waitFor("Launch at login"));
    EXPECT_FALSE(isOn()) << "the entry was removed by hand";
}

TEST_F(SettingsDesktopTest, ARefusedLaunchAtLoginSnapsBack) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    std::filesystem::create_directories(desktop().configHome());
    std::ofstream(desktop().configHome() / "autostart") << "a file where the folder should be";
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_NO_FATAL_FAILURE(click("Launch at login"));
    ASSERT_NO_FATAL_FAILURE(click("Glass"));
    ASSERT_TRUE(waitForStored(R"("background":"glass")"));
    EXPECT_FALSE(accessibility().find("Launch at login")->has(atspi::state::checked));
}

TEST_F(SettingsDesktopTest, EverythingIsReachedAndOperatedWithTheKeyboard) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    const auto waitForFocus = [&](const std::string& name) {
        return waitUntil([&] {
            const auto object = accessibility().find(name);
            return object && object->has(atspi::state::focused);
        });
    };
    for (const char* const name :
         {"Layouts", "General", "Active", "Shortcut of group 1: Ctrl+Alt+Space", "Delete group 1",
          "Move English (US) down", "Remove English (US)", "Move Ukrainian up"}) {
        typist().tap(keys::tab);
        ASSERT_TRUE(waitForFocus(name)) << name;
    }
    keepPicture("focus");
    typist().tap(keys::space);
    ASSERT_TRUE(waitForStored(R"(["xkb:ua","xkb:us","xkb:de"])"));
    EXPECT_TRUE(waitForFocus("Move Ukrainian down"));
}

TEST_F(SettingsDesktopTest, AScreenReaderIsToldRolesAndNames) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_TRUE(waitFor("Add group"));
    using Names = std::vector<std::string>;
    EXPECT_EQ(accessibility().names(atspi::role::checkBox), Names({"Active"}));
    const Names buttons = accessibility().names(atspi::role::pushButton);
    for (const char* const name : {"Layouts", "General", "Shortcut of group 1: Ctrl+Alt+Space", "Delete group 1",
                                   "Move German up", "Remove Ukrainian", "Shortcut of group 2: Set shortcut"})
        EXPECT_NE(std::ranges::find(buttons, name), buttons.end()) << name;
    EXPECT_EQ(std::ranges::count(buttons, ""), 0) << "a button without a name";
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_TRUE(waitFor("Preview"));
    EXPECT_EQ(accessibility().names(atspi::role::radioButton), Names({"Solid", "Glass"}));
    EXPECT_EQ(accessibility().names(atspi::role::slider), Names({"Background opacity"}));
    EXPECT_EQ(accessibility().names(atspi::role::comboBox), Names({"Always"}));
    EXPECT_EQ(accessibility().label(*accessibility().find("Always")), "Show the plate");
    EXPECT_TRUE(accessibility().find("Solid")->has(atspi::state::checked));
}

TEST_F(SettingsDesktopTest, TheWindowCanBeClosedAndResizedButNotMinimisedNorMadeTooSmall) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    XConnection& connection = desktop().connection();
    const unsigned long window = settingsWindow()->id;
    // Motif's hints, which window managers may ignore: flags, functions, decorations
    constexpr unsigned long resize = 1U << 1;
    constexpr unsigned long minimise = 1U << 3;
    constexpr unsigned long close = 1U << 5;
    const auto asked = connection.numbers(window, "_MOTIF_WM_HINTS", 5);
    ASSERT_GE(asked.size(), 3U);
    EXPECT_EQ(asked[0] & 3U, 3U) << "functions and decorations are both stated";
    EXPECT_EQ(asked[1] & (resize | minimise | close), resize | close);
    EXPECT_EQ(asked[2] & (1U << 5), 0U) << "a button to minimise";
    // XSizeHints: flags, then the obsolete place and size, then the smallest size
    const auto hints = connection.numbers(window, "WM_NORMAL_HINTS", 18);
    ASSERT_GE(hints.size(), 7U);
    EXPECT_EQ(QSize(static_cast<int>(hints[5]), static_cast<int>(hints[6])), QSize(460, 520));
}

TEST_F(SettingsDesktopTest, TheWindowFollowsDarkAndLightWhileOpen) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    const auto background = [&] { return desktop().screen().color(settingsWindow()->frame.topLeft() + QPoint(5, 5)); };
    EXPECT_TRUE(waitUntil([&] { return background() == QColor(255, 255, 255); }));
    desktop().portal()->setScheme(SettingsPortal::Scheme::dark);
    EXPECT_TRUE(waitUntil([&] { return background() == QColor(27, 29, 34); }));
}

/// The memory that the program has written to, in KiB. Not its share of the
/// libraries: that grows when another program that uses them ends.
long anonymousMemory(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("RssAnon:")) return std::stol(line.substr(8));
    return 0;
}

TEST_F(SettingsDesktopTest, FiftyOpeningsLeaveNoMoreMemoryBehindThanOne) {
    ASSERT_NO_FATAL_FAILURE(openSettingsOverTwoGroups());
    ASSERT_NO_FATAL_FAILURE(closeSettings());
    const long once = anonymousMemory(program().process().pid());
    for (int i = 0; i < 50; ++i) {
        ASSERT_NO_FATAL_FAILURE(openSettings());
        ASSERT_NO_FATAL_FAILURE(closeSettings());
    }
    const long often = anonymousMemory(program().process().pid());
    RecordProperty("kibibytesAfterOne", static_cast<int>(once));
    RecordProperty("kibibytesAfterFifty", static_cast<int>(often));
    EXPECT_LE(often, once + once / 10);
}

}  // namespace

}  // namespace quillmere::support
