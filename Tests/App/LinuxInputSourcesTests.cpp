#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

/// A desktop with one layout that is there as long as the test says.
class PlayedDesktop : public DesktopInputSources {
public:
    explicit PlayedDesktop(std::string id) : id_(std::move(id)) {}

    bool isAvailable() override { return isThere; }
    std::vector<InputSourceRecord> sources() override {
        note();
        return {{.id = id_}};
    }
    std::optional<std::string> currentID() override {
        note();
        return id_;
    }
    int select(const InputSourceRecord&) override {
        note();
        return 0;
    }

    bool isThere = true;
    bool goesWhenAsked = false;
    int questions = 0;

private:
    void note() {
        ++questions;
        if (goesWhenAsked) isThere = false;
    }

    std::string id_;
};

class LinuxInputSourcesTest : public testing::Test {
protected:
    LinuxInputSourcesTest() {
        std::vector<std::unique_ptr<DesktopInputSources>> kinds;
        kinds.push_back(nullptr);
        for (PlayedDesktop** desktop : {&first, &second}) {
            auto played = std::make_unique<PlayedDesktop>(desktop == &first ? "xkb:us" : "xkb:ua");
            *desktop = played.get();
            kinds.push_back(std::move(played));
        }
        sources = std::make_unique<LinuxInputSources>(std::move(kinds));
    }

    PlayedDesktop* first = nullptr;
    PlayedDesktop* second = nullptr;
    std::unique_ptr<LinuxInputSources> sources;
};

TEST_F(LinuxInputSourcesTest, TheFirstDesktopThatIsThereIsAskedAndNoOther) {
    EXPECT_EQ(sources->currentID(), "xkb:us");
    EXPECT_EQ(sources->sources().front().id, "xkb:us");
    EXPECT_EQ(sources->select({}), 0);
    EXPECT_EQ(second->questions, 0);
}

TEST_F(LinuxInputSourcesTest, OneThatGoesGivesWayToTheNextAndHasItsPlaceAgainLater) {
    first->isThere = false;
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    first->isThere = true;
    EXPECT_EQ(sources->currentID(), "xkb:us");
}

TEST_F(LinuxInputSourcesTest, OneThatIsFoundToHaveGoneGivesWayInTheSameCall) {
    first->goesWhenAsked = true;
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    EXPECT_EQ(first->questions, 1);
}

TEST_F(LinuxInputSourcesTest, WithoutAnyThereIsNothing) {
    first->isThere = second->isThere = false;
    EXPECT_TRUE(sources->sources().empty());
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_NE(sources->select({}), 0);
}

/// How long a wait that begins now may last.
std::chrono::steady_clock::duration timeLeft() {
    const auto now = std::chrono::steady_clock::now();
    return SwitchWait().deadline() - now;
}

void waitUntilTheEnd() {
    const SwitchWait wait;
    std::this_thread::sleep_until(wait.deadline());
}

TEST(SwitchWaitTest, TheWaitsOfOneSwitchHaveOneTimeTogetherAndTheNextSwitchItsOwn) {
    QCoreApplication::processEvents();
    waitUntilTheEnd();
    EXPECT_LT(timeLeft(), longestSwitch / 2);
    QCoreApplication::processEvents();
    EXPECT_GE(timeLeft(), longestSwitch);
}

TEST(SwitchWaitTest, AStartThatTakesLongStillHasTheTimeToAsk) {
    QCoreApplication::processEvents();
    ASSERT_GT(timeLeft(), longestSwitch / 2);
    std::this_thread::sleep_for(longestSwitch);
    EXPECT_GT(timeLeft(), longestSwitch / 2);
}

}  // namespace

}  // namespace quillmere
