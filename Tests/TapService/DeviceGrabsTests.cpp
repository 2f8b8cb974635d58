#include "TapService/DeviceGrabs.h"

#include "Tests/TapService/TapBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ranges>
#include <string>
#include <vector>

namespace quillmere::tap {
namespace {

using namespace std::chrono_literals;

const Interest ctrlSpace{.shortcuts = {{KEY_SPACE, Flags::control}}};

/// The grabs alone, without the engine around them: the test holds keys down
/// and moves the clock.
class DeviceGrabsTest : public testing::Test {
protected:
    DeviceGrabsTest() { link_.attach(owner_, true); }
    ~DeviceGrabsTest() override { EXPECT_EQ(keyboards_.faults, std::vector<std::string>{}); }

    void plug(DeviceId id, const std::vector<std::uint16_t>& keys = {KEY_A, KEY_SPACE, KEY_LEFTCTRL, KEY_FN}) {
        FakeKeyboards::Keyboard& keyboard = keyboards_.keyboards[id];
        for (const std::uint16_t code : keys)
            keyboard.keys.set(code);
        devices_.try_emplace(id, keyboard.keys);
        grabs_.unsettle();
    }

    void plugThree() {
        for (const DeviceId id : {1U, 2U, 3U})
            plug(id);
    }

    void want(const Interest& interest) {
        link_.setInterest(interest);
        grabs_.retryGrabs();
    }

    /// As many steps as are asked for at once; returns how many those were.
    int rest() {
        int steps = 0;
        while (grabs_.deadline() && *grabs_.deadline() <= now()) {
            grabs_.settle(now());
            if (++steps > 100) {
                ADD_FAILURE() << "never comes to rest";
                break;
            }
        }
        return steps;
    }

    /// A key goes down or up, and the engine has been told.
    void press(DeviceId id, std::uint16_t code, bool isDown = true) {
        keyboards_.keyboards.at(id).down.set(code, isDown);
        devices_.at(id).down.set(code, isDown);
        devices_.at(id).held.set(code, isDown);
        devices_.at(id).grabRefused = false;
        grabs_.settle(id, devices_.at(id), now());
        grabs_.settle(now());
    }

    auto count(bool FakeKeyboards::Keyboard::* state) const {
        return std::ranges::count(keyboards_.keyboards | std::views::values, true, state);
    }
    auto opened() const { return count(&FakeKeyboards::Keyboard::isOpen); }
    auto grabbed() const { return count(&FakeKeyboards::Keyboard::isGrabbed); }
    auto cloned() const { return count(&FakeKeyboards::Keyboard::hasClone); }

    Time& now() { return keyboards_.now; }

    FakeKeyboards keyboards_;
    FakeOwner owner_;
    OwnerLink link_;
    TapDevices devices_;
    CloneOutput output_{keyboards_};
    DeviceGrabs grabs_{keyboards_, link_, devices_, output_};
};

TEST_F(DeviceGrabsTest, WithoutAWishNothingIsOpened) {
    plugThree();
    rest();
    EXPECT_EQ(opened(), 0);
    EXPECT_EQ(grabs_.deadline(), std::nullopt);
}

TEST_F(DeviceGrabsTest, FnAloneOpensAllAndClonesNone) {
    plugThree();
    want({.wantsFn = true});
    rest();
    EXPECT_EQ(opened(), 3);
    EXPECT_EQ(cloned(), 0);
}

TEST_F(DeviceGrabsTest, AKeyboardWithFnThatComesLaterOpensTheOthersToo) {
    plug(1, {KEY_A});
    want({.wantsFn = true});
    rest();
    EXPECT_EQ(opened(), 0);
    plug(2);
    rest();
    EXPECT_EQ(opened(), 2);
}

TEST_F(DeviceGrabsTest, AllAreOpenBeforeTheFirstIsTaken) {
    plugThree();
    want(ctrlSpace);
    grabs_.settle(now());
    EXPECT_EQ(opened(), 3);
    EXPECT_EQ(grabbed(), 0);
}

TEST_F(DeviceGrabsTest, EachStepTakesOneDeviceAtTheMost) {
    plugThree();
    want(ctrlSpace);
    for (auto before = grabbed() + cloned(); grabs_.deadline(); before = grabbed() + cloned()) {
        grabs_.settle(now());
        ASSERT_LE(grabbed() + cloned(), before + 1);
    }
    EXPECT_EQ(grabbed(), 3);
}

TEST_F(DeviceGrabsTest, EachStepGivesOneDeviceBackAtTheMost) {
    plugThree();
    want(ctrlSpace);
    rest();
    want({});
    for (auto before = grabbed() + opened(); grabs_.deadline(); before = grabbed() + opened()) {
        grabs_.settle(now());
        ASSERT_GE(grabbed() + opened(), before - 1);
    }
    EXPECT_EQ(opened(), 0);
}

TEST_F(DeviceGrabsTest, TheSameWishAgainTakesNoStep) {
    plugThree();
    want(ctrlSpace);
    rest();
    const int openings = keyboards_.keyboards.at(1).openCalls;
    want(ctrlSpace);
    EXPECT_EQ(rest(), 1);
    EXPECT_EQ(keyboards_.keyboards.at(1).openCalls, openings);
    EXPECT_EQ(grabbed(), 3);
}

TEST_F(DeviceGrabsTest, ADeviceWithSomethingLeftToHandleIsNeitherTakenNorGivenBack) {
    plug(1);
    devices_.at(1).queued = 1;
    want(ctrlSpace);
    rest();
    EXPECT_EQ(grabbed(), 0);
    devices_.at(1).queued = 0;
    grabs_.unsettle();
    rest();
    EXPECT_EQ(grabbed(), 1);
    devices_.at(1).isAsked = true;
    want({});
    rest();
    EXPECT_EQ(grabbed(), 1);
    devices_.at(1).isAsked = false;
    grabs_.unsettle();
    rest();
    EXPECT_EQ(opened(), 0);
}

TEST_F(DeviceGrabsTest, AHeldKeyKeepsTheGrabNoLongerThanTheDeadline) {
    plug(1);
    want(ctrlSpace);
    rest();
    press(1, KEY_A);
    want({});
    rest();
    EXPECT_EQ(grabbed(), 1);
    EXPECT_EQ(grabs_.deadline(), now() + DeviceGrabs::ungrabDeadline);
    now() += DeviceGrabs::ungrabDeadline;
    rest();
    EXPECT_EQ(opened(), 0);
    EXPECT_EQ(grabs_.deadline(), std::nullopt);
}

TEST_F(DeviceGrabsTest, KeyboardsThatTheUserHasFreedAreNotTakenBeforeTheTimeIsOver) {
    plug(1);
    want(ctrlSpace);
    rest();
    const Time freed = now();
    grabs_.free(freed);
    EXPECT_EQ(grabbed(), 0);
    want(ctrlSpace);
    rest();
    EXPECT_EQ(grabbed(), 0);
    EXPECT_EQ(grabs_.deadline(), freed + DeviceGrabs::freedTime);
    now() = freed + DeviceGrabs::freedTime - 1ns;
    rest();
    EXPECT_EQ(grabbed(), 0);
    now() += 1ns;
    rest();
    EXPECT_EQ(grabbed(), 1);
}

TEST_F(DeviceGrabsTest, KeyboardsThatTheUserHasFreedAreNotTakenWhileAKeyIsDownOnAny) {
    plugThree();
    want(ctrlSpace);
    rest();
    grabs_.free(now());
    press(2, KEY_A);
    now() += DeviceGrabs::freedTime;
    rest();
    EXPECT_EQ(grabbed(), 0);
    // Nothing to wake up for until it goes up.
    EXPECT_EQ(grabs_.deadline(), std::nullopt);
    press(2, KEY_A, false);
    rest();
    EXPECT_EQ(grabbed(), 3);
}

TEST_F(DeviceGrabsTest, TheTimeThatTheUserHasRunsOutWithNobodyAwaitingIt) {
    plug(1);
    want(ctrlSpace);
    rest();
    const Time freed = now();
    grabs_.free(freed);
    link_.drop();
    grabs_.unsettle();
    rest();
    EXPECT_EQ(opened(), 0);
    EXPECT_EQ(grabs_.deadline(), std::nullopt);
    // Held where nobody reads it.
    keyboards_.keyboards.at(1).down.set(KEY_A);
    now() = freed + DeviceGrabs::freedTime;
    link_.attach(owner_, true);
    want(ctrlSpace);
    rest();
    EXPECT_EQ(grabbed(), 0);
    press(1, KEY_A, false);
    rest();
    EXPECT_EQ(grabbed(), 1);
}

TEST_F(DeviceGrabsTest, FreedAgainTheUserHasTheWholeTimeAgain) {
    plug(1);
    want(ctrlSpace);
    rest();
    grabs_.free(now());
    now() += 2s;
    grabs_.free(now());
    now() += 2s;
    rest();
    EXPECT_EQ(grabbed(), 0);
    now() += 1s;
    rest();
    EXPECT_EQ(grabbed(), 1);
}

}  // namespace
}  // namespace quillmere::tap
