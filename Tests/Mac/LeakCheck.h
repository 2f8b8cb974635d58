#pragma once

#include <gtest/gtest.h>

namespace quillmere {

/// Fails each test that leaves an object of the played system behind.
class LeakCheck : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo& test) override;
    void OnTestEnd(const testing::TestInfo& test) override;

private:
    long objects_ = 0;
    long references_ = 0;
};

}  // namespace quillmere
