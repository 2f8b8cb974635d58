#include "Tests/Machine/GraphicalSession.h"
#include "Tests/Machine/MachineTest.h"
#include "Tests/Machine/Service.h"
#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WindowManager.h"
#include "Tests/Support/Witness.h"

#include <fstream>
#include <functional>
#include <memory>
#include <sstream>

// The application on an X11 desktop of the real server, with the tap service.
namespace quillmere::machine {

namespace {

using support::ChildProcess;

constexpr const char* display = ":0";

/// Without a word on layouts: new keyboards get the server's own, "us", and
/// whoever wants others sets them with setxkbmap.
constexpr const char* serverConfiguration = R"(
Section "Device"
    Identifier "screen"
    Driver "modesetting"
    Option "AccelMethod" "none"
EndSection
Section "InputClass"
    Identifier "keyboards"
    MatchIsKeyboard "on"
    Driver "libinput"
EndSection
)";

class Xorg : public MachineTest {
protected:
    void SetUp() override {
        Service::grant(writer);
        graphical_.emplace(session());
        const std::filesystem::path configuration = graphical_->folder() / "xorg.conf";
        std::ofstream(configuration) << serverConfiguration;
        // As display managers start it: not in the session, but on its terminal.
        server_.emplace(ChildProcess::Options{
            .arguments = {"Xorg", display, "vt1", "-novtswitch", "-noreset", "-ac", "-nolisten", "tcp", "-extension",
                          "GLX", "-config", configuration, "-logfile", log()},
            .environment = support::baseEnvironment("/"),
            .output = std::filesystem::current_path() / "xorg.txt",
            .inheritedDescriptors = {},
            .prepare = {}});
        graphical_->environment()["DISPLAY"] = display;
        graphical_->environment()["XDG_SESSION_TYPE"] = "x11";
        ASSERT_TRUE(waitUntil([this] { return connect(); })) << server_->output();
        ASSERT_EQ(ChildProcess::run(graphical_->program("setxkbmap", {"setxkbmap", "us,ua,de"})), 0);
        manager_.emplace(graphical_->folder(), graphical_->environment(), *connection_);
        witness_ = std::make_unique<support::Witness>(display, support::Witness::Size::normal);
    }

    void TearDown() override {
        witness_.reset();
        manager_.reset();
        connection_.reset();
        server_.reset();
        graphical_.reset();
        MachineTest::TearDown();
    }

    /// It shows no plate for two layouts: to draw one here, without a graphics
    /// card, takes it longer than a key waits.
    void startQuillmere(const std::vector<support::StoredGroup>& groups) {
        graphical_->settings().set("config", support::configurationText(groups, true, R"({"visibility":"manyOnly"})"));
        graphical_->startQuillmere();
    }

    /// Waits until typing this switches to the layout with this index.
    testing::AssertionResult switches(const std::function<void()>& type, int layout) {
        witness_->clear();
        type();
        if (waitUntil([&] { return witness_->groups() == std::vector{layout}; })) return testing::AssertionSuccess();
        return testing::AssertionFailure() << witness_->groups().size() << " switches\n"
                                           << desk_.describe() << graphical_->quillmere().output();
    }

    /// Types the shortcut until this layout is the one in use: what the
    /// application does for the first time may take it too long.
    bool comesTo(int layout) {
        return waitUntil([&] {
            witness_->clear();
            shortcut();
            return waitUntil([&] { return witness_->groups() == std::vector{layout}; }, moment);
        });
    }

    testing::AssertionResult types(const std::string& text) {
        witness_->clear();
        monitor().type(taps({KEY_A, KEY_S, KEY_Z}));
        if (waitUntil([&] { return witness_->text() == text; })) return testing::AssertionSuccess();
        return testing::AssertionFailure() << "typed: " << witness_->text();
    }

    /// The layouts as setxkbmap says them.
    std::string layoutsSet() {
        ChildProcess::Options options = graphical_->program("setxkbmap", {"setxkbmap", "-query"});
        options.output = graphical_->folder() / "query";
        EXPECT_EQ(ChildProcess::run(options), 0);
        std::ifstream stream(options.output);
        std::string word;
        while (stream >> word && word != "layout:") {
        }
        stream >> word;
        return word;
    }

    /// Whether the server has taken up a keyboard that was plugged in.
    testing::AssertionResult serverKnows(const std::string& keyboard) {
        std::stringstream text;
        const auto isThere = [&] {
            text.str({});
            text << std::ifstream(log()).rdbuf();
            return text.str().find("Adding extended input device \"" + keyboard) != std::string::npos;
        };
        if (waitUntil(isThere)) return testing::AssertionSuccess();
        return testing::AssertionFailure() << text.str();
    }

    support::Witness& witness() { return *witness_; }

    /// What `switches` is to type, most of the time.
    const std::function<void()> shortcut = [] { monitor().type(chord({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE})); };

private:
    std::filesystem::path log() const { return graphical_->folder() / "Xorg.log"; }

    bool connect() {
        try {
            connection_ = std::make_unique<support::XConnection>(display);
        } catch (const support::SupportError&) {
            return false;
        }
        return true;
    }

    std::optional<GraphicalSession> graphical_;
    std::optional<ChildProcess> server_;
    std::unique_ptr<support::XConnection> connection_;
    std::optional<support::WindowManager> manager_;
    std::unique_ptr<support::Witness> witness_;
};

/// Two of the three that are set.
const std::vector<std::string> layouts{"xkb:us", "xkb:ua"};

}  // namespace

TEST_F(Xorg, AShortcutSwitchesTheLayoutsThatSetxkbmapHasSet) {
    startQuillmere({{.sources = layouts}});
    EXPECT_TRUE(types("asz"));
    ASSERT_TRUE(comesTo(1));
    EXPECT_TRUE(types("фія"));
    EXPECT_TRUE(switches(shortcut, 0));
    EXPECT_FALSE(witness().saw(support::keys::space));
    EXPECT_TRUE(types("asz"));
    EXPECT_EQ(layoutsSet(), "us,ua,de");
    // The service has taken no keyboard, whose layouts would be others.
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(desk_.clones().empty());
    monitor().screenshot("xorg");
}

TEST_F(Xorg, ASecondKeyboardLeavesTheLayoutsOfTheFirstAlone) {
    startQuillmere({{.keyCode = 63, .modifiers = 0, .sources = layouts}, {.sources = layouts}});
    EXPECT_TRUE(types("asz"));
    ASSERT_TRUE(comesTo(0));
    EXPECT_TRUE(types("asz"));
    const VirtualKeyboard second({.name = "Second keyboard", .moreKeys = {KEY_FN}});
    ASSERT_TRUE(serverKnows("Second keyboard"));
    EXPECT_TRUE(switches(shortcut, 1));
    EXPECT_TRUE(types("фія"));
    EXPECT_TRUE(switches(shortcut, 0));
    EXPECT_TRUE(types("asz"));
    EXPECT_TRUE(desk_.clones().empty());
}

TEST_F(Xorg, FnAloneSwitchesTheLayoutAndGrabsNothing) {
    VirtualKeyboard keyboard({.name = "Fn keyboard", .moreKeys = {KEY_FN}});
    ASSERT_TRUE(serverKnows("Fn keyboard"));
    startQuillmere({{.keyCode = 63, .modifiers = 0, .sources = layouts}});
    // Before the first key the server does not know its keyboards' layouts.
    EXPECT_TRUE(types("asz"));
    const auto tapFn = [&] { keyboard.type(taps({KEY_FN})); };
    ASSERT_TRUE(waitUntil([&] {
        witness().clear();
        tapFn();
        return waitUntil([&] { return !witness().groups().empty(); }, moment);
    }));
    const int layout = witness().groups().back();
    EXPECT_TRUE(switches(tapFn, 1 - layout));
    EXPECT_TRUE(switches(tapFn, layout));
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(desk_.clones().empty());
}

}  // namespace quillmere::machine
