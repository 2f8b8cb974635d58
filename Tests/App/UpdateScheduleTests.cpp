#include "Quillmere/Updates/UpdateSchedule.h"

#include "Tests/Support/ManualQueue.h"
#include "Tests/Support/MemoryDefaults.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace quillmere {

using namespace std::chrono_literals;

namespace {

constexpr double hour = 3600;
constexpr double day = 86'400;

UpdateOffer offer(const std::string& version) {
    return {.version = AppVersion::parse(version).value(),
            .size = std::nullopt,
            .notes = {},
            .downloadURL = URL::parse("https://example.org/a.deb").value()};
}

class UpdateScheduleTest : public testing::Test {
protected:
    void completeWith(const UpdateResult& result) {
        auto completion = std::move(completions.front());
        completions.erase(completions.begin());
        completion(result);
    }

    std::unique_ptr<UpdateSchedule> make() {
        return std::make_unique<UpdateSchedule>(
            queue, store, AppVersion::parse("1.3.2").value(),
            UpdateSchedule::Actions{
                .check =
                    [this](UpdateSchedule::Completion completion) {
                        ++checks;
                        lastCheckAtRequest = store.lastCheck();
                        completions.push_back(std::move(completion));
                    },
                .present = [this](const UpdateOffer& shown) { presented.push_back(shown.version.description()); },
                .alert = [this](const std::string& message,
                                const std::string& text) { alerts.emplace_back(message, text); },
            });
    }

    bool isSilent() const { return presented.empty() && alerts.empty(); }

    ManualQueue queue;
    MemoryDefaults defaults;
    UpdateStore store{defaults};
    int checks = 0;
    std::optional<Date> lastCheckAtRequest;
    std::vector<UpdateSchedule::Completion> completions;
    std::vector<std::string> presented;
    std::vector<std::pair<std::string, std::string>> alerts;
    std::unique_ptr<UpdateSchedule> schedule = make();
};

}  // namespace

TEST_F(UpdateScheduleTest, NothingRunsBeforeTheStart) {
    queue.advance(2 * day);
    EXPECT_EQ(checks, 0);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(UpdateScheduleTest, TheFirstCheckComesThirtySecondsAfterTheStart) {
    schedule->startUpdateSchedule();
    queue.advance(29.9);
    EXPECT_EQ(checks, 0);
    queue.advance(0.1);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, ThereIsNoCheckBeforeADayHasPassed) {
    schedule->startUpdateSchedule();
    queue.advance(30);
    completeWith(UpdateResult::upToDate());
    queue.advance(day);
    EXPECT_EQ(checks, 1) << "the tick that came half a minute too early";
    queue.advance(hour);
    EXPECT_EQ(checks, 2);
}

TEST_F(UpdateScheduleTest, InAWeekThereAreAboutSevenChecks) {
    schedule->startUpdateSchedule();
    for (int i = 0; i < 7 * 24; ++i) {
        queue.advance(hour);
        while (!completions.empty())
            completeWith(UpdateResult::upToDate());
    }
    EXPECT_GE(checks, 7);
    EXPECT_LE(checks, 8);
}

TEST_F(UpdateScheduleTest, ACheckOfAnEarlierRunCounts) {
    store.setLastCheck(queue.now() - 12h);
    schedule->startUpdateSchedule();
    queue.advance(11 * hour);
    EXPECT_EQ(checks, 0);
    queue.advance(hour);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, ACheckADayAgoToTheSecondMakesTheFirstDue) {
    store.setLastCheck(queue.now() + 30s - 24h);
    schedule->startUpdateSchedule();
    queue.advance(30);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, ACheckASecondLessThanADayAgoDoesNot) {
    store.setLastCheck(queue.now() + 31s - 24h);
    schedule->startUpdateSchedule();
    queue.advance(30);
    EXPECT_EQ(checks, 0);
}

TEST_F(UpdateScheduleTest, AClockThatWasSetBackMakesACheckDue) {
    schedule->startUpdateSchedule();
    queue.advance(30);
    completeWith(UpdateResult::upToDate());
    queue.setNow(queue.now() - 48h);
    queue.advance(hour);
    EXPECT_EQ(checks, 2);
}

TEST_F(UpdateScheduleTest, TheTimeOfTheCheckIsStoredBeforeTheRequest) {
    schedule->startUpdateSchedule();
    queue.advance(30);
    EXPECT_EQ(lastCheckAtRequest, queue.now());
    EXPECT_EQ(store.lastCheck(), queue.now());
}

TEST_F(UpdateScheduleTest, ACheckThatFailsCountsForTheDay) {
    schedule->startUpdateSchedule();
    queue.advance(30);
    completeWith(UpdateResult::failed("The server answered 500."));
    queue.advance(20 * hour);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, WithoutAutomaticChecksNoneEverRuns) {
    store.setAutomatic(false);
    schedule->startUpdateSchedule();
    queue.advance(7 * day);
    EXPECT_EQ(checks, 0);
    EXPECT_EQ(store.lastCheck(), std::nullopt);
}

TEST_F(UpdateScheduleTest, WithoutAutomaticChecksAManualOneStillWorks) {
    store.setAutomatic(false);
    schedule->startUpdateSchedule();
    schedule->runUpdateCheck(true);
    EXPECT_EQ(checks, 1);
    EXPECT_EQ(store.lastCheck(), queue.now());
    completeWith(UpdateResult::upToDate());
    EXPECT_EQ(alerts.size(), 1U);
}

TEST_F(UpdateScheduleTest, TurningAutomaticChecksOnAgainIsSeenWithinTheHour) {
    store.setAutomatic(false);
    schedule->startUpdateSchedule();
    queue.advance(2 * day);
    store.setAutomatic(true);
    queue.advance(hour);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, AManualCheckRunsAtOnceHoweverRecentTheLast) {
    store.setLastCheck(queue.now());
    schedule->runUpdateCheck(true);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, AManualCheckPutsTheNextAutomaticOneOff) {
    schedule->startUpdateSchedule();
    schedule->runUpdateCheck(true);
    completeWith(UpdateResult::upToDate());
    queue.advance(23 * hour);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, OfTwoManualRequestsTheSecondIsDropped) {
    schedule->runUpdateCheck(true);
    queue.advance(5);
    schedule->runUpdateCheck(true);
    EXPECT_EQ(checks, 1);
    EXPECT_EQ(store.lastCheck(), lastCheckAtRequest);
    completeWith(UpdateResult::upToDate());
    EXPECT_EQ(alerts.size(), 1U);
    EXPECT_FALSE(schedule->checkingUpdate());
    schedule->runUpdateCheck(true);
    EXPECT_EQ(checks, 2);
}

TEST_F(UpdateScheduleTest, AManualRequestDuringAnAutomaticCheckShowsNothingAtAll) {
    schedule->startUpdateSchedule();
    queue.advance(30);
    schedule->runUpdateCheck(true);
    EXPECT_EQ(checks, 1);
    completeWith(UpdateResult::upToDate());
    EXPECT_TRUE(isSilent());
}

TEST_F(UpdateScheduleTest, AnAutomaticCheckThatFallsDueDuringAManualOneIsDropped) {
    schedule->startUpdateSchedule();
    schedule->runUpdateCheck(true);
    store.setLastCheck(std::nullopt);
    queue.advance(30);
    EXPECT_EQ(checks, 1);
}

TEST_F(UpdateScheduleTest, AnAutomaticCheckIsSilentWhenItFindsNothingOrFails) {
    schedule->runUpdateCheck(false);
    completeWith(UpdateResult::upToDate());
    schedule->runUpdateCheck(false);
    completeWith(UpdateResult::failed("The server answered 500."));
    EXPECT_TRUE(isSilent());
}

TEST_F(UpdateScheduleTest, AManualCheckSaysThatTheProgramIsUpToDate) {
    schedule->runUpdateCheck(true);
    completeWith(UpdateResult::upToDate());
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].first, "You're up to date.");
    EXPECT_EQ(alerts[0].second, "Quillmere 1.3.2 is the latest version.");
}

TEST_F(UpdateScheduleTest, AManualCheckSaysWhyItFailed) {
    schedule->runUpdateCheck(true);
    completeWith(UpdateResult::failed("The server answered 500."));
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].first, "Couldn't check for updates.");
    EXPECT_EQ(alerts[0].second, "The server answered 500.");
}

TEST_F(UpdateScheduleTest, BothKindsOfCheckPresentANewerVersion) {
    for (const bool manual : {false, true}) {
        presented.clear();
        schedule->runUpdateCheck(manual);
        completeWith(UpdateResult::available(offer("1.4.0")));
        EXPECT_EQ(presented, std::vector<std::string>{"1.4.0"});
    }
    EXPECT_TRUE(alerts.empty());
}

TEST_F(UpdateScheduleTest, AnAutomaticCheckDoesNotPresentTheSkippedVersion) {
    store.setSkipped(AppVersion::parse("1.4"));
    schedule->runUpdateCheck(false);
    completeWith(UpdateResult::available(offer("1.4.0")));
    EXPECT_TRUE(isSilent());
    schedule->runUpdateCheck(false);
    completeWith(UpdateResult::available(offer("1.4.1")));
    EXPECT_EQ(presented, std::vector<std::string>{"1.4.1"});
}

TEST_F(UpdateScheduleTest, AManualCheckPresentsTheSkippedVersion) {
    store.setSkipped(AppVersion::parse("1.4.0"));
    schedule->runUpdateCheck(true);
    completeWith(UpdateResult::available(offer("1.4.0")));
    EXPECT_EQ(presented, std::vector<std::string>{"1.4.0"});
}

TEST_F(UpdateScheduleTest, AVersionThatIsSkippedDuringTheCheckIsNotPresented) {
    schedule->runUpdateCheck(false);
    store.setSkipped(AppVersion::parse("1.4.0"));
    completeWith(UpdateResult::available(offer("1.4.0")));
    EXPECT_TRUE(isSilent());
}

TEST_F(UpdateScheduleTest, AResultThatComesWhenTheScheduleIsGoneIsDropped) {
    schedule->startUpdateSchedule();
    schedule->runUpdateCheck(true);
    schedule.reset();
    completeWith(UpdateResult::upToDate());
    EXPECT_TRUE(isSilent());
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(UpdateScheduleTest, AnAnswerMayStartTheNextCheck) {
    schedule->runUpdateCheck(true);
    auto completion = std::move(completions.front());
    completions.clear();
    completion(UpdateResult::upToDate());
    schedule->runUpdateCheck(true);
    EXPECT_EQ(checks, 2);
    EXPECT_TRUE(schedule->checkingUpdate());
}

}  // namespace quillmere
