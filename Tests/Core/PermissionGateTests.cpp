#include "QuillmereCore/PermissionGate.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quillmere {
namespace {

using State = PermissionGate::State;

// A probe that refuses a number of times and then grants.
struct Probe {
    int refusals = 0;
    int calls = 0;

    std::function<bool()> function() {
        return [this] { return ++calls > refusals; };
    }
};

TEST(PermissionGate, AGrantAtConstructionIsSilentForEver) {
    Probe probe;
    PermissionGate gate(probe.function());
    EXPECT_EQ(gate.state(), State::granted);
    EXPECT_FALSE(gate.onChange);
    int changes = 0;
    gate.onChange = [&](State) { ++changes; };
    gate.tick();
    gate.tick();
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(probe.calls, 1);
}

TEST(PermissionGate, TheFirstGrantIsTheLastQuestionAndTheOnlyCall) {
    Probe probe{.refusals = 4};
    PermissionGate gate(probe.function());
    std::vector<State> changes;
    gate.onChange = [&](State state) { changes.push_back(state); };
    EXPECT_EQ(probe.calls, 1);
    for (int tick = 1; tick <= 3; ++tick) {
        gate.tick();
        EXPECT_EQ(gate.state(), State::needed);
        EXPECT_EQ(probe.calls, 1 + tick);
        EXPECT_TRUE(changes.empty());
    }
    for (int tick = 4; tick <= 6; ++tick) {
        gate.tick();
        EXPECT_EQ(gate.state(), State::granted);
        EXPECT_EQ(probe.calls, 5);
        EXPECT_EQ(changes, std::vector{State::granted});
    }
}

TEST(PermissionGate, ATickWithoutAListenerStillGrants) {
    Probe probe{.refusals = 1};
    PermissionGate gate(probe.function());
    EXPECT_EQ(gate.state(), State::needed);
    gate.tick();
    EXPECT_EQ(gate.state(), State::granted);
}

TEST(PermissionGate, TheListenerFindsTheStateGranted) {
    Probe probe{.refusals = 1};
    PermissionGate gate(probe.function());
    State seen = State::needed;
    gate.onChange = [&](State) { seen = gate.state(); };
    gate.tick();
    EXPECT_EQ(seen, State::granted);
}

TEST(PermissionGate, TheListenerMayTickTheGate) {
    Probe probe{.refusals = 1};
    PermissionGate gate(probe.function());
    int changes = 0;
    gate.onChange = [&](State) {
        ++changes;
        gate.tick();
    };
    gate.tick();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(probe.calls, 2);
}

TEST(PermissionGate, TheListenerOutlivesItsOwnRemoval) {
    Probe probe{.refusals = 1};
    PermissionGate gate(probe.function());
    int seen = 0;
    gate.onChange = [&gate, &seen, held = std::make_shared<int>(7)](State) {
        gate.onChange = nullptr;
        seen = *held;
    };
    gate.tick();
    EXPECT_EQ(seen, 7);
    EXPECT_FALSE(gate.onChange);
}

TEST(PermissionGate, TheGateReleasesItsProbeAndItsListenerWhenItEnds) {
    const auto owned = std::make_shared<int>(1);
    {
        PermissionGate gate([owned] { return *owned == 2; });
        gate.onChange = [owned](State) {};
        EXPECT_EQ(owned.use_count(), 3);
    }
    EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace quillmere
