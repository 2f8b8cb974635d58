#pragma once

#include <gtest/gtest.h>

namespace quillmere {

/// The Mac that the smoke tests find where there is none: one layout, and it is
/// current.
class PlayedMac : public testing::EmptyTestEventListener {
public:
    void OnTestSuiteStart(const testing::TestSuite& suite) override;
    void OnTestSuiteEnd(const testing::TestSuite& suite) override;
};

}  // namespace quillmere
