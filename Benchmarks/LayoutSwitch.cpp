#include "Benchmarks/LayoutSwitch.h"

#include "Benchmarks/Sampling.h"
#include "Benchmarks/Table.h"
#include "Tests/Support/WaitUntil.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace quillmere::bench {

namespace {

namespace keys = support::keys;
using namespace std::chrono_literals;
using support::WaylandWitness;

constexpr int switchSamples = 200;
constexpr int bursts = 100;

struct Letters {
    int wrong = 0;
    int lost = 0;
};

/// Waits until another layout than this one is in use, without the event loop,
/// which would come back late.
bool waitForOther(WaylandWitness& witness, int layout, std::chrono::milliseconds deadline) {
    const Clock::time_point start = Clock::now();
    while (witness.layout() == layout) {
        if (Clock::now() - start > deadline) return false;
        witness.waitForNews(10ms);
    }
    return true;
}

/// What a switch still has to do when it has been seen.
void rest() {
    support::holdsFor([] { return true; }, 30ms);
}

double timeOf(const LayoutSwitch& way, WaylandWitness& witness) {
    const int before = witness.layout();
    const Clock::time_point start = Clock::now();
    way.type(false, before);
    const bool isDone = waitForOther(witness, before, 2s);
    const double time = since(start);
    way.release(witness.layout());
    rest();
    return isDone ? time : -1;
}

void waitUntilReady(const LayoutSwitch& way, WaylandWitness& witness) {
    if (!support::waitUntil([&] { return timeOf(way, witness) >= 0; }))
        throw std::runtime_error(way.name + " does not switch");
}

void typeBurst(const LayoutSwitch& way, WaylandWitness& witness, Letters& letters) {
    const int before = witness.layout();
    witness.clear();
    way.type(true, before);
    if (!support::waitUntil([&] { return witness.presses(keys::a) > 0; }, 2s)) ++letters.lost;
    const auto isWrong = [before](const support::SeenKey& seen) {
        return seen.isPress && seen.key == keys::a && seen.group == before;
    };
    if (std::ranges::any_of(witness.keys(), isWrong)) ++letters.wrong;
    waitForOther(witness, before, 1s);
    way.release(witness.layout());
    rest();
}

std::string inWords(const Letters& letters) {
    const std::string wrong = std::to_string(letters.wrong);
    return letters.lost == 0 ? wrong : wrong + ", " + std::to_string(letters.lost) + " lost";
}

}  // namespace

void compareSwitches(const std::string& desktop, WaylandWitness& witness, const LayoutSwitch& ours,
                     const LayoutSwitch& theirs) {
    waitUntilReady(ours, witness);
    waitUntilReady(theirs, witness);
    const std::vector<Sample> samples{[&] { return timeOf(ours, witness); }, [&] { return timeOf(theirs, witness); }};
    takeInTurns("the first switches", 10, samples);
    const auto times = takeInTurns("a switch", switchSamples, samples);
    rows(desktop + ": shortcut → new layout told to the focused program, against " + theirs.name, times[0], times[1],
         {.median = "≤ 1.2 ×", .tail = "≤ 1.2 ×"});
    std::array<Letters, 2> letters;
    for (int burst = 0; burst < bursts; ++burst) {
        typeBurst(ours, witness, letters[0]);
        typeBurst(theirs, witness, letters[1]);
    }
    row(desktop + ": letters in the wrong layout, of " + std::to_string(bursts)
            + " typed right after the shortcut, against " + theirs.name,
        inWords(letters[0]), inWords(letters[1]), "–", "0");
}

}  // namespace quillmere::bench
