// Measures the program on KDE's compositor, without the key-tap service, against
// the desktop's own shortcut in the same session. Prints rows of a Markdown
// table.
//
//   kde_benchmark <quillmere>

#include "Benchmarks/LayoutSwitch.h"
#include "Benchmarks/Run.h"
#include "Benchmarks/WaylandSession.h"
#include "Tests/Support/Kwin.h"
#include "Tests/Support/KwinTypist.h"

namespace quillmere::bench {
namespace {

void measure(const char* program) {
    WaylandSession session;
    const support::Kwin kwin(session.folder(), session.environment(), session.bus().address(), session.bus().connect(),
                             {.layouts = "us,ua", .hasXwayland = true});
    support::KwinTypist typist(kwin.waylandDisplay());
    session.start(
        program,
        {{"XDG_CURRENT_DESKTOP", "KDE"}, {"WAYLAND_DISPLAY", kwin.waylandDisplay()}, {"DISPLAY", kwin.xDisplay()}},
        {.sources = {"xkb:us", "xkb:ua"}});
    support::WaylandWitness witness(kwin.waylandDisplay());
    const auto types = [&typist](const std::string& shortcut) {
        return [&typist, shortcut](bool withLetter, int) { typist.type(shortcut + (withLetter ? " +a -a" : "")); };
    };
    compareSwitches("KDE", witness, {.name = "Quillmere", .type = types("+ctrl +alt +space -space -alt -ctrl")},
                    {.name = "its own Meta+Alt+K", .type = types("+super +alt +k -k -alt -super")});
}

}  // namespace
}  // namespace quillmere::bench

int main(int argc, char** argv) {
    return quillmere::bench::run(argc, argv, {"quillmere"}, [argv] { quillmere::bench::measure(argv[1]); });
}
