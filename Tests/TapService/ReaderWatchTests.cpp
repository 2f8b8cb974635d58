#include "TapService/ReaderWatch.h"

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/TapService/TapLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <string>

namespace quillmere::tap {
namespace {

using Clock = std::chrono::steady_clock;

/// The node is an ordinary file: to open and to read it is noticed in the same
/// way.
class ReaderWatchTest : public testing::Test {
protected:
    ReaderWatchTest() {
        std::ofstream(node_) << "something to read";
        watch_->begin();
    }

    std::unique_ptr<std::ifstream> openNode() const { return std::make_unique<std::ifstream>(node_); }
    static void read(std::ifstream& file) {
        char letter = 0;
        EXPECT_TRUE(file.get(letter));
    }

    support::TemporaryFolder folder_;
    std::string node_ = folder_.path() / "event0";
    TapLoop loop_;
    int probes_ = 0;
    int readies_ = 0;
    Clock::time_point readyAt_;
    std::unique_ptr<ReaderWatch> watch_ =
        std::make_unique<ReaderWatch>(loop_.get(), ReaderWatch::Handlers{.onProbe = [this] { ++probes_; },
                                                                         .onReady =
                                                                             [this] {
                                                                                 ++readies_;
                                                                                 readyAt_ = Clock::now();
                                                                                 watch_.reset();
                                                                             }});
};

TEST_F(ReaderWatchTest, WhoReadsIsADesktop) {
    watch_->appeared(node_);
    read(*openNode());
    EXPECT_TRUE(loop_.runUntil([this] { return readies_ > 0; }));
    EXPECT_EQ(readies_, 1);
}

TEST_F(ReaderWatchTest, WhoOnlyOpensTheNodeIsNone) {
    const auto begun = Clock::now();
    watch_->appeared(node_);
    const auto powerButtons = openNode();
    // Nobody ever reads: the wait has its bound, and no less.
    EXPECT_TRUE(loop_.runUntil([this] { return readies_ > 0; }));
    EXPECT_GE(readyAt_ - begun, ReaderWatch::longestWait);
}

TEST_F(ReaderWatchTest, WhoeverOpensTheNodeIsGivenSomethingToRead) {
    watch_->appeared(node_);
    ASSERT_TRUE(loop_.runUntil([this] { return probes_ == 1; }));
    const auto first = openNode();
    ASSERT_TRUE(loop_.runUntil([this] { return probes_ == 2; }));
    // A desktop that was held up until now.
    const auto desktop = openNode();
    ASSERT_TRUE(loop_.runUntil([this] { return probes_ == 3; }));
    EXPECT_EQ(readies_, 0);
    read(*desktop);
    EXPECT_TRUE(loop_.runUntil([this] { return readies_ == 1; }));
}

TEST_F(ReaderWatchTest, ToBeMadeKnownAgainChangesNothing) {
    watch_->appeared(node_);
    watch_->appeared(node_);
    read(*openNode());
    EXPECT_TRUE(loop_.runUntil([this] { return readies_ == 1; }));
}

TEST_F(ReaderWatchTest, ANodeThatIsNeverMadeKnownIsNotWaitedForLongerThanTheRest) {
    EXPECT_TRUE(loop_.runUntil([this] { return readies_ == 1; }));
    EXPECT_EQ(probes_, 0);
}

}  // namespace
}  // namespace quillmere::tap
