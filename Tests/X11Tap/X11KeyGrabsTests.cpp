#include "Quillmere/Platform/Linux/Tap/X11/X11KeyGrabs.h"

#include "Tests/X11Tap/FakeX11Keyboard.h"

#include <gtest/gtest.h>

namespace quillmere::support {
namespace {

constexpr X11KeyCombination first{.keyCode = 65, .modifiers = 4};
constexpr X11KeyCombination second{.keyCode = 65, .modifiers = 6};
constexpr X11KeyCombination third{.keyCode = 45, .modifiers = 4};

class X11KeyGrabsTest : public testing::Test {
protected:
    using Held = std::set<X11KeyCombination>;

    // The server takes it amiss when one is grabbed twice, or given back by
    // whoever does not have it.
    ~X11KeyGrabsTest() override { EXPECT_EQ(keyboard.faults, std::vector<std::string>{}); }

    FakeX11Keyboard keyboard;
    X11KeyGrabs grabs{keyboard};
};

TEST_F(X11KeyGrabsTest, WhatIsWantedIsTakenOnceInWhateverOrderItIsNamed) {
    grabs.set({second, first, third, first, second});
    EXPECT_EQ(keyboard.ours(), (Held{first, second, third}));
    EXPECT_FALSE(grabs.areSomeMissing());
}

TEST_F(X11KeyGrabsTest, OnlyTheDifferenceIsTakenAndGivenBack) {
    grabs.set({first, second});
    grabs.set({third, second});
    EXPECT_EQ(keyboard.ours(), (Held{second, third}));
    grabs.set({third, second});
    grabs.retry();
    EXPECT_EQ(keyboard.ours(), (Held{second, third}));
    grabs.set({});
    EXPECT_TRUE(keyboard.ours().empty());
    EXPECT_FALSE(grabs.areSomeMissing());
}

TEST_F(X11KeyGrabsTest, AnotherClientsIsMissingUntilItLetsGo) {
    keyboard.theirs = {first};
    grabs.set({first, second});
    EXPECT_TRUE(grabs.areSomeMissing());
    grabs.retry();
    EXPECT_EQ(keyboard.ours(), Held{second});
    keyboard.theirs.clear();
    grabs.retry();
    EXPECT_EQ(keyboard.ours(), (Held{first, second}));
    EXPECT_FALSE(grabs.areSomeMissing());
}

TEST_F(X11KeyGrabsTest, WhatWasMissingAndIsNoLongerWantedIsLeftAlone) {
    keyboard.theirs = {first};
    grabs.set({first});
    grabs.set({second});
    keyboard.theirs.clear();
    grabs.retry();
    EXPECT_EQ(keyboard.ours(), Held{second});
}

}  // namespace
}  // namespace quillmere::support
