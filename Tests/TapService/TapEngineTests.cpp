#include "Tests/TapService/TapBench.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

#include <string>
#include <vector>

namespace quillmere::tap {
namespace {

using namespace std::chrono_literals;

class TapEngineTest : public testing::Test {
protected:
    ~TapEngineTest() override { EXPECT_EQ(bench.keyboards.faults, std::vector<std::string>{}); }

    /// While the owner does not read.
    void playUnread(const std::string& words) {
        bench.owner.reads = false;
        bench.play(words);
        bench.owner.reads = true;
    }

    TapBench bench;
};

TEST_F(TapEngineTest, FnAloneListensAndNeverGrabsOrClones) {
    bench.plug();
    bench.own({"fn"});
    EXPECT_TRUE(bench.keyboard().isOpen);
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    EXPECT_FALSE(bench.keyboard().hasClone);
}

TEST_F(TapEngineTest, ForFnAloneNothingThatIsTypedWakesTheService) {
    bench.plug(TapBench::first);
    bench.plug(TapBench::second, {"a", "b"});
    bench.own({"fn"});
    bench.play("+a ~a ~a -a +ctrl +b -b -ctrl wheel 2+b 2-b");
    EXPECT_EQ(bench.keyboard(TapBench::first).heard, 0);
    EXPECT_EQ(bench.keyboard(TapBench::second).heard, 0);
    // Nor after Fn has been down, which other keys are heard for.
    bench.play("+fn +a -a -fn");
    const int heard = bench.keyboard(TapBench::first).heard;
    bench.play("+a -a");
    EXPECT_EQ(bench.keyboard(TapBench::first).heard, heard);
    EXPECT_EQ(bench.owner.log, "flags:fn+ other flags:");
}

TEST_F(TapEngineTest, AKeyHeldWhenTheOwnerComesIsHeardToTheEnd) {
    bench.plug();
    bench.keyboards.move(TapBench::first, KEY_ENTER, 1);
    bench.own({"fn"});
    EXPECT_TRUE(bench.keyboard().isHeardInFull);
    bench.play("-enter");
    EXPECT_FALSE(bench.keyboard().isHeardInFull);
}

TEST_F(TapEngineTest, AShortcutBesideFnHasEveryKeyHeard) {
    bench.plug();
    bench.own({"fn"});
    bench.play("+a");
    bench.interest.shortcuts = {{KEY_SPACE, Flags::control}};
    bench.engine.setInterest(bench.interest, bench.keyboards.now);
    bench.turn();
    EXPECT_TRUE(bench.keyboard().isHeardInFull);
    EXPECT_FALSE(bench.isGrabbed());
    bench.play("-a +ctrl +space swallow -space -ctrl");
    EXPECT_EQ(bench.keyboards.output, "+ctrl -ctrl");
    // What is held is known to the end before the keyboard is heard no more.
    bench.play("+b");
    bench.own({"fn"});
    EXPECT_TRUE(bench.keyboard().isHeardInFull);
    bench.play("-b");
    EXPECT_FALSE(bench.isGrabbed());
    EXPECT_FALSE(bench.keyboard().isHeardInFull);
}

TEST_F(TapEngineTest, AServiceThatIsLateForFnTakesItForNoTap) {
    bench.plug();
    bench.own({"fn"});
    bench.keyboards.move(TapBench::first, KEY_FN, 1);
    // Whatever comes now, before the service has heard of Fn, it does not hear.
    bench.keyboards.move(TapBench::first, KEY_A, 1);
    bench.keyboards.move(TapBench::first, KEY_A, 0);
    bench.keyboards.now += 60ms;
    bench.deliver();
    bench.play("-fn");
    EXPECT_EQ(bench.owner.log, "flags:fn+ other flags:");
}

TEST_F(TapEngineTest, WithoutAnyFnKeyNothingIsOpenedForFn) {
    bench.plug(TapBench::first, {"a", "ctrl", "space"});
    bench.own({"fn"});
    EXPECT_FALSE(bench.keyboard().isOpen);
    bench.plug(TapBench::second, {"fn"});
    EXPECT_TRUE(bench.keyboard().isOpen);
    EXPECT_TRUE(bench.keyboard(TapBench::second).isOpen);
}

TEST_F(TapEngineTest, WithoutAnyInterestNothingIsOpened) {
    bench.plug();
    bench.own({});
    EXPECT_EQ(bench.keyboard().openCalls, 0);
}

TEST_F(TapEngineTest, OnlyDevicesThatCanSendAShortcutAreGrabbed) {
    bench.plug(TapBench::first, {"power", "dim"});
    bench.plug(TapBench::second, {"f13"});
    bench.own({"ctrl+f13"});
    EXPECT_FALSE(bench.keyboard(TapBench::first).isGrabbed);
    EXPECT_TRUE(bench.keyboard(TapBench::second).isGrabbed);
}

TEST_F(TapEngineTest, AKeyThatIsTypedGrabsNothing) {
    bench.plug();
    bench.own({"a", "shift+b"});
    EXPECT_FALSE(bench.keyboard().isOpen);
    EXPECT_FALSE(bench.keyboard().isGrabbed);
}

TEST_F(TapEngineTest, NoShortcutTakesAPowerButtonOrAMouse) {
    bench.plug(TapBench::first, {"power", "sleep", "suspend"});
    bench.plug(TapBench::second, {"click"});
    bench.own({"ctrl+power", "ctrl+sleep", "ctrl+suspend", "ctrl+click"});
    EXPECT_EQ(bench.keyboard(TapBench::first).openCalls, 0);
    EXPECT_EQ(bench.keyboard(TapBench::second).openCalls, 0);
}

TEST_F(TapEngineTest, AnInterestThatChangesAThousandTimesEndsWithTheLastOne) {
    bench.plug(TapBench::first);
    bench.plug(TapBench::second);
    for (int change = 0; change < 1000; ++change) {
        bench.interest.shortcuts = {{static_cast<std::uint16_t>(KEY_F1 + change % 10), Flags::control}};
        if (change % 3 == 0) bench.interest.shortcuts.clear();
        bench.engine.setInterest(bench.interest, bench.keyboards.now);
    }
    bench.own({"ctrl+space"});
    EXPECT_TRUE(bench.isGrabbed(TapBench::first));
    EXPECT_TRUE(bench.isGrabbed(TapBench::second));
    bench.play("leave");
    EXPECT_FALSE(bench.keyboard(TapBench::first).isOpen);
    EXPECT_FALSE(bench.keyboard(TapBench::second).isOpen);
}

TEST_F(TapEngineTest, AfterTheChordAnotherTapWaitsForAllKeysAndThreeSeconds) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+backspace +esc +enter");
    bench.own({"ctrl+space"});
    bench.play("-enter -esc");
    bench.advance(DeviceGrabs::freedTime);
    EXPECT_FALSE(bench.isGrabbed());
    bench.play("-backspace");
    EXPECT_TRUE(bench.isGrabbed());

    bench.play("+backspace +esc +enter -backspace -esc -enter");
    bench.own({"ctrl+space"});
    EXPECT_FALSE(bench.isGrabbed());
    bench.advance(DeviceGrabs::freedTime);
    EXPECT_TRUE(bench.isGrabbed());
}

TEST_F(TapEngineTest, ARecordingGrabsWhatIsThereToTypeOn) {
    bench.plug(TapBench::first, {"power", "dim"});
    bench.plug(TapBench::second, {"a"});
    bench.own({});
    bench.play("record");
    EXPECT_FALSE(bench.keyboard(TapBench::first).isGrabbed);
    EXPECT_TRUE(bench.keyboard(TapBench::second).isGrabbed);
    bench.play("stop");
    EXPECT_FALSE(bench.keyboard(TapBench::second).isGrabbed);
    EXPECT_FALSE(bench.keyboard(TapBench::second).isOpen);
}

TEST_F(TapEngineTest, TheGrabWaitsUntilEveryKeyIsUp) {
    bench.plug();
    bench.keyboards.move(TapBench::first, KEY_A, 1);
    bench.own({"ctrl+space"});
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    bench.play("+b -a");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    bench.play("-b");
    EXPECT_TRUE(bench.keyboard().isGrabbed);
    EXPECT_EQ(bench.keyboards.output, "");
}

TEST_F(TapEngineTest, BeforeTheGrabAShortcutIsToldAndNotAskedAbout) {
    bench.plug();
    bench.keyboards.newClone = CloneState::making;
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space ~space -space -ctrl");
    EXPECT_EQ(bench.owner.log, "press:ctrl+space repeat:ctrl+space release:ctrl+space");
    EXPECT_EQ(bench.keyboards.output, "");

    bench.owner.log.clear();
    bench.engine.cloneMade(TapBench::first, true, bench.keyboards.now);
    bench.play("+ctrl +space swallow -space -ctrl");
    EXPECT_EQ(bench.owner.log, "ask:ctrl+space release:ctrl+space");
}

TEST_F(TapEngineTest, WithoutVirtualDevicesShortcutsWorkUnswallowed) {
    bench.plug();
    bench.keyboards.newClone = CloneState::failed;
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space -space -ctrl");
    EXPECT_EQ(bench.owner.log, "press:ctrl+space release:ctrl+space");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
}

TEST_F(TapEngineTest, TheGrabIsGivenBackWhenEveryKeyIsUp) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+a leave");
    EXPECT_TRUE(bench.keyboard().isGrabbed);
    bench.play("+b -b");
    EXPECT_EQ(bench.keyboards.output, "+a +b -b");
    bench.play("-a");
    EXPECT_EQ(bench.keyboards.output, "+a +b -b -a");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    EXPECT_FALSE(bench.keyboard().isOpen);
}

TEST_F(TapEngineTest, AHeldKeyCannotKeepTheGrabForEver) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+a leave");
    bench.advance(DeviceGrabs::ungrabDeadline);
    EXPECT_EQ(bench.keyboards.output, "+a -a");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    EXPECT_EQ(bench.engine.deadline(), std::nullopt);
}

TEST_F(TapEngineTest, ADisabledTapGrabsNothing) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space late -space -ctrl");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    bench.play("enable");
    EXPECT_TRUE(bench.keyboard().isGrabbed);
}

TEST_F(TapEngineTest, AGrabThatAnotherProgramHasIsTriedAgainWithTheNextKey) {
    bench.plug();
    bench.keyboards.grabIsFree = false;
    bench.own({"ctrl+space"});
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    bench.keyboards.grabIsFree = true;
    bench.play("+a");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
    bench.play("-a");
    EXPECT_TRUE(bench.keyboard().isGrabbed);
}

TEST_F(TapEngineTest, EventsFromBeforeTheGrabAreNotRepeatedOnTheClone) {
    bench.plug();
    bench.keyboards.newClone = CloneState::making;
    bench.own({"ctrl+space"});
    bench.engine.cloneMade(TapBench::first, true, bench.keyboards.now);
    bench.turn();
    ASSERT_TRUE(bench.keyboard().isGrabbed);
    const Time before = bench.keyboards.now - 1ms;
    bench.engine.handleEvent(TapBench::first, {EV_KEY, KEY_A, 1, before}, bench.keyboards.now);
    bench.engine.handleEvent(TapBench::first, {EV_KEY, KEY_A, 0, before}, bench.keyboards.now);
    EXPECT_EQ(bench.keyboards.output, "");
}

TEST_F(TapEngineTest, AnOwnerThatDoesNotReadIsDisabledAndTheKeyPassesAtOnce) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.owner.reads = false;
    bench.play("+ctrl +space -space -ctrl");
    EXPECT_EQ(bench.keyboards.output, "+ctrl +space -space -ctrl");
    EXPECT_EQ(bench.owner.log, "disabled");
    EXPECT_FALSE(bench.engine.isEnabled());
}

TEST_F(TapEngineTest, AnOwnerThatMissedFnIsNotToldOfOtherKeysLater) {
    bench.plug();
    bench.own({"fn"});
    playUnread("+fn");
    bench.play("enable +a -a -fn");
    EXPECT_EQ(bench.owner.log, "disabled");
}

TEST_F(TapEngineTest, AnOwnerThatMissedTheReleaseOfFnIsToldWhenItIsEnabled) {
    bench.plug();
    bench.own({"fn"});
    bench.play("+fn");
    playUnread("-fn");
    bench.play("enable +a -a");
    EXPECT_EQ(bench.owner.log, "flags:fn+ disabled flags:");
}

TEST_F(TapEngineTest, AnOwnerThatDidNotReadHearsNothingMoreOfItsOldKeys) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space swallow");
    playUnread("~space");
    bench.play("enable ~space -space -ctrl");
    EXPECT_EQ(bench.owner.log, "ask:ctrl+space disabled");
    EXPECT_EQ(bench.keyboards.output, "+ctrl -ctrl");
}

TEST_F(TapEngineTest, AKeyReleasedToAnotherProgramsGrabDoesNotKeepTheKeyboardFromBeingGrabbed) {
    bench.plug();
    bench.keyboards.grabIsFree = false;
    bench.keyboard().down.set(TapBench::code("a"));
    bench.own({"ctrl+space"});
    bench.keyboard().down.reset();
    bench.keyboards.grabIsFree = true;
    bench.play("+s -s +ctrl +space swallow -space -ctrl");
    EXPECT_EQ(bench.keyboards.output, "+ctrl -ctrl");
    EXPECT_EQ(bench.owner.log, "ask:ctrl+space release:ctrl+space");
}

TEST_F(TapEngineTest, AFloodBehindAQuestionEndsTheWait) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space");
    for (std::size_t count = 0; count < TapEngine::queueLimit; ++count) {
        bench.engine.handleEvent(TapBench::first, {EV_REL, REL_X, 1, bench.keyboards.now}, bench.keyboards.now);
    }
    EXPECT_EQ(bench.owner.log, "ask:ctrl+space disabled");
    EXPECT_EQ(bench.keyboards.output, "+ctrl +space");
    EXPECT_EQ(bench.keyboards.forwarded.back().type, EV_REL);
}

TEST_F(TapEngineTest, AxesOfACombinedDeviceAreForwardedUntouched) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("wheel");
    ASSERT_EQ(bench.keyboards.forwarded.size(), 2U);
    EXPECT_EQ(bench.keyboards.forwarded[0].code, REL_WHEEL);
    EXPECT_EQ(bench.keyboards.forwarded[0].value, 1);
    EXPECT_EQ(bench.keyboards.forwarded[1].type, EV_SYN);
}

TEST_F(TapEngineTest, ScanCodesGoWithTheirKeysAndASwallowedFrameIsNotReported) {
    bench.plug();
    bench.own({"ctrl+space"});
    const auto scanned = [this](std::uint16_t code, std::int32_t value) {
        bench.keyboards.move(TapBench::first, EV_MSC, MSC_SCAN, code);
        bench.keyboards.move(TapBench::first, code, value);
        bench.deliver();
    };
    scanned(KEY_LEFTCTRL, 1);
    ASSERT_EQ(bench.keyboards.forwarded.size(), 3U);
    EXPECT_EQ(bench.keyboards.forwarded[0].code, MSC_SCAN);
    EXPECT_EQ(bench.keyboards.forwarded[1].code, KEY_LEFTCTRL);
    EXPECT_EQ(bench.keyboards.forwarded[2].type, EV_SYN);
    scanned(KEY_SPACE, 1);
    bench.play("swallow");
    scanned(KEY_SPACE, 0);
    EXPECT_EQ(bench.keyboards.forwarded.size(), 3U);
}

TEST_F(TapEngineTest, LightsAreNotEchoed) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.keyboards.move(TapBench::first, EV_LED, LED_CAPSL, 1);
    bench.keyboards.move(TapBench::first, EV_SYN, SYN_REPORT, 0);
    bench.deliver();
    EXPECT_TRUE(bench.keyboards.forwarded.empty());
}

TEST_F(TapEngineTest, AnotherOwnerTakesOverWithoutSeeingWhatTheFirstWasTold) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space swallow");
    FakeOwner other;
    bench.engine.attach(other, {.shortcuts = {{KEY_K, Flags::control}}}, true, bench.keyboards.now);
    bench.play("-space");
    EXPECT_EQ(other.log, "");
    EXPECT_EQ(bench.keyboards.output, "+ctrl");
    bench.keyboards.move(TapBench::first, KEY_K, 1);
    bench.deliver();
    EXPECT_EQ(other.log, "ask:ctrl+k");
    EXPECT_EQ(bench.owner.log, "ask:ctrl+space");
    bench.engine.detach(bench.keyboards.now);
}

TEST_F(TapEngineTest, ReleasingEverythingLetsGoOfKeysAndGrabs) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("+ctrl +space +a");
    bench.engine.releaseEverything(bench.keyboards.now);
    EXPECT_EQ(bench.keyboards.output, "+ctrl +space +a -ctrl -a -space");
    EXPECT_FALSE(bench.keyboard().isGrabbed);
}

TEST_F(TapEngineTest, ADeviceThatCannotBeOpenedIsTriedAgainForTheNextOwnerOnly) {
    bench.plug();
    bench.keyboards.canOpen = false;
    bench.own({"ctrl+space"});
    bench.play("enable stop record stop");
    EXPECT_EQ(bench.keyboard().openCalls, 1);
    bench.keyboards.canOpen = true;
    bench.own({"ctrl+space"});
    EXPECT_TRUE(bench.keyboard().isGrabbed);
}

TEST_F(TapEngineTest, AForgottenDeviceIsForgottenOnce) {
    bench.plug();
    bench.own({"ctrl+space"});
    bench.play("unplug unplug +a -a");
    EXPECT_TRUE(bench.keyboard().isForgotten);
    EXPECT_EQ(bench.keyboards.output, "");
}

TEST_F(TapEngineTest, QuestionsAreNumberedFromOne) {
    bench.plug();
    bench.own({"ctrl+space"});
    EXPECT_EQ(bench.engine.lastSequence(), 0U);
    bench.play("+ctrl +space");
    EXPECT_EQ(bench.owner.lastQuestion, 1U);
    EXPECT_TRUE(bench.engine.awaits(1));
    bench.play("pass");
    EXPECT_FALSE(bench.engine.awaits(1));
}

}  // namespace
}  // namespace quillmere::tap
