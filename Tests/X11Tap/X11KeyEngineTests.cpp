#include "Tests/X11Tap/X11TapBench.h"

#include <gtest/gtest.h>

namespace quillmere::support {
namespace {

using namespace std::chrono_literals;

class X11KeyEngineTest : public testing::Test {
protected:
    ~X11KeyEngineTest() override { EXPECT_EQ(bench.finish(), std::vector<std::string>{}); }

    bool isKeyRead() const { return bench.keyboard.isListeningToKeys(); }

    X11TapBench bench;
};

TEST_F(X11KeyEngineTest, WithNothingOfInterestNothingIsListenedTo) {
    EXPECT_FALSE(bench.keyboard.isListening());
    EXPECT_TRUE(bench.keyboard.ours().empty());
}

TEST_F(X11KeyEngineTest, KeysAreReadFromTheFirstModifierOfAShortcutUntilItIsOver) {
    bench.play("want:ctrl+space +a -a +shift -shift +alt");
    EXPECT_FALSE(isKeyRead());
    bench.play("-alt +ctrl");
    EXPECT_TRUE(isKeyRead());
    bench.play("+space swallow -ctrl");
    EXPECT_TRUE(isKeyRead()) << "its release is still to come";
    bench.play("-space");
    EXPECT_FALSE(isKeyRead());
}

TEST_F(X11KeyEngineTest, KeysAreReadAllTheTimeWhileACombinationIsMissing) {
    bench.play("theirs:ctrl+space want:ctrl+space");
    EXPECT_TRUE(isKeyRead());
    bench.play("free:ctrl+space +ctrl +space swallow -space -ctrl");
    EXPECT_FALSE(isKeyRead());
}

TEST_F(X11KeyEngineTest, KeysAreReadAllTheTimeWhileFnIsOfInterest) {
    bench.play("want:fn");
    EXPECT_TRUE(isKeyRead());
}

TEST_F(X11KeyEngineTest, AMapThatChangesOftenIsReadOnceItHasSettled) {
    bench.play("want:alt+space swap swap swap");
    ASSERT_TRUE(bench.engine.deadline());
    EXPECT_EQ(*bench.engine.deadline(), bench.now + X11KeyEngine::keymapSettles);
    bench.advance(X11KeyEngine::keymapSettles - 1ms);
    EXPECT_TRUE(bench.engine.deadline());
    bench.advance(1ms);
    EXPECT_FALSE(bench.engine.deadline());
}

TEST_F(X11KeyEngineTest, ARecordingThatCannotHaveTheKeyboardTriesAgainUntilItIsOver) {
    bench.play("menu record");
    ASSERT_TRUE(bench.engine.deadline());
    EXPECT_EQ(*bench.engine.deadline(), bench.now + X11KeyEngine::recordingRetryInterval);
    bench.play("wait");
    EXPECT_TRUE(bench.engine.deadline());
    bench.play("stop");
    EXPECT_FALSE(bench.engine.deadline());
}

TEST_F(X11KeyEngineTest, ARecordingKeepsTheKeyboardForHalfAMinuteOnly) {
    bench.play("record");
    bench.advance(X11KeyEngine::longestRecording - 1ms);
    EXPECT_TRUE(bench.keyboard.isOursActive());
    bench.advance(1ms);
    EXPECT_FALSE(bench.keyboard.isOursActive());
    EXPECT_FALSE(bench.engine.deadline());
    // A locker can have it now; what is pressed is still recorded.
    bench.play("+ctrl +k pass -k -ctrl");
    EXPECT_EQ(bench.keyboard.seen, "+ctrl +k -k -ctrl");
    EXPECT_NE(bench.verdicts.log.find("ctrl+k"), std::string::npos) << bench.verdicts.log;
    // The next one has it again.
    bench.play("stop record");
    EXPECT_TRUE(bench.keyboard.isOursActive());
    bench.play("stop");
}

TEST_F(X11KeyEngineTest, ARecordingThatHasLastedTooLongEndsOnceItsKeysAreUp) {
    bench.play("record +ctrl");
    bench.advance(X11KeyEngine::longestRecording);
    EXPECT_TRUE(bench.keyboard.isOursActive());
    bench.play("-ctrl");
    EXPECT_FALSE(bench.keyboard.isOursActive());
    EXPECT_EQ(bench.keyboard.seen, "");
    bench.play("stop");
}

TEST_F(X11KeyEngineTest, AKeyBeyondACoreKeyboardPasses) {
    bench.play("want:ctrl+space");
    constexpr unsigned int beyond = 300;
    bench.engine.rawPress(beyond, 2000);
    bench.engine.rawRelease(beyond, 2001);
    EXPECT_EQ(bench.verdicts.log, "");
}

TEST_F(X11KeyEngineTest, AVerdictIsForItsOwnPressOnly) {
    // The first press goes to another client's grab, so that only the second
    // one is delivered to us.
    bench.play(
        "want:ctrl+space theirs:ctrl+space +ctrl +space swallow -space free:ctrl+space +space pass -space -ctrl");
    EXPECT_EQ(bench.keyboard.seen, "+ctrl +space -space +space -space -ctrl");
}

TEST_F(X11KeyEngineTest, ClientsSeeNoReleaseOfAShortcutWhoseGrabALetterHasEnded) {
    bench.play("want:ctrl+space +a +ctrl +space swallow -a");
    EXPECT_TRUE(bench.keyboard.isOursActive());
    bench.play("-space");
    EXPECT_FALSE(bench.keyboard.isOursActive());
    bench.play("-ctrl");
    EXPECT_EQ(bench.keyboard.seen, "+a +ctrl -a -ctrl");
}

TEST_F(X11KeyEngineTest, TheKeyboardIsNotTakenBackForAShortcutThatIsUpAlready) {
    bench.play("want:ctrl+space +a +ctrl +space swallow ( -a -space )");
    EXPECT_FALSE(bench.keyboard.isOursActive());
}

}  // namespace
}  // namespace quillmere::support
