#include "Quillmere/Switching/KeyInterceptor.h"
#include "Tests/Support/FakeEventTap.h"
#include "Tests/Support/FakeInputSourceService.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

constexpr InterceptDecision pass = InterceptDecision::pass;
constexpr InterceptDecision swallow = InterceptDecision::swallow;
constexpr std::uint64_t controlOption = KeyEventFlags::control | KeyEventFlags::option;
constexpr Shortcut controlOptionSpace{Shortcut::space, Modifiers{Modifiers::control, Modifiers::option}};

class KeyInterceptorTest : public testing::Test {
protected:
    KeyInterceptorTest() {
        service.records = {layout("a"), layout("b"), layout("c")};
        service.current = "a";
        setGroups({{makeUUID(), controlOptionSpace, {"a", "b", "c"}}});
    }

    void setGroups(std::vector<CycleGroup> groups, bool active = true) {
        config = std::make_shared<const Config>(Config{active, std::move(groups), {}});
    }
    void setFnGroup() { setGroups({{makeUUID(), Shortcut::fn, {"a", "b"}}}); }

    InterceptDecision keyDown(std::int64_t keyCode, std::uint64_t flags = 0, bool isRepeat = false) {
        return interceptor.handle({KeyEventType::keyDown, keyCode, isRepeat, flags, time});
    }
    InterceptDecision keyUp(std::int64_t keyCode) {
        return interceptor.handle({KeyEventType::keyUp, keyCode, 0, 0, time});
    }
    InterceptDecision flags(std::uint64_t value) {
        return interceptor.handle({KeyEventType::flagsChanged, 0, 0, value, time});
    }
    void wait(double seconds) { time += static_cast<std::uint64_t>(seconds * 1e9); }
    void tapFn(double seconds = 0.2) {
        flags(KeyEventFlags::secondaryFn);
        wait(seconds);
        flags(0);
    }

    std::shared_ptr<const Config> config;
    int configReads = 0;
    ShortcutHandler recorder;
    std::vector<std::pair<std::int64_t, Modifiers>> recorded;
    std::vector<std::string> switches;
    std::uint64_t time = 1'000'000'000;
    FakeEventTap tap;
    FakeInputSourceService service;
    KeyInterceptor interceptor{tap, InputSources(service),
                               [this] {
                                   ++configReads;
                                   return config;
                               },
                               [this] { return recorder; },
                               [this](const CycleGroup&, const std::string& id) { switches.push_back(id); }};

    void startRecording() {
        recorder = [this](std::int64_t keyCode, Modifiers modifiers) { recorded.emplace_back(keyCode, modifiers); };
    }
};

TEST_F(KeyInterceptorTest, AKeyOfNoGroupPassesWithItsRelease) {
    EXPECT_EQ(keyDown(0), pass);
    EXPECT_EQ(keyUp(0), pass);
    EXPECT_TRUE(service.calls.empty());
}

TEST_F(KeyInterceptorTest, AShortcutIsSwallowedWithItsReleaseOnce) {
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), swallow);
    EXPECT_EQ(keyUp(Shortcut::space), swallow);
    EXPECT_EQ(keyUp(Shortcut::space), pass);
    EXPECT_EQ(switches, std::vector<std::string>{"b"});
}

TEST_F(KeyInterceptorTest, CyclesThroughTheGroupAndWraps) {
    for (int i = 0; i < 4; ++i) {
        keyDown(Shortcut::space, controlOption);
        keyUp(Shortcut::space);
    }
    EXPECT_EQ(switches, (std::vector<std::string>{"b", "c", "a", "b"}));
}

TEST_F(KeyInterceptorTest, HoldingAShortcutSwitchesOnce) {
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), swallow);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(keyDown(Shortcut::space, controlOption, true), swallow);
    EXPECT_EQ(keyUp(Shortcut::space), swallow);
    EXPECT_EQ(switches.size(), 1U);
    EXPECT_EQ(service.currentCalls, 1);
}

TEST_F(KeyInterceptorTest, TheModifiersMustMatchExactly) {
    EXPECT_EQ(keyDown(Shortcut::space, controlOption | KeyEventFlags::shift), pass);
    EXPECT_EQ(keyDown(Shortcut::space, controlOption | KeyEventFlags::command), pass);
    EXPECT_EQ(keyDown(Shortcut::space, KeyEventFlags::control), pass);
    EXPECT_EQ(keyDown(Shortcut::space), pass);
}

TEST_F(KeyInterceptorTest, CapsLockFnAndOtherBitsDoNotMatter) {
    for (const std::uint64_t extra : {std::uint64_t{KeyEventFlags::capsLock}, std::uint64_t{KeyEventFlags::secondaryFn},
                                      std::uint64_t{1} << 21, std::uint64_t{1} << 22, std::uint64_t{0xFFFF}}) {
        EXPECT_EQ(keyDown(Shortcut::space, controlOption | extra), swallow) << extra;
        keyUp(Shortcut::space);
    }
}

TEST_F(KeyInterceptorTest, AsksForTheCurrentSourceThenSelectsOnceFromOneSnapshot) {
    keyDown(Shortcut::space, controlOption);
    EXPECT_EQ(service.calls, (std::vector<std::string>{"currentID", "select b"}));
    EXPECT_EQ(configReads, 1);
}

TEST_F(KeyInterceptorTest, WithoutACurrentSourceTheFirstIsSelected) {
    service.current.reset();
    keyDown(Shortcut::space, controlOption);
    EXPECT_EQ(switches, std::vector<std::string>{"a"});
}

TEST_F(KeyInterceptorTest, ARefusedSelectionIsSwallowedAndNotReported) {
    service.status = -1;
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), swallow);
    EXPECT_EQ(keyUp(Shortcut::space), swallow);
    EXPECT_TRUE(switches.empty());
}

TEST_F(KeyInterceptorTest, ASourceThatIsGoneIsSwallowedAndNotReported) {
    service.records = {layout("a")};
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), swallow);
    EXPECT_TRUE(service.selected.empty());
    EXPECT_TRUE(switches.empty());
}

TEST_F(KeyInterceptorTest, SwitchedOffEveryKeyPasses) {
    setGroups(config->groups, false);
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), pass);
    EXPECT_EQ(keyUp(Shortcut::space), pass);
    EXPECT_TRUE(service.calls.empty());
}

TEST_F(KeyInterceptorTest, SwitchedOffWhileAShortcutIsHeldItsReleaseIsStillSwallowed) {
    keyDown(Shortcut::space, controlOption);
    setGroups(config->groups, false);
    EXPECT_EQ(keyUp(Shortcut::space), swallow);
}

TEST_F(KeyInterceptorTest, AChangedConfigurationActsOnTheNextEvent) {
    setGroups({{makeUUID(), Shortcut{0, Modifiers::command}, {"c"}}});
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), pass);
    EXPECT_EQ(keyDown(0, KeyEventFlags::command), swallow);
    EXPECT_EQ(switches, std::vector<std::string>{"c"});
}

TEST_F(KeyInterceptorTest, WhileRecordingEveryPressGoesToTheRecorderOnly) {
    startRecording();
    setGroups(config->groups, false);
    EXPECT_EQ(keyDown(0), swallow);
    EXPECT_EQ(keyDown(0, 0, true), swallow);
    EXPECT_EQ(keyUp(0), swallow);
    EXPECT_EQ(keyDown(Shortcut::space, controlOption), swallow);
    using Recorded = std::vector<std::pair<std::int64_t, Modifiers>>;
    EXPECT_EQ(recorded, (Recorded{{0, {}}, {Shortcut::space, controlOptionSpace.modifiers}}));
    EXPECT_TRUE(service.calls.empty());
    EXPECT_EQ(configReads, 0);
}

TEST_F(KeyInterceptorTest, ARecorderMayEndTheRecordingItself) {
    int calls = 0;
    recorder = [this, &calls](std::int64_t, Modifiers) {
        ++calls;
        recorder = nullptr;
    };
    EXPECT_EQ(keyDown(0), swallow);
    EXPECT_EQ(keyUp(0), swallow);
    EXPECT_EQ(keyDown(0), pass);
    EXPECT_EQ(calls, 1);
}

TEST_F(KeyInterceptorTest, ALoneFnTapFiresOnTheRelease) {
    setFnGroup();
    EXPECT_EQ(flags(KeyEventFlags::secondaryFn), pass);
    EXPECT_TRUE(switches.empty());
    wait(0.59);
    EXPECT_EQ(flags(0), pass);
    EXPECT_EQ(switches, std::vector<std::string>{"b"});
    EXPECT_EQ(service.calls, (std::vector<std::string>{"currentID", "select b"}));
}

TEST_F(KeyInterceptorTest, AFnTapThatWasNotAloneFiresNothing) {
    setFnGroup();
    const std::vector<std::pair<const char*, std::function<void()>>> cases = {
        {"held too long", [this] { wait(0.61); }},
        {"a key in between", [this] { keyDown(0); }},
        {"a repeat in between", [this] { keyDown(0, 0, true); }},
        {"a special key in between", [this] { interceptor.handle({KeyEventType::systemDefined, 0, 0, 0, time}); }},
        {"another modifier in between", [this] { flags(KeyEventFlags::secondaryFn | KeyEventFlags::shift); }},
    };
    for (const auto& [name, disturb] : cases) {
        flags(KeyEventFlags::secondaryFn);
        disturb();
        flags(0);
        EXPECT_TRUE(switches.empty()) << name;
        wait(5);
    }
    flags(KeyEventFlags::command);
    flags(KeyEventFlags::command | KeyEventFlags::secondaryFn);
    flags(KeyEventFlags::command);
    EXPECT_TRUE(switches.empty()) << "pressed while Command was held";
}

TEST_F(KeyInterceptorTest, AShortcutPressedWithFnHeldStillMatches) {
    flags(KeyEventFlags::secondaryFn);
    EXPECT_EQ(keyDown(Shortcut::space, controlOption | KeyEventFlags::secondaryFn), swallow);
    EXPECT_EQ(switches.size(), 1U);
}

TEST_F(KeyInterceptorTest, AKeyUpDoesNotSpoilAFnTap) {
    setFnGroup();
    flags(KeyEventFlags::secondaryFn);
    keyUp(0);
    flags(0);
    EXPECT_EQ(switches.size(), 1U);
}

TEST_F(KeyInterceptorTest, SwitchedOffALoneFnTapSelectsNothing) {
    setGroups({{makeUUID(), Shortcut::fn, {"a", "b"}}}, false);
    tapFn();
    EXPECT_TRUE(service.calls.empty());
}

TEST_F(KeyInterceptorTest, WhileRecordingALoneFnTapGoesToTheRecorder) {
    setFnGroup();
    startRecording();
    tapFn();
    ASSERT_EQ(recorded.size(), 1U);
    EXPECT_EQ((Shortcut{recorded[0].first, recorded[0].second}), Shortcut::fn);
    EXPECT_TRUE(service.calls.empty());
}

TEST_F(KeyInterceptorTest, OtherEventTypesPassAndTouchNothing) {
    setFnGroup();
    flags(KeyEventFlags::secondaryFn);
    for (const std::uint32_t type : {0U, 1U, 5U, 13U, 22U, 29U}) {
        EXPECT_EQ(interceptor.handle({type, Shortcut::space, 0, controlOption, time}), pass);
    }
    flags(0);
    EXPECT_EQ(switches.size(), 1U) << "none of them may spoil a Fn tap";
}

TEST_F(KeyInterceptorTest, ADisabledTapIsTurnedOnAgain) {
    ASSERT_TRUE(interceptor.start());
    EXPECT_EQ(interceptor.handle({KeyEventType::tapDisabledByTimeout, 0, 0, 0, 0}), pass);
    EXPECT_EQ(interceptor.handle({KeyEventType::tapDisabledByUserInput, 0, 0, 0, 0}), pass);
    EXPECT_EQ(tap.enableCalls, 2);
}

TEST_F(KeyInterceptorTest, WithoutATapADisabledEventDoesNothing) {
    EXPECT_EQ(interceptor.handle({KeyEventType::tapDisabledByTimeout, 0, 0, 0, 0}), pass);
    EXPECT_EQ(tap.enableCalls, 0);
}

TEST_F(KeyInterceptorTest, StartingTwiceInstallsOneTap) {
    EXPECT_TRUE(interceptor.start());
    EXPECT_TRUE(interceptor.start());
    EXPECT_EQ(tap.installCalls, 1);
}

TEST_F(KeyInterceptorTest, ARefusedStartMayBeRepeated) {
    tap.allowed = false;
    EXPECT_FALSE(interceptor.start());
    EXPECT_FALSE(interceptor.start());
    tap.allowed = true;
    EXPECT_TRUE(interceptor.start());
    EXPECT_EQ(tap.callback({KeyEventType::keyDown, Shortcut::space, 0, controlOption, 0}), swallow);
}

}  // namespace
}  // namespace quillmere
