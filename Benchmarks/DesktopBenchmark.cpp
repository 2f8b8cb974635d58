// Measures the built program on real desktops of its own against what it
// replaces: the X server's own layout switch, typing without the program, the
// least program that switches by a grab and the least tray utility that Qt
// allows. Every figure and its yardstick are taken in turns within one run.
// Prints rows of a Markdown table.
//
//   desktop_benchmark <quillmere> <minimal_tray> <bare_grab>

#include "Benchmarks/EventClock.h"
#include "Benchmarks/Run.h"
#include "Benchmarks/Table.h"
#include "QuillmereCore/Config.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/StartupPipe.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/Witness.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmere::bench {
namespace {

namespace fs = std::filesystem;
using support::ChildProcess;
using support::Desktop;
using support::Program;
namespace keys = support::keys;

constexpr int switchSamples = 1000;
constexpr int typingSamples = 1000;
constexpr int plateSamples = 20;
constexpr int startSamples = 15;
constexpr auto settling = std::chrono::seconds(3);
constexpr auto restObserved = std::chrono::seconds(60);
// Mod4Mask (X.h), where the pc105 model has the Super key.
constexpr unsigned int superModifier = 1U << 6;

struct Programs {
    fs::path quillmere;
    fs::path minimalTray;
    fs::path bareGrab;
};

// One of the yardsticks, from the moment on that it says that it runs.
class PipedProgram {
public:
    PipedProgram(const fs::path& program, Desktop& desktop)
        : process_({.arguments = {program.string(), std::to_string(ready_.writeEnd())},
                    .environment = desktop.environment(),
                    .inheritedDescriptors = {ready_.writeEnd()}}) {
        if (ready_.readLine().empty()) throw std::runtime_error(program.string() + " does not start");
    }

    const ChildProcess& process() const { return process_; }

private:
    support::StartupPipe ready_;
    ChildProcess process_;
};

// Command-Space through two layouts, and the plate as usual.
void storeConfiguration(const Desktop& desktop) {
    const Config config{true, {{makeUUID(), Shortcut{Shortcut::space, Modifiers::command}, {"xkb:us", "xkb:ua"}}}, {}};
    desktop.settings().set("config", encodeConfig(config));
}

void useServersOwnSwitch(const Desktop& desktop) {
    ChildProcess::run({.arguments = {"setxkbmap", "-layout", "us,ua", "-option", "grp:win_space_toggle"},
                       .environment = desktop.environment()});
}

// One press of the shortcut, its layout change, and everything up again.
double timeSwitch(Desktop& desktop, EventClock& clock) {
    support::Typist& typist = desktop.typist();
    typist.press(keys::leftSuper);
    pause(2);
    clock.layoutChange().reset();
    const Clock::time_point start = Clock::now();
    typist.press(keys::space);
    const double time = clock.layoutChange().await(start);
    typist.release(keys::space);
    typist.release(keys::leftSuper);
    pause(1 + (std::rand() % 20) / 10.0);
    return time;
}

double timeKey(Desktop& desktop, EventClock& clock) {
    clock.keyPress().reset();
    const Clock::time_point start = Clock::now();
    desktop.typist().press(keys::a);
    const double time = clock.keyPress().await(start);
    desktop.typist().release(keys::a);
    pause(1 + (std::rand() % 20) / 10.0);
    return time;
}

void measureKeys(const Programs& programs) {
    Desktop with({.layouts = "us,ua"});
    Desktop without({.layouts = "us,ua"});
    Desktop bare({.layouts = "us,ua"});
    storeConfiguration(with);
    useServersOwnSwitch(without);
    const PipedProgram bareGrab(programs.bareGrab, bare);
    Program program(programs.quillmere, with);
    if (!program.waitForGrab(keys::space, superModifier) || !program.waitForTrayItem())
        throw std::runtime_error("the program does not start");
    EventClock withClock(with.display());
    EventClock withoutClock(without.display());
    EventClock bareClock(bare.display());
    const std::vector<Sample> switches{[&] { return timeSwitch(with, withClock); },
                                       [&] { return timeSwitch(without, withoutClock); },
                                       [&] { return timeSwitch(bare, bareClock); }};
    takeInTurns("the first switches", 20, switches);
    const auto switchTimes = takeInTurns("a switch", switchSamples, switches);
    rows("key press → new layout seen by another program", switchTimes[0], switchTimes[1],
         {.median = "≤ 1.5 ×", .tail = "≤ 2 ×"});
    rows("the same, against a bare loop that grabs and switches", switchTimes[0], switchTimes[2], {});
    const auto keyTimes =
        takeInTurns("an ordinary key", typingSamples,
                    {[&] { return timeKey(with, withClock); }, [&] { return timeKey(without, withoutClock); }});
    rows("ordinary key → focused program", keyTimes[0], keyTimes[1], {.median = "≈ 1 ×", .tail = "≈ 1 ×"});
}

void measurePlate(const Programs& programs, bool hasCompositor) {
    Desktop desktop({.layouts = "us,ua", .hasCompositor = hasCompositor});
    storeConfiguration(desktop);
    Program program(programs.quillmere, desktop);
    // The desktop is played by this very thread, which must answer what the
    // program asks of it at its start.
    if (!program.waitForGrab(keys::space, superModifier) || !program.waitForTrayItem())
        throw std::runtime_error("the program does not start");
    EventClock clock(desktop.display());
    // What a compositor shows where no window is, is its own affair.
    const QColor paint(40, 90, 160);
    const support::Witness background(desktop.display(), support::Witness::Size::fullScreen, paint);
    const auto isBare = [&] { return desktop.screen().color({640, 400}) == paint; };
    if (!support::waitUntil(isBare)) throw std::runtime_error("the background does not show");
    std::vector<double> times;
    for (int i = 0; i < plateSamples; ++i) {
        desktop.typist().press(keys::leftSuper);
        clock.layoutChange().reset();
        const Clock::time_point start = Clock::now();
        desktop.typist().press(keys::space);
        const double switched = clock.layoutChange().await(start);
        while (isBare() && Clock::now() - start < support::patience)
            continue;
        times.push_back(since(start) - switched);
        if (switched < 0 || isBare()) throw std::runtime_error("the plate does not show");
        desktop.typist().release(keys::space);
        desktop.typist().release(keys::leftSuper);
        if (!support::waitUntil(isBare)) throw std::runtime_error("the plate does not go");
    }
    constexpr double frame = 1e6 / 60;
    const double time = percentile(times, 0.5);
    row(hasCompositor ? "switch → plate on the screen, composited" : "switch → plate on the screen",
        text(time / 1000, "ms", 1), text(frame / 1000, "ms (one frame)", 1), ratioText(time, frame), "≤ 1 ×");
}

double timeStart(const Programs& programs, Desktop& desktop) {
    const Clock::time_point start = Clock::now();
    Program program(programs.quillmere, desktop);
    while (!program.holdsGrab(keys::space, superModifier))
        pause(1);
    return since(start) / 1000;
}

double timeMinimalStart(const Programs& programs, Desktop& desktop) {
    const Clock::time_point start = Clock::now();
    const PipedProgram program(programs.minimalTray, desktop);
    return since(start) / 1000;
}

void measureStart(const Programs& programs) {
    Desktop desktop({.layouts = "us,ua"});
    storeConfiguration(desktop);
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i < startSamples; ++i) {
        ours.push_back(timeStart(programs, desktop));
        theirs.push_back(timeMinimalStart(programs, desktop));
    }
    const double our = percentile(ours, 0.5);
    const double their = percentile(theirs, 0.5);
    row("start → tap installed, against a minimal Qt tray program", text(our, "ms"), text(their, "ms"),
        ratioText(our, their), "≤ 1.5 ×");
}

// The process's proportional share of memory, in KiB (proc_pid_smaps(5)).
double proportionalSetSize(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Pss:")) return std::stod(line.substr(4));
    }
    throw std::runtime_error("no memory figures");
}

// Of the programs that it has started, in KiB.
double memoryOfChildren(pid_t process) {
    double sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream children(thread.path() / "children");
        for (pid_t child = 0; children >> child;)
            sum += proportionalSetSize(child);
    }
    return sum;
}

struct Rest {
    double memory;           // MiB
    double childrensMemory;  // MiB
    long wakeUps;            // in `restObserved`
};

Rest observeRest(const ChildProcess& process) {
    support::holdsFor([] { return true; }, settling);
    const double memory = proportionalSetSize(process.pid()) / 1024;
    const double childrensMemory = memoryOfChildren(process.pid()) / 1024;
    const long before = process.wakeUps();
    std::this_thread::sleep_for(restObserved);
    return {memory, childrensMemory, process.wakeUps() - before};
}

Rest programAtRest(const Programs& programs, Desktop& desktop) {
    Program program(programs.quillmere, desktop);
    if (!program.waitForGrab(keys::space, superModifier) || !program.waitForTrayItem()) {
        throw std::runtime_error("the program does not start");
    }
    return observeRest(program.process());
}

Rest minimalProgramAtRest(const Programs& programs, Desktop& desktop) {
    const PipedProgram program(programs.minimalTray, desktop);
    return observeRest(program.process());
}

// One after the other: side by side they would share Qt's pages, which hides
// what the first of them costs.
void measureRest(const Programs& programs) {
    Desktop desktop({.layouts = "us,ua"});
    storeConfiguration(desktop);
    const Rest ours = programAtRest(programs, desktop);
    const Rest theirs = minimalProgramAtRest(programs, desktop);
    row("memory at rest (PSS), against the same", text(ours.memory, "MiB", 1), text(theirs.memory, "MiB", 1),
        ratioText(ours.memory, theirs.memory), "≤ 1.25 ×");
    row("memory of its guard against a frozen keyboard (PSS)", text(ours.childrensMemory, "MiB", 1), "–", "–",
        "≤ 1 MiB");
    row("wake-ups in a minute at rest", std::to_string(ours.wakeUps), std::to_string(theirs.wakeUps), "–", "0");
}

void measure(const Programs& programs) {
    measureKeys(programs);
    measurePlate(programs, false);
    measurePlate(programs, true);
    measureStart(programs);
    measureRest(programs);
}

}  // namespace
}  // namespace quillmere::bench

int main(int argc, char** argv) {
    return quillmere::bench::run(argc, argv, {"quillmere", "minimal_tray", "bare_grab"},
                                 [argv] { quillmere::bench::measure({argv[1], argv[2], argv[3]}); });
}
