// What one keyboard event costs in the program's own logic: nanoseconds and
// heap allocations, for configurations from one group to a thousand.

#include "Quillmere/Switching/KeyInterceptor.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> allocations{0};

}  // namespace

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace quillmere {
namespace {

constexpr std::uint64_t controlOption = KeyEventFlags::control | KeyEventFlags::option;

class NoTap : public EventTap {
public:
    bool install(Callback) override { return true; }
    void enable() override {}
    void setInterest(const KeyInterest&) override {}
};

class NoSources : public InputSourceService {
public:
    std::vector<InputSourceRecord> sources() override { return {}; }
    std::optional<std::string> currentID() override { return std::nullopt; }
    int select(const InputSourceRecord&) override { return -1; }
};

// `groupCount` groups with one shortcut each, on keys 0, 1, 2 …
std::shared_ptr<const Config> makeConfig(std::int64_t groupCount) {
    Config config;
    for (std::int64_t key = 0; key < groupCount; ++key) {
        config.groups.push_back(
            {makeUUID(), Shortcut{key, {Modifiers::control, Modifiers::option}}, {"xkb:us", "xkb:ua", "xkb:de"}});
    }
    return std::make_shared<const Config>(std::move(config));
}

struct Bench {
    explicit Bench(std::int64_t groupCount) : config(makeConfig(groupCount)) {}

    std::shared_ptr<const Config> config;
    NoTap tap;
    NoSources sources;
    KeyInterceptor interceptor{tap, InputSources(sources), [this] { return config; }, [] { return ShortcutHandler(); },
                               [](const CycleGroup&, const std::string&) {}};
};

void run(benchmark::State& state, const KeyEventFields& event) {
    Bench bench(state.range(0));
    const std::size_t before = allocations.load();
    for ([[maybe_unused]] const auto each : state)
        benchmark::DoNotOptimize(bench.interceptor.handle(event));
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(allocations.load() - before), benchmark::Counter::kAvgIterations);
}

void ordinaryKey(benchmark::State& state) {
    run(state, {KeyEventType::keyDown, 5000, 0, 0, 0});
}
void heldShortcut(benchmark::State& state) {
    run(state, {KeyEventType::keyDown, 0, 1, controlOption, 0});
}
void keyRelease(benchmark::State& state) {
    run(state, {KeyEventType::keyUp, 5000, 0, 0, 0});
}
void specialKey(benchmark::State& state) {
    run(state, {KeyEventType::systemDefined, 0, 0, 0, 0});
}
void modifierChange(benchmark::State& state) {
    run(state, {KeyEventType::flagsChanged, 0, 0, KeyEventFlags::shift, 0});
}

BENCHMARK(ordinaryKey)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(heldShortcut)->Arg(1)->Arg(1000);
BENCHMARK(keyRelease)->Arg(1);
BENCHMARK(specialKey)->Arg(1);
BENCHMARK(modifierChange)->Arg(1);

}  // namespace
}  // namespace quillmere

BENCHMARK_MAIN();
