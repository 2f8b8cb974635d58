#include "Tests/Machine/MachineTest.h"

#include <algorithm>
#include <set>

namespace quillmere::machine {

namespace {

/// Means nothing to anybody.
constexpr std::uint16_t probe = KEY_SCROLLLOCK;

/// Between two probes. A desktop that is kept busy with them loses keys: the
/// kernel keeps some twenty for it.
constexpr std::chrono::milliseconds pause{100};

}  // namespace

Monitor& MachineTest::monitor() {
    static Monitor monitor;
    return monitor;
}

Session& MachineTest::session() {
    static Session session(Session::Form{});
    return session;
}

void MachineTest::TearDown() {
    for (const std::set<std::string> plugged = monitor().keyboards(); const std::string& id : plugged)
        unplugKeyboard(id);
    EXPECT_TRUE(waitUntil([this] { return desk_.keysDown().empty(); })) << "A key is stuck.\n" << desk_.describe();
    desk_.clear();
    EXPECT_TRUE(arrives(taps({KEY_A, KEY_B}))) << "Typing does not work any more.";
    EXPECT_FALSE(desk_.hasLostEvents());
}

testing::AssertionResult MachineTest::arrives(const std::vector<KeyStroke>& strokes) {
    monitor().type(strokes);
    return hasGot(strokes);
}

testing::AssertionResult MachineTest::hasGot(const std::vector<KeyStroke>& strokes) {
    const bool isComplete = waitUntil([&] { return desk_.strokes().size() >= strokes.size(); });
    if (isComplete && desk_.strokes() == strokes) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "Of " << strokes.size() << " strokes the desktop got "
                                       << desk_.strokes().size() << ":\n"
                                       << desk_.describe();
}

void MachineTest::plugKeyboard(const std::string& id) {
    const std::size_t before = desk_.originals().count(usbKeyboard);
    monitor().plugKeyboard(id);
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().count(usbKeyboard) > before; })) << desk_.describe();
    // The driver drops what comes in the first moments.
    const auto works = [&] {
        monitor().type(taps({probe}));
        return waitUntil([&] { return !desk_.strokes().empty(); }, moment);
    };
    ASSERT_TRUE(waitUntil(works)) << desk_.describe();
    ASSERT_TRUE(waitUntil([&] { return desk_.strokes().size() % 2 == 0 && desk_.keysDown().empty(); }));
    desk_.clear();
}

void MachineTest::unplugKeyboard(const std::string& id) {
    const std::size_t before = desk_.originals().count(usbKeyboard);
    monitor().unplugKeyboard(id);
    ASSERT_TRUE(waitUntil([&] { return desk_.originals().count(usbKeyboard) < before; })) << desk_.describe();
}

std::optional<bool> MachineTest::goesThroughClone() {
    desk_.clear();
    monitor().type(taps({probe}));
    // What was typed before may still be on its way.
    const auto isOfProbe = [](const DeskEvent& event) { return event.type == EV_KEY && event.code == probe; };
    if (!waitUntil([&] { return std::ranges::count_if(desk_.events(), isOfProbe) >= 2; })) return std::nullopt;
    const std::vector<DeskEvent> events = desk_.events();
    desk_.clear();
    return std::ranges::any_of(events, [&](const DeskEvent& event) { return isOfProbe(event) && event.isFromClone; });
}

bool MachineTest::becomes(bool isGrabbed) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::optional<bool> goesNow = goesThroughClone();
    while (goesNow && *goesNow != isGrabbed && std::chrono::steady_clock::now() < deadline) {
        holdsFor([] { return true; }, pause);
        goesNow = goesThroughClone();
    }
    return goesNow == isGrabbed;
}

testing::AssertionResult MachineTest::becomesGrabbed() {
    if (becomes(true)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "Nobody grabs the keyboard.\n" << desk_.describe();
}

testing::AssertionResult MachineTest::becomesFree() {
    if (becomes(false)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "The keyboard stays grabbed.\n" << desk_.describe();
}

}  // namespace quillmere::machine
