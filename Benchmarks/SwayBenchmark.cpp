// Measures the program on sway, without the key-tap service, against a binding
// that a person writes into sway's configuration, in the same session. Prints
// rows of a Markdown table.
//
//   sway_benchmark <quillmere>

#include "Benchmarks/LayoutSwitch.h"
#include "Benchmarks/Run.h"
#include "Benchmarks/WaylandSession.h"
#include "Tests/Support/Sway.h"
#include "Tests/Support/SwayKeyboard.h"
#include "Tests/Support/XServer.h"

namespace quillmere::bench {
namespace {

constexpr const char* layouts = "us,ua";

void measure(const char* program) {
    WaylandSession session;
    const support::XServer server(session.folder(), session.environment(), QSize(1280, 800));
    const support::Sway sway(session.folder(), session.environment(),
                             {.layouts = layouts,
                              .display = server.display(),
                              .hasXwayland = true,
                              .configuration = "bindsym Mod4+space input type:keyboard xkb_switch_layout next"});
    support::SwayKeyboard keyboard(sway.waylandDisplay(), support::SwayKeyboard::keymap(layouts));
    session.start(program,
                  {{"XDG_CURRENT_DESKTOP", "sway"},
                   {"SWAYSOCK", sway.socket()},
                   {"WAYLAND_DISPLAY", sway.waylandDisplay()},
                   {"DISPLAY", sway.xDisplay()}},
                  {.sources = {"xkb:us", "xkb:ua"}});
    support::WaylandWitness witness(sway.waylandDisplay());
    // With each modifier this keyboard says in which layout it is, so that its
    // modifiers are let go when the other one is known.
    const auto way = [&keyboard](const char* name, const std::string& shortcut, const std::string& release) {
        return LayoutSwitch{.name = name,
                            .type = [&keyboard, shortcut](
                                        bool withLetter,
                                        int before) { keyboard.type(shortcut + (withLetter ? " +a -a" : ""), before); },
                            .release = [&keyboard, release](int after) { keyboard.type(release, after); }};
    };
    compareSwitches("sway", witness, way("Quillmere", "+ctrl +alt +space -space", "-alt -ctrl"),
                    way("a binding in its configuration", "+super +space -space", "-super"));
}

}  // namespace
}  // namespace quillmere::bench

int main(int argc, char** argv) {
    return quillmere::bench::run(argc, argv, {"quillmere"}, [argv] { quillmere::bench::measure(argv[1]); });
}
