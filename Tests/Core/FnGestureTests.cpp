#include "QuillmereCore/FnGesture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace quillmere {
namespace {

using Event = FnGesture::Event;

struct Step {
    Event event;
    double time;
    bool isTap;
};

void expectSteps(const char* name, const std::vector<Step>& steps) {
    FnGesture gesture;
    for (std::size_t i = 0; i < steps.size(); ++i)
        EXPECT_EQ(gesture.handle(steps[i].event, steps[i].time), steps[i].isTap) << name << ", step " << i;
}

const Event fnDown = Event::fnDown(false);
const Event fnDownWithOthers = Event::fnDown(true);
const Event fnUp = Event::fnUp();
const Event keyDown = Event::keyDown();
const Event modifiersChanged = Event::modifiersChanged();

TEST(FnGesture, ATapLastsAtMostSixTenthsOfASecond) {
    EXPECT_EQ(FnGesture::maxTapDuration, 0.6);
    // From zero, so that the elapsed time is exact in binary.
    expectSteps("exactly the limit", {{fnDown, 0.0, false}, {fnUp, 0.6, true}});
    expectSteps("a hair over it", {{fnDown, 0.0, false}, {fnUp, std::nextafter(0.6, 1.0), false}});
    expectSteps("released at 10.6", {{fnDown, 10.0, false}, {fnUp, 10.6, true}});
    expectSteps("released at 10.61", {{fnDown, 10.0, false}, {fnUp, 10.61, false}});
    expectSteps("at once", {{fnDown, 10.0, false}, {fnUp, 10.0, true}});
}

TEST(FnGesture, AKeyWhileFnIsDownCancelsTheTap) {
    expectSteps("key", {{fnDown, 10.0, false}, {keyDown, 10.1, false}, {fnUp, 10.2, false}});
}

TEST(FnGesture, AnotherModifierWhileFnIsDownCancelsTheTap) {
    expectSteps("modifier", {{fnDown, 10.0, false}, {modifiersChanged, 10.1, false}, {fnUp, 10.2, false}});
}

TEST(FnGesture, FnPressedWithAnotherModifierHeldIsNoTap) {
    expectSteps("held before", {{fnDownWithOthers, 10.0, false}, {fnUp, 10.1, false}});
    expectSteps("held at a second press",
                {{fnDown, 10.0, false}, {fnDownWithOthers, 10.1, false}, {fnUp, 10.2, false}});
}

TEST(FnGesture, AReleaseWithNothingBeforeItIsNoTapAndLeavesTheGestureIdle) {
    expectSteps("lone release", {{fnUp, 10.0, false}, {fnUp, 10.1, false}, {fnDown, 11.0, false}, {fnUp, 11.1, true}});
}

TEST(FnGesture, ASecondPressRestartsTheTiming) {
    expectSteps("twice", {{fnDown, 10.0, false}, {fnDown, 11.0, false}, {fnUp, 11.5, true}});
}

TEST(FnGesture, AfterATapAFurtherReleaseIsNoTap) {
    expectSteps("again", {{fnDown, 10.0, false}, {fnUp, 10.1, true}, {fnUp, 10.2, false}});
}

TEST(FnGesture, AfterTooLongAPressAFurtherReleaseIsNoTap) {
    expectSteps("late", {{fnDown, 10.0, false}, {fnUp, 12.0, false}, {fnUp, 10.1, false}});
}

TEST(FnGesture, AReleaseStampedBeforeItsPressIsATap) {
    expectSteps("earlier", {{fnDown, 10.0, false}, {fnUp, 9.0, true}});
}

TEST(FnGesture, AnElapsedTimeThatIsNoNumberIsNoTap) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    expectSteps("release at no time", {{fnDown, 10.0, false}, {fnUp, notANumber, false}});
    expectSteps("press at no time", {{fnDown, notANumber, false}, {fnUp, 10.0, false}});
    expectSteps("both never", {{fnDown, infinity, false}, {fnUp, infinity, false}});
}

TEST(FnGesture, ACancelledTapStartsAgainOnlyWithANewPress) {
    expectSteps("cancelled", {{fnDown, 10.0, false},
                              {modifiersChanged, 10.1, false},
                              {modifiersChanged, 10.2, false},
                              {fnUp, 10.3, false},
                              {fnDown, 10.4, false},
                              {fnUp, 10.5, true}});
}

TEST(FnGesture, KeysAndModifiersOutsideATapChangeNothing) {
    expectSteps("before",
                {{keyDown, 9.8, false}, {modifiersChanged, 9.9, false}, {fnDown, 10.0, false}, {fnUp, 10.1, true}});
}

TEST(FnGesture, ACopyGoesItsOwnWay) {
    FnGesture gesture;
    gesture.handle(fnDown, 10.0);
    FnGesture copy = gesture;
    EXPECT_FALSE(copy.handle(keyDown, 10.1));
    EXPECT_FALSE(copy.handle(fnUp, 10.2));
    EXPECT_TRUE(gesture.handle(fnUp, 10.2));
}

TEST(FnGesture, EventsAreEqualByCaseAndByTheOtherModifiers) {
    EXPECT_EQ(Event::fnDown(true), Event::fnDown(true));
    EXPECT_NE(Event::fnDown(true), Event::fnDown(false));
    const Event all[] = {fnDown, fnUp, keyDown, modifiersChanged};
    for (const Event& one : all)
        for (const Event& other : all)
            EXPECT_EQ(one == other, &one == &other);
}

}  // namespace
}  // namespace quillmere
