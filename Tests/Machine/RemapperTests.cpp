#include "Tests/Machine/Remapper.h"
#include "Tests/Machine/TapTest.h"

// Another program that takes keyboards and types on one of its own.
namespace quillmere::machine {

namespace {

class BesideARemapper : public TapTest {
protected:
    /// Types until what arrives comes from the remapper's keyboard, through
    /// the tap service's stand-in for it.
    void waitForBoth() {
        ASSERT_TRUE(waitUntil([&] {
            desk_.clear();
            monitor().type(taps({KEY_F12}));
            return waitUntil([&] { return desk_.strokes().size() >= 2; }, moment) && comesThroughBoth();
        })) << desk_.describe();
        desk_.clear();
        owner().clear();
    }

    void expectOneShortcut() {
        monitor().type(taps({KEY_A}) + ctrlSpaceStrokes + taps({KEY_B}));
        EXPECT_TRUE(hasGot(taps({KEY_A}) + ctrlStrokes + taps({KEY_B})));
        // The owner is a process of its own, and tells what it was asked later.
        EXPECT_TRUE(waitUntil([this] { return questions() > 0; }));
        EXPECT_EQ(questions(), 1U);
    }

private:
    bool comesThroughBoth() const {
        for (const DeskEvent& event : desk_.events())
            if (event.device != Remapper::keyboardName || !event.isFromClone) return false;
        return true;
    }
};

}  // namespace

TEST_F(BesideARemapper, AShortcutIsSwallowedOnce) {
    const Remapper remapper;
    owner().answer(TapOwner::Answer::swallow);
    owner().send(tap::Interest{.shortcuts = {ctrlSpace}});
    ASSERT_NO_FATAL_FAILURE(waitForBoth());
    expectOneShortcut();
}

TEST_F(BesideARemapper, AShortcutIsSwallowedOnceWhenThatStartsLater) {
    listen(TapOwner::Answer::swallow);
    const Remapper remapper;
    ASSERT_NO_FATAL_FAILURE(waitForBoth());
    expectOneShortcut();
}

}  // namespace quillmere::machine
