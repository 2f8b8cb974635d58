#include "Quillmere/Doctor/Doctor.h"
#include "Quillmere/Doctor/Report.h"
#include "Tests/Support/FakeBundle.h"
#include "Tests/Support/FakeInputSourceService.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

namespace {

/// A system that says what a test tells it to.
class PlayedExamination : public Examination {
public:
    InputSourceService& inputSources() override { return sources; }
    const Bundle& bundle() override { return information; }
    std::vector<Finding> session() override { return {{"Desktop", "played", {}}}; }
    std::vector<Finding> keyboard(const std::vector<Shortcut>& shortcuts) override {
        asked = shortcuts;
        return {{"Tap", "played", {}}};
    }
    Stored stored() override { return {{"Settings", "played", {}}, config}; }
    std::vector<Finding> surroundings() override { return {{"Tray", "played", {}}}; }

    FakeInputSourceService sources;
    FakeBundle information;
    std::optional<Config> config;
    std::vector<Shortcut> asked;
};

class DoctorTest : public testing::Test {
protected:
    DoctorTest() {
        system.sources.records = {layout("xkb:us", "English (US)"), layout("xkb:ua", "Ukrainian")};
        system.sources.current = "xkb:ua";
    }

    Finding row(const std::string& subject, bool tries = false) {
        const std::vector<Finding> rows = Doctor(system, [this](const UpdateChecker&) {
                                              ++fetches;
                                              return answer;
                                          }).examine(tries);
        const auto found = std::ranges::find(rows, subject, &Finding::subject);
        return found == rows.end() ? Finding{"no such row", {}, {}} : *found;
    }

    PlayedExamination system;
    UpdateResult answer = UpdateResult::upToDate();
    int fetches = 0;
};

constexpr Shortcut controlAltSpace{Shortcut::space, Modifiers::control.unionWith(Modifiers::option)};

TEST_F(DoctorTest, EveryLayoutIsListedAndTheOneInUseIsMarked) {
    EXPECT_EQ(row("Layouts"), (Finding{"Layouts", "xkb:us  English (US)\nxkb:ua  Ukrainian  (in use)", {}}));
    EXPECT_TRUE(system.sources.selected.empty());
}

TEST_F(DoctorTest, TryingSelectsEachLayoutAndEndsWithTheOneThatWasInUse) {
    EXPECT_EQ(row("Layouts", true).state, "xkb:us  English (US)  selected\nxkb:ua  Ukrainian  (in use)  selected");
    EXPECT_EQ(system.sources.selected, (std::vector<std::string>{"xkb:us", "xkb:ua", "xkb:ua"}));
}

TEST_F(DoctorTest, ALayoutThatTheDesktopRefusesIsSaidToBe) {
    system.sources.status = 1;
    const Finding layouts = row("Layouts", true);
    EXPECT_EQ(layouts.state, "xkb:us  English (US)  REFUSED\nxkb:ua  Ukrainian  (in use)  REFUSED");
    EXPECT_FALSE(layouts.advice.empty());
}

TEST_F(DoctorTest, NoLayoutAndOnlyOneHaveEachTheirAdvice) {
    system.sources.records.pop_back();
    EXPECT_NE(row("Layouts").advice.find("nothing to switch to"), std::string::npos);
    system.sources.records.clear();
    EXPECT_EQ(row("Layouts").state, "none found");
    EXPECT_FALSE(row("Layouts").advice.empty());
}

TEST_F(DoctorTest, WithNothingStoredTheFirstStartsGroupIsTheOneThatCounts) {
    EXPECT_EQ(row("Groups"), (Finding{"Groups", Shortcut::fn.displayString() + ": xkb:us xkb:ua", {}}));
    EXPECT_EQ(system.asked, std::vector{Shortcut::fn});
}

TEST_F(DoctorTest, AStoredGroupIsShownAndItsShortcutAskedAbout) {
    system.config = Config{.groups = {{makeUUID(), controlAltSpace, {"xkb:us", "xkb:fr"}}}};
    const Finding groups = row("Groups");
    EXPECT_EQ(groups.state, controlAltSpace.displayString() + ": xkb:us xkb:fr (not there)");
    EXPECT_FALSE(groups.advice.empty());
    EXPECT_EQ(system.asked, std::vector{controlAltSpace});
}

TEST_F(DoctorTest, GroupsThatCannotSwitchHaveEachTheirAdvice) {
    struct Case {
        const char* sentence;
        Config config;
    };
    const Case cases[] = {
        {"no groups", {}},
        {"no layouts", {.groups = {{makeUUID(), controlAltSpace, {}}}}},
        {"turned off", {.active = false, .groups = {{makeUUID(), controlAltSpace, {"xkb:us"}}}}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.sentence);
        system.config = each.config;
        EXPECT_FALSE(row("Groups").advice.empty());
    }
}

TEST_F(DoctorTest, TheFeedIsAskedOnlyWhenItTries) {
    system.information.values["QuillmereUpdateFeed"] = "https://example.org/feed.json";
    EXPECT_EQ(row("Updates"), (Finding{"Updates", "https://example.org/feed.json", {}}));
    EXPECT_EQ(fetches, 0);
    EXPECT_EQ(row("Updates", true).state, "https://example.org/feed.json\nthis is the newest version");
    answer = UpdateResult::failed("No route.");
    EXPECT_EQ(row("Updates", true).state, "https://example.org/feed.json\nNo route.");
    EXPECT_FALSE(row("Updates", true).advice.empty());
}

TEST_F(DoctorTest, WithoutAFeedNobodyIsAsked) {
    EXPECT_NE(row("Updates", true).state.find("no feed"), std::string::npos);
    EXPECT_EQ(fetches, 0);
}

TEST_F(DoctorTest, WhatTheSystemSaysIsPassedOn) {
    for (const char* subject : {"Desktop", "Tap", "Settings", "Tray"})
        EXPECT_EQ(row(subject).state, "played") << subject;
}

TEST(ReportTest, HasEachRowsAdviceBelowItBehindAnArrow) {
    EXPECT_EQ(report({{"Tray", "none", "Start it twice."}, {"Layouts", "one\ntwo", {}}}),
              "Tray     none\n"
              "         -> Start it twice.\n"
              "Layouts  one\n"
              "         two\n");
}

}  // namespace

}  // namespace quillmere
