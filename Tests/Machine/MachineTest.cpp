#include "Tests/Machine/MachineTest.h"

#include <algorithm>

namespace quillmere::machine {

namespace {

/// Means nothing to anybody.
constexpr std::uint16_t probe = KEY_SCROLLLOCK;

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
    return testing::AssertionFailure() << "The desktop got:\n" << desk_.describe();
}

bool MachineTest::goesThroughClone() {
    desk_.clear();
    const testing::AssertionResult isTyped = arrives(taps({probe}));
    EXPECT_TRUE(isTyped);
    const std::vector<DeskEvent> events = desk_.events();
    desk_.clear();
    return std::ranges::any_of(events, &DeskEvent::isFromClone);
}

testing::AssertionResult MachineTest::becomesGrabbed() {
    if (waitUntil([this] { return goesThroughClone() || HasFailure(); }) && !HasFailure())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "Nobody grabs the keyboard.\n" << desk_.describe();
}

testing::AssertionResult MachineTest::becomesFree() {
    if (waitUntil([this] { return !goesThroughClone() || HasFailure(); }) && !HasFailure())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "The keyboard stays grabbed.\n" << desk_.describe();
}

}  // namespace quillmere::machine
