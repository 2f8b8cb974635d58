// Measures the program on GNOME, with the extension of its Shell, against the
// Shell's own shortcut in the same session. Prints rows of a Markdown table.
//
//   gnome_benchmark <quillmere>

#include "Benchmarks/LayoutSwitch.h"
#include "Benchmarks/Run.h"
#include "Benchmarks/WaylandSession.h"
#include "Tests/Support/GnomeShell.h"
#include "Tests/Support/GnomeTypist.h"

namespace quillmere::bench {
namespace {

// ⌘K: as many keys as GNOME's own has.
constexpr int keyK = 40;
constexpr int command = 1;

void measure(const char* program) {
    WaylandSession session;
    const support::GnomeShell shell(
        session.folder(), session.environment(), session.bus(),
        {.sources = {"xkb:us", "xkb:ua"}, .extension = QUILLMERE_GNOME_EXTENSION, .hasXwayland = true});
    const support::GnomeTypist typist(session.bus().connect());
    session.start(program, shell.environment(),
                  {.keyCode = keyK, .modifiers = command, .sources = {"xkb:us", "xkb:ua"}});
    support::WaylandWitness witness(shell.waylandDisplay());
    const auto types = [&typist](const std::string& shortcut) {
        return [&typist, shortcut](bool withLetter, int) { typist.type(shortcut + (withLetter ? " +a -a" : "")); };
    };
    compareSwitches("GNOME " + std::to_string(shell.version()), witness,
                    {.name = "Quillmere", .type = types("+super +k -k -super")},
                    {.name = "its own Super+Space", .type = types("+super +space -space -super")});
}

}  // namespace
}  // namespace quillmere::bench

int main(int argc, char** argv) {
    return quillmere::bench::run(argc, argv, {"quillmere"}, [argv] { quillmere::bench::measure(argv[1]); });
}
