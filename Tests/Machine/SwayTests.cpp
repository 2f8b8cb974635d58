#include "Tests/Machine/GraphicalSession.h"
#include "Tests/Machine/MachineTest.h"
#include "Tests/Machine/PasswordDialog.h"
#include "Tests/Machine/Service.h"
#include "Tests/Machine/TapOwner.h"
#include "Tests/Support/ConfigurationText.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <regex>

// The application on a Wayland desktop, where the tap service is the only way.
namespace quillmere::machine {

namespace {

using support::ChildProcess;

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class Sway : public MachineTest {
protected:
    void SetUp() override {
        Service::revoke(writer);
        graphical_.emplace(session());
        const support::Environment desktop{
            {"XDG_SESSION_TYPE", "wayland"},  {"XDG_CURRENT_DESKTOP", "sway"},
            {"LIBSEAT_BACKEND", "logind"},    {"WLR_RENDERER", "pixman"},
            {"WLR_NO_HARDWARE_CURSORS", "1"}, {"SWAYSOCK", graphical_->folder() / "sway"},
        };
        for (const auto& [name, value] : desktop)
            graphical_->environment()[name] = value;
        const std::filesystem::path configuration = graphical_->folder() / "sway.conf";
        std::ofstream(configuration) << "input type:keyboard xkb_layout us,ua\n"
                                     << "exec foot sh -c 'stty -echo -icanon; exec cat > " << typed().string() << "'\n"
                                     << "exec env > " << started().string() << "\n";
        compositor_.emplace(graphical_->program("sway", {"sway", "--config", configuration}));
        ASSERT_TRUE(waitUntil([this] { return std::filesystem::exists(typed()) && showsTitle("foot"); }))
            << compositor_->output();
        takeEnvironment();
        ASSERT_TRUE(types(taps({KEY_SPACE}), " "));
    }

    void TearDown() override {
        compositor_.reset();
        graphical_.reset();
        MachineTest::TearDown();
    }

    GraphicalSession& graphical() { return *graphical_; }
    ChildProcess& compositor() { return *compositor_; }
    ChildProcess& quillmere() { return graphical_->quillmere(); }

    /// The application listens to `group` from its start on. It shows no plate
    /// for two layouts: to draw the first one here, without a graphics card,
    /// takes it longer than a key waits.
    void startQuillmere(const support::StoredGroup& group) {
        Service::grant(writer);
        graphical_->settings().set("config", support::configurationText({group}, true, R"({"visibility":"manyOnly"})"));
        graphical_->startQuillmere();
    }

    /// Whether a window with this title is on the desktop.
    bool showsTitle(const std::string& title) {
        return ask("get_tree").find("\"name\": \"" + title) != std::string::npos;
    }

    /// Waits until all keyboards type in the layout with this index.
    testing::AssertionResult switchesTo(int layout, std::chrono::milliseconds deadline = patience) {
        const std::regex index(R"("xkb_active_layout_index": (\d+))");
        const bool hasSwitched = waitUntil(
            [&] {
                const std::string inputs = ask("get_inputs");
                const std::sregex_iterator first(inputs.begin(), inputs.end(), index);
                return first != std::sregex_iterator() && std::all_of(first, {}, [&](const std::smatch& match) {
                           return match.str(1) == std::to_string(layout);
                       });
            },
            deadline);
        if (hasSwitched) return testing::AssertionSuccess();
        return testing::AssertionFailure() << desk_.describe() << ask("get_inputs") << graphical_->quillmere().output();
    }

    /// Types with these keys, and waits until the terminal has got this text
    /// and nothing else.
    testing::AssertionResult types(const std::vector<KeyStroke>& strokes, const std::string& text) {
        const std::string before = terminal();
        monitor().type(strokes);
        return terminalGets(before, text);
    }

    /// Whether the compositor comes to hear the keyboard at all: on a busy machine
    /// it takes up a clone late.
    bool isHeard() {
        return waitUntil([&] {
            const std::size_t before = terminal().size();
            monitor().type(taps({KEY_SPACE}));
            return waitUntil([&] { return terminal().size() > before; }, moment);
        });
    }

    /// All that the terminal has got so far.
    std::string terminal() const { return contents(typed()); }

    /// Waits until the terminal has got this text, and nothing else, since it
    /// had got `before`.
    testing::AssertionResult terminalGets(const std::string& before, const std::string& text) {
        const bool isComplete = waitUntil([&] { return terminal().size() >= before.size() + text.size(); });
        if (isComplete && terminal() == before + text) return testing::AssertionSuccess();
        monitor().screenshot("sway-failed");
        return testing::AssertionFailure() << "typed: " << terminal().substr(before.size()) << '\n' << desk_.describe();
    }

private:
    std::filesystem::path typed() const { return graphical_->folder() / "typed"; }
    std::filesystem::path started() const { return graphical_->folder() / "started"; }

    /// The compositor picks its displays itself, and tells those that it starts.
    void takeEnvironment() {
        ASSERT_TRUE(waitUntil([this] { return contents(started()).find("\nDISPLAY=") != std::string::npos; }));
        std::ifstream stream(started());
        for (std::string line; std::getline(stream, line);)
            for (const std::string name : {"WAYLAND_DISPLAY", "DISPLAY"})
                if (line.starts_with(name + "=")) graphical_->environment()[name] = line.substr(name.size() + 1);
    }

    /// What the compositor says to a request of swaymsg.
    std::string ask(const std::string& request) {
        const std::filesystem::path file = graphical_->folder() / "answer";
        std::filesystem::remove(file);
        ChildProcess::Options options = graphical_->program("swaymsg", {"swaymsg", "-r", "-t", request});
        options.output = file;
        ChildProcess::run(options);
        return contents(file);
    }

    std::optional<GraphicalSession> graphical_;
    std::optional<ChildProcess> compositor_;
};

/// In a light and in a dark desktop.
class SwayAppearance : public Sway, public testing::WithParamInterface<const char*> {};

const std::vector<std::string> layouts{"xkb:us", "xkb:ua"};
const std::vector<KeyStroke> shortcut = chord({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE});
const std::vector<KeyStroke> letters = taps({KEY_A, KEY_S, KEY_Z});

}  // namespace

TEST_P(SwayAppearance, ThePermissionWindowGetsTheGrantThroughTheSystemsOwnDialog) {
    const std::string scheme = GetParam();
    ChildProcess portal(graphical().program("portal", {programPath("settings_portal"), scheme}));
    ASSERT_TRUE(waitUntil([&] { return !portal.output().empty(); }));
    // Not for the first time, when the settings come as well.
    graphical().settings().set("config",
                               support::configurationText({{.keyCode = 63, .modifiers = 0, .sources = layouts}}));
    graphical().startQuillmere();
    ASSERT_TRUE(waitUntil([this] { return showsTitle("Quillmere needs permission"); })) << quillmere().output();
    monitor().screenshot("permission-needed-" + scheme);

    PasswordDialog dialog(session(), quillmere().pid());
    // To the window's first button, and presses it.
    monitor().type(taps({KEY_TAB, KEY_SPACE}));
    dialog.enter("root-secret");
    EXPECT_TRUE(waitUntil([] { return Service::isGranted(writer); })) << dialog.shown();
    const auto granted = std::chrono::steady_clock::now();
    EXPECT_TRUE(waitUntil([this] { return showsTitle("Quillmere is ready"); })) << quillmere().output();
    const auto ready = std::chrono::steady_clock::now();
    monitor().screenshot("permission-granted-" + scheme);
    EXPECT_TRUE(waitUntil([this] { return !showsTitle("Quillmere is ready"); }));
    const auto gone = std::chrono::steady_clock::now();

    const auto milliseconds = [](auto time) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    };
    std::cout << "Ready " << milliseconds(ready - granted) << " ms after the grant, for " << milliseconds(gone - ready)
              << " ms." << std::endl;
    // About a second, and what an emulated computer adds.
    EXPECT_LT(ready - granted, std::chrono::milliseconds(3500));
    EXPECT_GT(gone - ready, std::chrono::milliseconds(2000));
    EXPECT_TRUE(quillmere().isRunning());
}

INSTANTIATE_TEST_SUITE_P(Schemes, SwayAppearance, testing::Values("light", "dark"),
                         [](const auto& info) { return std::string(info.param); });

TEST_F(Sway, AShortcutSwitchesTheLayoutThatAnApplicationTypesIn) {
    startQuillmere({.sources = layouts});
    ASSERT_TRUE(becomesGrabbed());
    EXPECT_TRUE(types(letters, "asz"));
    // What the application does for the first time may take it longer here than
    // a key waits; it passes then, and nothing switches.
    ASSERT_TRUE(waitUntil([&] {
        monitor().type(shortcut);
        return switchesTo(1, 4 * moment);
    }));
    // Without a pause in between.
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(types(shortcut + letters, "asz"));
        ASSERT_TRUE(types(shortcut + letters, "фія"));
    }
    monitor().screenshot("sway");
}

TEST_F(Sway, AGrabbedKeyboardGoesOnInTheLayoutInUse) {
    ChildProcess::run(graphical().program("command", {"swaymsg", "input type:keyboard xkb_switch_layout 1"}));
    ASSERT_TRUE(types(letters, "фія"));
    startQuillmere({.sources = layouts});
    ASSERT_TRUE(becomesGrabbed());
    EXPECT_TRUE(types(letters, "фія"));
    // A keyboard that presses a modifier takes its own layout to all others.
    EXPECT_TRUE(types(chord({KEY_LEFTCTRL, KEY_LEFTALT}) + letters, "фія"));
    EXPECT_TRUE(types(shortcut + letters, "asz"));
    EXPECT_TRUE(types(shortcut + letters, "фія"));
    quillmere().kill();
    ASSERT_TRUE(becomesFree());
    EXPECT_TRUE(types(letters, "фія"));
}

TEST_F(Sway, AGrabbedKeyboardGoesOnWithCapsLockOn) {
    monitor().type(taps({KEY_CAPSLOCK}));
    ASSERT_TRUE(types(letters, "ASZ"));
    startQuillmere({.sources = layouts});
    ASSERT_TRUE(becomesGrabbed());
    EXPECT_TRUE(types(letters, "ASZ"));
    // A keyboard that presses a modifier takes its own locks to all others.
    EXPECT_TRUE(types(chord({KEY_LEFTCTRL, KEY_LEFTALT}) + letters, "ASZ"));
    EXPECT_TRUE(types(chord({KEY_LEFTSHIFT, KEY_A}) + letters, "aASZ"));
    monitor().type(taps({KEY_CAPSLOCK}));
    EXPECT_TRUE(types(letters, "asz"));
    EXPECT_TRUE(types(chord({KEY_LEFTCTRL, KEY_LEFTALT}) + letters, "asz"));
}

TEST_F(Sway, ACompositorThatStallsWhileACloneAppearsLosesNoKey) {
    // It alone shall read the clone.
    desk_.leaveNewDevices();
    Service::grant(writer);
    TapOwner owner(session());
    ASSERT_EQ(owner.open(), "");
    owner.answer(TapOwner::Answer::swallow);
    compositor().signal(SIGSTOP);
    // Types nothing in the terminal.
    owner.send(tap::Interest{.shortcuts = {{KEY_SCROLLLOCK, tap::Flags::control}}});
    // Longer than logind needs to look for a power button. The kernel keeps
    // some twenty strokes for who does not read.
    const std::string before = terminal();
    std::string text;
    for (int i = 0; i < 3; ++i) {
        monitor().type(letters);
        text += "asz";
        holdsFor([] { return true; }, std::chrono::milliseconds(800));
    }
    compositor().signal(SIGCONT);
    EXPECT_TRUE(terminalGets(before, text));
    // It does take the clone up then.
    EXPECT_TRUE(waitUntil([&] {
        owner.clear();
        monitor().type(chord({KEY_LEFTCTRL, KEY_SCROLLLOCK}));
        return waitUntil([&] { return owner.question() != 0; }, moment);
    }));
    desk_.clear();
    EXPECT_TRUE(types(letters, "asz"));
    owner.close();
    EXPECT_TRUE(waitUntil([&] {
        monitor().type(taps({KEY_F12}));
        return waitUntil([&] { return !desk_.strokes().empty(); }, moment);
    })) << desk_.describe();
}

TEST_F(Sway, ACompositorThatIsStoppedAndContinuedLosesNoKey) {
    startQuillmere({.sources = layouts});
    ASSERT_TRUE(becomesGrabbed());
    ASSERT_TRUE(types(letters, "asz"));
    const std::string before = terminal();
    desk_.clear();
    compositor().signal(SIGSTOP);
    EXPECT_TRUE(arrives(letters + letters));
    compositor().signal(SIGCONT);
    EXPECT_TRUE(terminalGets(before, "aszasz"));
    EXPECT_TRUE(types(letters, "asz"));
}

TEST_F(Sway, AnApplicationThatIsStoppedHoldsNothingUpAndGoesOnWhenItIsContinued) {
    startQuillmere({.sources = layouts});
    ASSERT_TRUE(becomesGrabbed());
    ASSERT_TRUE(isHeard());
    ASSERT_TRUE(types(letters, "asz"));
    quillmere().signal(SIGSTOP);
    const std::string before = terminal();
    monitor().type(shortcut + letters);
    // The terminal makes something of the shortcut, which passes unanswered.
    EXPECT_TRUE(waitUntil([&] {
        const std::string now = terminal();
        return now.size() > before.size() + 3 && now.ends_with("asz");
    })) << desk_.describe();
    EXPECT_TRUE(waitUntil([this] { return desk_.keysDown().empty(); })) << desk_.describe();
    EXPECT_TRUE(becomesFree());
    quillmere().signal(SIGCONT);
    ASSERT_TRUE(becomesGrabbed());
    ASSERT_TRUE(waitUntil([&] {
        monitor().type(shortcut);
        return switchesTo(1, 4 * moment);
    }));
    EXPECT_TRUE(types(letters, "фія"));
}

TEST_F(Sway, AnApplicationThatIsKilledWithItsShortcutHeldLeavesNoKeyDown) {
    startQuillmere({.sources = layouts});
    ASSERT_TRUE(becomesGrabbed());
    ASSERT_TRUE(isHeard());
    ASSERT_TRUE(types(letters, "asz"));
    monitor().type({shortcut.begin(), shortcut.begin() + 3});
    quillmere().kill();
    monitor().type(letters);
    monitor().type({shortcut.begin() + 3, shortcut.end()});
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(waitUntil([this] { return desk_.keysDown().empty(); })) << desk_.describe();
    desk_.clear();
    EXPECT_TRUE(arrives(letters));
}

TEST_F(Sway, FnAloneSwitchesTheLayoutAndGrabsNothing) {
    VirtualKeyboard keyboard({.name = "Fn keyboard", .moreKeys = {KEY_FN}});
    startQuillmere({.keyCode = 63, .modifiers = 0, .sources = layouts});
    const auto tapFn = [&] { keyboard.type(taps({KEY_FN})); };
    ASSERT_TRUE(waitUntil([&] {
        tapFn();
        return switchesTo(1, moment);
    }));
    EXPECT_TRUE(types(letters, "фія"));
    tapFn();
    EXPECT_TRUE(switchesTo(0));
    EXPECT_TRUE(types(letters, "asz"));
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(desk_.clones().empty());
}

}  // namespace quillmere::machine
