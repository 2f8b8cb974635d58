#include "TapService/Budget.h"

#include <gtest/gtest.h>

namespace quillmere::tap {
namespace {

using namespace std::chrono_literals;

int spendAll(Budget& budget, Time now) {
    int count = 0;
    while (budget.spend(now))
        ++count;
    return count;
}

TEST(Budget, ABurstIsPaidForAndNoMore) {
    Budget budget(256, 64, 0s);
    EXPECT_EQ(spendAll(budget, 0s), 256);
    EXPECT_FALSE(budget.spend(0s));
}

TEST(Budget, ItComesBackWithTime) {
    Budget budget(256, 64, 10s);
    spendAll(budget, 10s);
    EXPECT_EQ(spendAll(budget, 11s), 64);
    EXPECT_EQ(spendAll(budget, 11s + 500ms), 32);
    EXPECT_EQ(spendAll(budget, 11s + 501ms), 0);
}

TEST(Budget, SavingsEndAtOneBurst) {
    Budget budget(256, 64, 0s);
    spendAll(budget, 0s);
    EXPECT_EQ(spendAll(budget, 3600s), 256);
}

}  // namespace
}  // namespace quillmere::tap
