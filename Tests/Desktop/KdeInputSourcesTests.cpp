#include "Quillmere/Platform/Linux/Sources/Kde/KdeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Tests/Desktop/ListedSources.h"
#include "Tests/Support/Kwin.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <csignal>
#include <optional>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

using Ids = std::vector<std::string>;

/// What a busy machine may add to a promised time.
constexpr auto allowance = 300ms;

/// Layouts of the real KWin on Wayland, asked for by the real backend.
class KwinInputSourcesTest : public testing::Test {
protected:
    Kwin& start(const Kwin::Options& options) {
        kwin.emplace(folder.path(), environment, bus.address(), connection, options);
        sources.emplace(connection);
        return *kwin;
    }

    Ids ids() {
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    int select(const char* id) { return sources->select({.id = id}); }
    bool waitForIds(const Ids& expected) {
        return waitUntil([&] { return ids() == expected; });
    }

    TemporaryFolder folder;
    Environment environment = baseEnvironment(folder.path().string());
    SessionBus bus{folder.path(), environment};
    QDBusConnection connection = bus.connect();
    std::optional<Kwin> kwin;
    std::optional<KdeInputSources> sources;
};

TEST_F(KwinInputSourcesTest, ListsTheLayoutsInTheirOrderWithNamesAndLanguages) {
    start({.layouts = "us,us,ua", .variants = ",dvorak,"});
    expectEnglishDvorakAndUkrainian(sources->sources());
}

TEST_F(KwinInputSourcesTest, OfMoreThanFourTheFirstFourAreThereAsForTheDesktopItself) {
    start({.layouts = "us,ua,de,fr,gr"});
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "xkb:de", "xkb:fr"}));
    EXPECT_EQ(select("xkb:fr"), 0);
    EXPECT_EQ(sources->currentID(), "xkb:fr");
    EXPECT_NE(select("xkb:gr"), 0);
}

TEST_F(KwinInputSourcesTest, GoesThroughAGroupAndRoundItsEndAsOthersSee) {
    start({.layouts = "us,ua,de,fr"});
    const std::vector<const char*> all{"xkb:us", "xkb:ua", "xkb:de", "xkb:fr"};
    EXPECT_EQ(sources->currentID(), "xkb:us");
    for (const int next : {1, 2, 3, 0, 1}) {
        EXPECT_EQ(select(all[static_cast<std::size_t>(next)]), 0);
        EXPECT_EQ(sources->currentID(), all[static_cast<std::size_t>(next)]);
        EXPECT_EQ(kwin->layoutInUse(), next);
    }
    EXPECT_EQ(select("xkb:ua"), 0) << "the current one can be selected again";
}

TEST_F(KwinInputSourcesTest, TheCurrentOneIsTheDesktopsWhoeverHasChosenIt) {
    start({});
    kwin->useLayout(2);
    EXPECT_EQ(sources->currentID(), "xkb:de");
    EXPECT_NE(select("xkb:fr"), 0) << "it is not there";
    EXPECT_EQ(kwin->layoutInUse(), 2);
}

TEST_F(KwinInputSourcesTest, FollowsTheLayoutsOfTheDesktopsSettings) {
    start({});
    kwin->setLayouts("de,us,fr,ua", "neo,,,");
    EXPECT_TRUE(waitForIds({"xkb:de+neo", "xkb:us", "xkb:fr", "xkb:ua"})) << "one more, and in another order";
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(kwin->layoutInUse(), 3);
    kwin->setLayouts("ua,us");
    EXPECT_TRUE(waitForIds({"xkb:ua", "xkb:us"}));
    EXPECT_NE(select("xkb:fr"), 0);
    EXPECT_EQ(select("xkb:us"), 0);
    EXPECT_EQ(kwin->layoutInUse(), 1);
}

TEST_F(KwinInputSourcesTest, WithOneLayoutThereIsNothingToAskUntilThereIsAnother) {
    start({.layouts = "ua"});
    // The newest has the name from the start, and lists the one.
    if (sources->isAvailable())
        EXPECT_EQ(ids(), Ids{"xkb:ua"});
    else
        EXPECT_EQ(sources->currentID(), std::nullopt);
    kwin->setLayouts("ua,us");
    EXPECT_TRUE(waitForIds({"xkb:ua", "xkb:us"}));
    kwin->setLayouts("us");
    // From 6 on KWin keeps the name then, and lists the one.
    EXPECT_TRUE(waitUntil([this] { return !sources->isAvailable() || ids() == Ids{"xkb:us"}; }));
}

TEST_F(KwinInputSourcesTest, ADeadDesktopLeavesNothingAndIsTakenUpWhenItIsBack) {
    start({});
    kwin->process().kill();
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_EQ(ids(), Ids{});
    EXPECT_NE(select("xkb:ua"), 0);
    EXPECT_FALSE(sources->isAvailable());
    kwin->start();
    EXPECT_TRUE(waitUntil([this] { return sources->isAvailable(); }));
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(kwin->layoutInUse(), 1);
}

TEST_F(KwinInputSourcesTest, AStoppedDesktopIsWaitedForOnceAndSwitchesAfterwards) {
    start({});
    ASSERT_EQ(select("xkb:ua"), 0);
    kwin->process().signal(SIGSTOP);
    ASSERT_TRUE(waitUntil([this] { return kwin->process().state() == 'T'; }));
    QCoreApplication::processEvents();
    // What two presses of a shortcut ask, one after the other.
    const auto start = std::chrono::steady_clock::now();
    for (int press = 0; press < 2; ++press) {
        EXPECT_EQ(sources->currentID(), std::nullopt);
        EXPECT_EQ(ids(), Ids{});
        EXPECT_NE(select("xkb:us"), 0);
        QCoreApplication::processEvents();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, longestSwitch + allowance);
    kwin->process().signal(SIGCONT);
    EXPECT_TRUE(waitUntil([this] { return sources->currentID() == "xkb:ua"; })) << "nothing was switched late";
    EXPECT_EQ(select("xkb:us"), 0);
    EXPECT_EQ(kwin->layoutInUse(), 0);
}

}  // namespace

}  // namespace quillmere::support
