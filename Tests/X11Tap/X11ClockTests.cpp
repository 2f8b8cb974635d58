#include "Quillmere/Platform/Linux/Tap/X11/X11Clock.h"

#include <gtest/gtest.h>

namespace quillmere {

namespace {

constexpr std::uint64_t millisecond = 1'000'000;

TEST(X11Clock, MillisecondsBecomeNanoseconds) {
    X11Clock clock;
    EXPECT_EQ(clock.nanoseconds(1000), 1000 * millisecond);
    EXPECT_EQ(clock.nanoseconds(1600), 1600 * millisecond);
}

TEST(X11Clock, TimeGoesOnWhenTheServersCounterStartsAgain) {
    X11Clock clock;
    const std::uint64_t before = clock.nanoseconds(0xFFFFFF00);
    EXPECT_EQ(clock.nanoseconds(0x00000100) - before, 0x200 * millisecond);
    EXPECT_EQ(clock.nanoseconds(0xFFFFFF80) - before, 0x80 * millisecond) << "an event that comes late";
}

TEST(X11Clock, AnEarlierEventIsEarlier) {
    X11Clock clock;
    EXPECT_EQ(clock.nanoseconds(5000) - clock.nanoseconds(4990), 10 * millisecond);
}

TEST(X11Clock, SeveralTurnsOfTheCounterAddUp) {
    X11Clock clock;
    const std::uint64_t start = clock.nanoseconds(0);
    std::uint64_t last = start;
    for (int i = 1; i <= 40; ++i)
        last = clock.nanoseconds((static_cast<unsigned long>(i) * 0x40000000UL) & 0xFFFFFFFFUL);
    EXPECT_EQ(last - start, 40ULL * 0x40000000ULL * millisecond);
}

}  // namespace

}  // namespace quillmere
