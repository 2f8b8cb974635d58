#include "TapService/CallerBudgets.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::tap {
namespace {

using namespace std::chrono_literals;

int spendAll(CallerBudgets& budgets, const std::string& caller, Time now) {
    int count = 0;
    while (budgets.spend(caller, now))
        ++count;
    return count;
}

TEST(CallerBudgets, OneCallersFloodCostsNoOtherCallerAnything) {
    CallerBudgets budgets;
    EXPECT_EQ(spendAll(budgets, ":1.1", 0s), 32);
    EXPECT_EQ(spendAll(budgets, ":1.2", 0s), 32);
    EXPECT_EQ(spendAll(budgets, ":1.1", 1s), 8);
}

TEST(CallerBudgets, HoweverManyCallThereIsAnEndToWhatIsRemembered) {
    CallerBudgets budgets;
    spendAll(budgets, "silent", 0s);
    spendAll(budgets, "loud", 0s);
    for (std::size_t caller = 0; caller < CallerBudgets::limit; ++caller) {
        EXPECT_TRUE(budgets.spend(":1." + std::to_string(caller), 0s));
        // Whoever goes on calling is remembered.
        EXPECT_FALSE(budgets.spend("loud", 0s));
    }
    EXPECT_TRUE(budgets.spend("silent", 0s));
}

}  // namespace
}  // namespace quillmere::tap
