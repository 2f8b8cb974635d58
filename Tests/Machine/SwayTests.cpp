#include "Tests/Machine/GraphicalSession.h"
#include "Tests/Machine/MachineTest.h"
#include "Tests/Machine/PasswordDialog.h"
#include "Tests/Machine/Service.h"
#include "Tests/Support/SupportError.h"

#include <filesystem>
#include <fstream>
#include <iterator>

// The application on a Wayland desktop, where the tap service is the only way.
namespace quillmere::machine {

namespace {

using support::ChildProcess;
using support::SupportError;

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
            {"WAYLAND_DISPLAY", ""}};
        for (const auto& [name, value] : desktop)
            graphical_->environment()[name] = value;
        const std::filesystem::path configuration = graphical_->folder() / "sway.conf";
        std::ofstream(configuration) << "input type:keyboard xkb_layout us,ua\n"
                                     << "exec foot sh -c 'stty -echo; exec cat > " << typed().string() << "'\n"
                                     << "exec env > " << started().string() << "\n";
        compositor_.emplace(graphical_->program("sway", {"sway", "--config", configuration}));
        ASSERT_TRUE(waitUntil([this] { return !contents(started()).empty() && showsTitle("foot"); }))
            << compositor_->output();
        takeEnvironment();
    }

    void TearDown() override {
        compositor_.reset();
        graphical_.reset();
        MachineTest::TearDown();
    }

    void startQuillmere() { graphical_->startQuillmere(); }
    ChildProcess& quillmere() { return graphical_->quillmere(); }

    /// Whether a window with this title is on the desktop.
    bool showsTitle(const std::string& title) { return tree().find("\"name\": \"" + title) != std::string::npos; }

    std::filesystem::path typed() const { return graphical_->folder() / "typed"; }

private:
    std::filesystem::path started() const { return graphical_->folder() / "started"; }

    /// The compositor picks its displays itself, and tells those that it starts.
    void takeEnvironment() {
        std::ifstream stream(started());
        for (std::string line; std::getline(stream, line);)
            for (const std::string name : {"WAYLAND_DISPLAY", "DISPLAY"})
                if (line.starts_with(name + "=")) graphical_->environment()[name] = line.substr(name.size() + 1);
    }

    std::string tree() {
        const std::filesystem::path file = graphical_->folder() / "tree";
        std::filesystem::remove(file);
        ChildProcess::Options options = graphical_->program("swaymsg", {"swaymsg", "-r", "-t", "get_tree"});
        options.output = file;
        ChildProcess::run(options);
        return contents(file);
    }

    std::optional<GraphicalSession> graphical_;
    std::optional<ChildProcess> compositor_;
};

}  // namespace

TEST_F(Sway, ThePermissionWindowGetsTheGrantThroughTheSystemsOwnDialog) {
    startQuillmere();
    ASSERT_TRUE(waitUntil([this] { return showsTitle("Quillmere needs permission"); })) << quillmere().output();
    monitor().screenshot("permission-needed");

    PasswordDialog dialog(session(), quillmere().pid());
    // To the window's first button, and presses it.
    monitor().type(taps({KEY_TAB, KEY_SPACE}));
    dialog.enter("root-secret");
    EXPECT_TRUE(waitUntil([this] { return showsTitle("Quillmere is ready"); })) << dialog.shown();
    monitor().screenshot("permission-granted");
    EXPECT_TRUE(waitUntil([this] { return !showsTitle("Quillmere is ready"); }));
    EXPECT_TRUE(quillmere().isRunning());
}

}  // namespace quillmere::machine
