#include "Quillmere/Platform/Mac/QuartzEventTap.h"
#include "Quillmere/Switching/KeyInterceptor.h"
#include "Tests/Mac/Doubles/RunLoop.h"
#include "Tests/Mac/MacTest.h"
#include "Tests/Support/FakeInputSourceService.h"

#include <vector>

namespace quillmere {
namespace {

using windowserver::Fate;

constexpr std::uint64_t controlOption = KeyEventFlags::control | KeyEventFlags::option;

/// The interceptor on the real adapter.
class QuartzEventTapTest : public MacTest {
protected:
    QuartzEventTapTest() {
        service.records = {layout("a"), layout("b"), layout("c")};
        service.current = "a";
    }

    std::shared_ptr<const Config> config = std::make_shared<const Config>(
        Config{true,
               {{makeUUID(), Shortcut{Shortcut::space, Modifiers{Modifiers::control, Modifiers::option}}, {"a", "b"}},
                {makeUUID(), Shortcut::fn, {"c", "a"}}},
               {}});
    std::vector<std::string> switches;
    FakeInputSourceService service;
    QuartzEventTap tap;
    KeyInterceptor interceptor{tap, InputSources(service), [this] { return config; }, [] { return ShortcutHandler(); },
                               [this](const CycleGroup&, const std::string& id) { switches.push_back(id); }};
};

TEST_F(QuartzEventTapTest, AShortcutIsSwallowedAndSwitchesOnceAndOtherKeysPass) {
    ASSERT_TRUE(interceptor.start());
    EXPECT_EQ(down(0), Fate::delivered);
    EXPECT_EQ(up(0), Fate::delivered);
    EXPECT_EQ(down(Shortcut::space, controlOption), Fate::swallowed);
    EXPECT_EQ(down(Shortcut::space, controlOption, true), Fate::swallowed);
    EXPECT_EQ(up(Shortcut::space), Fate::swallowed);
    EXPECT_EQ(switches, std::vector<std::string>{"b"});
}

TEST_F(QuartzEventTapTest, ALoneFnTapSwitchesUnlessItIsLongOrSpoiltByASpecialKey) {
    ASSERT_TRUE(interceptor.start());
    tapFn(0.7);
    EXPECT_EQ(changeFlags(KeyEventFlags::secondaryFn), Fate::delivered);
    EXPECT_EQ(pressSpecialKey(), Fate::delivered);
    EXPECT_EQ(changeFlags(0), Fate::delivered);
    EXPECT_TRUE(switches.empty());
    tapFn(0.2);
    EXPECT_EQ(switches, std::vector<std::string>{"c"});
}

TEST_F(QuartzEventTapTest, WithoutThePermissionThereIsNoTapUntilItIsGiven) {
    windowserver::isTrusted = false;
    EXPECT_FALSE(interceptor.start());
    EXPECT_FALSE(windowserver::hasTap());
    windowserver::isTrusted = true;
    EXPECT_TRUE(interceptor.start());
    EXPECT_TRUE(interceptor.start());
    EXPECT_EQ(windowserver::tapsMade(), 1);
    EXPECT_TRUE(windowserver::isTapEnabled());
}

TEST_F(QuartzEventTapTest, ATapThatNobodyWouldServeIsNotKept) {
    runloop::refusesSources = true;
    EXPECT_FALSE(interceptor.start());
    EXPECT_FALSE(windowserver::hasTap());
    runloop::refusesSources = false;
    EXPECT_TRUE(interceptor.start());
    EXPECT_EQ(down(Shortcut::space, controlOption), Fate::swallowed);
}

TEST_F(QuartzEventTapTest, ATapThatWasTurnedOffIsTurnedOnAtOnce) {
    ASSERT_TRUE(interceptor.start());
    windowserver::isSlow = true;
    EXPECT_EQ(down(0), Fate::delivered);
    EXPECT_TRUE(windowserver::isTapEnabled());
    windowserver::disableByUserInput();
    EXPECT_TRUE(windowserver::isTapEnabled());
    EXPECT_EQ(down(Shortcut::space, controlOption), Fate::swallowed);
}

TEST_F(QuartzEventTapTest, ToEnableNoTapIsNothing) {
    tap.enable();
    EXPECT_FALSE(windowserver::hasTap());
}

TEST_F(MacTest, ATapThatIsGoneHearsNothingAnyMore) {
    int calls = 0;
    {
        QuartzEventTap tap;
        ASSERT_TRUE(tap.install([&](const KeyEventFields&) {
            ++calls;
            return InterceptDecision::swallow;
        }));
        EXPECT_EQ(down(0), Fate::swallowed);
    }
    EXPECT_EQ(down(0), Fate::delivered);
    EXPECT_EQ(calls, 1);
}

TEST_F(MacTest, AnEventIsHandedOnWithAllThatItCarries) {
    std::vector<KeyEventFields> seen;
    QuartzEventTap tap;
    ASSERT_TRUE(tap.install([&](const KeyEventFields& fields) {
        seen.push_back(fields);
        return InterceptDecision::pass;
    }));
    wait(0.5);
    down(49, controlOption, true);
    up(49, controlOption);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].type, KeyEventType::keyDown);
    EXPECT_EQ(seen[0].keyCode, 49);
    EXPECT_EQ(seen[0].autorepeat, 1);
    EXPECT_EQ(seen[0].flags, controlOption);
    EXPECT_EQ(seen[0].timestamp, 1'500'000'000U);
    EXPECT_EQ(seen[1].type, KeyEventType::keyUp);
    EXPECT_EQ(seen[1].keyCode, 49);
    EXPECT_EQ(seen[1].autorepeat, 0);
}

}  // namespace
}  // namespace quillmere
