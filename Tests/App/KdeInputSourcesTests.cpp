#include "Quillmere/Platform/Linux/Sources/Kde/KdeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Tests/App/FakeKde.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// What the real desktop does not do at a test's wish; the rest is tried on that
// one.
namespace quillmere {

namespace {

using support::waitUntil;
using namespace std::chrono_literals;

using Ids = std::vector<std::string>;

class KdeInputSourcesTest : public testing::Test {
protected:
    KdeInputSourcesTest() {
        beginSwitch();
        kde.setLayouts(three);
        kde.appear();
        sources.emplace(bus.connect());
    }

    static inline const std::vector<FakeKde::Layout> three{
        {"us", "", "English (US)"}, {"us", "", "English (Dvorak)"}, {"ua", "", "Ukrainian"}};

    Ids ids() {
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    Ids idsOf(const std::vector<FakeKde::Layout>& layouts) {
        kde.setLayouts(layouts);
        return ids();
    }
    int select(const char* id) { return sources->select({.id = id}); }
    /// A new turn of the event loop, with the time of a new switch.
    static void beginSwitch() { QCoreApplication::processEvents(); }

    support::TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    FakeKde kde{bus.address()};
    std::optional<KdeInputSources> sources;
};

TEST_F(KdeInputSourcesTest, TheVariantIsFoundByTheName) {
    const std::vector<InputSourceRecord> list = sources->sources();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[1].id, "xkb:us+dvorak");
    EXPECT_EQ(list[1].localizedName, "English (Dvorak)");
    EXPECT_EQ(list[1].languages, std::vector<std::string>{"eng"});
    EXPECT_EQ(list[1].type, InputSourceType::keyboardLayout);
}

TEST_F(KdeInputSourcesTest, ALayoutIsKnownByEveryFormOfItsName) {
    // A desktop that follows the system's own setting.
    EXPECT_EQ(idsOf({{"", "", "German (Neo 2)"}, {"", "", "Ukrainian"}}), (Ids{"xkb:de+neo", "xkb:ua"}));
    // The second is what newer lists of layouts call it.
    const Ids names[] = {idsOf({{"cz", "", "Czech (with <|> key)"}}), idsOf({{"cz", "", "Czech (extra backslash)"}})};
    EXPECT_TRUE(std::ranges::find(names, Ids{"xkb:cz+bksl"}) != std::end(names));
}

TEST_F(KdeInputSourcesTest, ALayoutThatNoListHasIsTheOneOfItsXkbNameOrElseOfItsOwn) {
    EXPECT_EQ(idsOf({{"mine", "", "Homemade"}, {"us", "", "English (US)"}}), (Ids{"xkb:mine", "xkb:us"}));
    EXPECT_EQ(idsOf({{"us", "", "Homemade"}, {"us", "", "English (US)"}, {"", "", "Other"}}),
              (Ids{"kde:Homemade", "xkb:us", "kde:Other"}));
}

TEST_F(KdeInputSourcesTest, ASuccessThatDidNothingIsNoSwitch) {
    kde.setIgnores(true);
    EXPECT_NE(select("xkb:ua"), 0);
    EXPECT_EQ(select("xkb:us"), 0) << "it is the current one";
}

TEST_F(KdeInputSourcesTest, WhatIsNotThereIsNeverAskedFor) {
    kde.setWraps(true);
    ASSERT_EQ(select("xkb:ua"), 0);
    kde.setLayouts({three[0], three[1]});
    kde.setCurrent(0);
    EXPECT_NE(select("xkb:ua"), 0);
    EXPECT_NE(select("xkb:de"), 0);
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(kde.current(), 0U);
}

TEST_F(KdeInputSourcesTest, AListThatChangesUnderTheSwitchIsLookedAtAgain) {
    ASSERT_EQ(ids().size(), 3U);
    kde.replaceAtSwitch({three[2], three[0], three[1]});
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(kde.current(), 0U);
}

TEST_F(KdeInputSourcesTest, AStaleIndexIsNoCurrentSource) {
    kde.setCurrent(3);
    EXPECT_EQ(sources->currentID(), std::nullopt);
}

TEST_F(KdeInputSourcesTest, WhatIsNoListIsNone) {
    for (const QVariant& answer : {QVariant(1), QVariant("us"), QVariant(QStringList{"us"})}) {
        kde.setListAnswer(answer);
        EXPECT_EQ(ids(), Ids{});
        EXPECT_EQ(sources->currentID(), std::nullopt);
        EXPECT_NE(select("xkb:us"), 0);
    }
    kde.setListAnswer({});
    EXPECT_EQ(sources->currentID(), "xkb:us");
}

TEST_F(KdeInputSourcesTest, FollowsADesktopThatComesAndGoes) {
    EXPECT_TRUE(sources->isAvailable());
    kde.vanish();
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_FALSE(sources->isAvailable()) << "at once, since nobody has answered";
    kde.appear();
    EXPECT_TRUE(waitUntil([this] { return sources->isAvailable(); }));
    EXPECT_EQ(ids().size(), 3U);
    kde.vanish();
    EXPECT_TRUE(waitUntil([this] { return !sources->isAvailable(); })) << "also when nobody asks";
}

TEST_F(KdeInputSourcesTest, ADesktopThatStandsStillIsWaitedForOnce) {
    kde.standStill();
    beginSwitch();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_GE(std::chrono::steady_clock::now() - start, longestSwitch - 50ms);
    const int calls = kde.callCount();
    for (int press = 0; press < 5; ++press) {
        beginSwitch();
        EXPECT_EQ(ids(), Ids{});
        EXPECT_NE(select("xkb:ua"), 0);
    }
    EXPECT_LE(kde.callCount(), calls + 1) << "but for the question whether it goes on";
    kde.goOn();
    EXPECT_TRUE(waitUntil([this] { return sources->currentID() == "xkb:us"; }));
    EXPECT_EQ(select("xkb:ua"), 0);
}

TEST_F(KdeInputSourcesTest, OneThatTakesAnothersPlaceIsAskedAtOnce) {
    kde.standStill();
    beginSwitch();
    EXPECT_EQ(sources->currentID(), std::nullopt);
    kde.vanish();
    kde.setLayouts(three);
    EXPECT_TRUE(waitUntil([this] { return !sources->isAvailable(); }));
    kde.goOn();
    kde.appear();
    EXPECT_TRUE(waitUntil([this] { return sources->currentID() == "xkb:us"; }));
}

}  // namespace

}  // namespace quillmere
