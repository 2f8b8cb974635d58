#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandInputSources.h"
#include "Tests/Support/FakeHyprland.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

namespace {

using namespace std::chrono_literals;
using support::FakeHyprland;
using support::waitUntil;
using Version = FakeHyprland::Version;
using Ids = std::vector<std::string>;
using Indices = std::vector<std::size_t>;

/// The longest that one switch may take, and what a busy machine may add.
constexpr auto longestCall = 400ms;
constexpr auto allowance = 300ms;

class HyprlandInputSourcesTest : public testing::TestWithParam<Version> {
protected:
    HyprlandInputSourcesTest() {
        qputenv("XDG_RUNTIME_DIR", folder.path().c_str());
        qputenv("HYPRLAND_INSTANCE_SIGNATURE", "instance");
        start();
    }
    ~HyprlandInputSourcesTest() override {
        qunsetenv("XDG_RUNTIME_DIR");
        qunsetenv("HYPRLAND_INSTANCE_SIGNATURE");
    }

    void start() {
        desktop.emplace(folder.path() / "hypr" / "instance", GetParam());
        sources = HyprlandInputSources::create();
    }
    // Each in a turn of the event loop of its own, since one turn has the time
    // of one switch only.
    std::optional<std::string> currentID() const {
        QCoreApplication::processEvents();
        return sources->currentID();
    }
    int select(const char* id) const {
        QCoreApplication::processEvents();
        return sources->select({.id = id});
    }
    Ids ids() const {
        QCoreApplication::processEvents();
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    /// Whether what one press asks keeps to its time.
    template <typename Call>
    static bool isInTime(const Call& call) {
        QCoreApplication::processEvents();
        const auto begin = std::chrono::steady_clock::now();
        call();
        return std::chrono::steady_clock::now() - begin < longestCall + allowance;
    }

    support::TemporaryFolder folder;
    std::optional<FakeHyprland> desktop;
    std::unique_ptr<HyprlandInputSources> sources;
};

INSTANTIATE_TEST_SUITE_P(Versions, HyprlandInputSourcesTest, testing::Values(Version::hyprlang, Version::lua),
                         [](const auto& info) { return info.param == Version::lua ? "Lua" : "Hyprlang"; });

TEST_P(HyprlandInputSourcesTest, ListsTheLayoutsInTheirOrderWithNamesAndLanguages) {
    ASSERT_NE(sources, nullptr);
    const std::vector<InputSourceRecord> records = sources->sources();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua", "xkb:de+dvorak"}));
    EXPECT_EQ(records[0].localizedName, "English (US)");
    EXPECT_EQ(records[2].localizedName, "German (Dvorak)");
    EXPECT_EQ(records[1].languages.front(), "ukr");
}

TEST_P(HyprlandInputSourcesTest, GoesThroughAGroupAndRoundItsEndOnEveryKeyboard) {
    for (const auto& [id, index] :
         {std::pair<const char*, std::size_t>{"xkb:ua", 1}, {"xkb:de+dvorak", 2}, {"xkb:us", 0}}) {
        EXPECT_EQ(select(id), 0) << id;
        EXPECT_EQ(currentID(), id);
        EXPECT_EQ(desktop->layoutsInUse(), (Indices{index, index}));
    }
}

TEST_P(HyprlandInputSourcesTest, WhatIsNotThereIsRefusedAndChangesNothing) {
    ASSERT_EQ(select("xkb:ua"), 0);
    for (const char* id : {"xkb:fr", "xkb:de", "", "xkb:"})
        EXPECT_NE(select(id), 0) << id;
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(desktop->layoutsInUse(), (Indices{1, 1}));
}

TEST_P(HyprlandInputSourcesTest, WhereAllKeyboardsHaveNoNameEachIsSwitched) {
    desktop->forgetAll();
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(desktop->layoutsInUse(), (Indices{1, 1}));
}

TEST_P(HyprlandInputSourcesTest, KeyboardsOfOtherListsAreSwitchedByTheirOwnNumbers) {
    auto others = FakeHyprland::usualLayouts();
    std::swap(others[0], others[1]);
    desktop->plugIn("external", others);
    desktop->plugIn("last", FakeHyprland::usualLayouts());
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(desktop->layoutsInUse(), (Indices{1, 1, 0, 1}));
}

TEST_P(HyprlandInputSourcesTest, AProgramsKeyboardIsNotInTheWay) {
    ASSERT_EQ(select("xkb:ua"), 0);
    // Its only layout is not the second: the desktop says so instead of "ok".
    desktop->plugIn("hl-virtual-keyboard-fcitx5", {{"us", "", "English (US)"}});
    EXPECT_EQ(ids().size(), 3U);
    EXPECT_EQ(currentID(), "xkb:ua");
    EXPECT_EQ(select("xkb:de+dvorak"), 0);
    EXPECT_EQ(desktop->layoutsInUse(), (Indices{2, 2, 0}));
}

TEST_P(HyprlandInputSourcesTest, ASwitchOfTheDesktopsOwnIsWhatIsCurrent) {
    ASSERT_EQ(select("xkb:ua"), 0);
    desktop->switchKeyboard(FakeHyprland::board, 2);
    EXPECT_EQ(currentID(), "xkb:de+dvorak");
    desktop->switchKeyboard(FakeHyprland::button, 0);
    EXPECT_EQ(currentID(), "xkb:us") << "of keyboards that differ the one switched last";
}

TEST_P(HyprlandInputSourcesTest, AKeyboardThatComesLaterTakesUpTheLayoutInUse) {
    ASSERT_EQ(select("xkb:ua"), 0);
    desktop->plugIn("external", FakeHyprland::usualLayouts());
    // Nobody asks: the event alone brings it about.
    EXPECT_TRUE(waitUntil([this] { return desktop->layoutsInUse() == Indices{1, 1, 1}; }));
    desktop->plugIn("another", FakeHyprland::usualLayouts());
    EXPECT_EQ(currentID(), "xkb:ua") << "not the one that the new keyboard starts with";
    EXPECT_EQ(desktop->layoutsInUse(), (Indices{1, 1, 1, 1}));
}

TEST_P(HyprlandInputSourcesTest, AnOkThatDidNothingIsNoSwitch) {
    desktop->setAnswer("switchxkblayout", "ok");
    EXPECT_NE(select("xkb:ua"), 0);
    EXPECT_EQ(currentID(), "xkb:us");
}

TEST_P(HyprlandInputSourcesTest, WhatIsNoAnswerIsNoneAndTheNextCallBeginsAnew) {
    std::string long64 = R"({"keyboards": [)" + std::string(100'000, ' ') + "]";
    for (const std::string& bytes :
         {std::string(), std::string("{"), std::string("unknown request"), std::string("\xff"), std::string(100, '\0'),
          long64, std::string(5U << 20, 'x'), std::string("[[[[[")}) {
        desktop->setAnswer("j/devices", bytes);
        EXPECT_EQ(currentID(), std::nullopt) << bytes.substr(0, 20);
        EXPECT_NE(select("xkb:us"), 0);
        desktop->clearAnswers();
        EXPECT_EQ(currentID(), "xkb:us");
    }
}

TEST_P(HyprlandInputSourcesTest, AnAnswerOfManyKeyboardsIsReadToItsEnd) {
    for (int i = 0; i < 300; ++i)
        desktop->plugIn("board-" + std::to_string(i), FakeHyprland::usualLayouts());
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(currentID(), "xkb:ua");
}

TEST_P(HyprlandInputSourcesTest, ASilentCompositorIsWaitedForOnceAndSwitchesNothingLate) {
    ASSERT_EQ(select("xkb:ua"), 0);
    desktop->setSilent(true);
    // What a press of a shortcut asks, one after the other.
    EXPECT_TRUE(isInTime([this] {
        EXPECT_EQ(sources->currentID(), std::nullopt);
        EXPECT_EQ(sources->sources().size(), 3U);
        EXPECT_NE(sources->select({.id = "xkb:us"}), 0);
    }));
    desktop->setSilent(false);
    EXPECT_TRUE(waitUntil([this] { return currentID() == "xkb:ua"; }));
    EXPECT_EQ(select("xkb:us"), 0);
}

TEST_P(HyprlandInputSourcesTest, ACompositorThatHasEndedLeavesNothingAndTheNextIsFound) {
    desktop.reset();
    EXPECT_TRUE(isInTime([this] { EXPECT_NE(sources->select({.id = "xkb:ua"}), 0); }));
    EXPECT_FALSE(sources->isAvailable());
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(currentID(), std::nullopt);
    desktop.emplace(folder.path() / "hypr" / "instance", GetParam());
    EXPECT_TRUE(sources->isAvailable());
    EXPECT_EQ(select("xkb:ua"), 0);
}

TEST_P(HyprlandInputSourcesTest, AConnectionForEventsThatWasClosedIsMadeAgain) {
    ASSERT_EQ(select("xkb:ua"), 0);
    desktop->hangUp();
    EXPECT_EQ(currentID(), "xkb:ua");
    desktop->plugIn("external", FakeHyprland::usualLayouts());
    EXPECT_TRUE(waitUntil([this] { return desktop->layoutsInUse() == Indices{1, 1, 1}; }));
}

TEST_P(HyprlandInputSourcesTest, EventsOfAnyKindDoNoHarm) {
    ASSERT_EQ(select("xkb:ua"), 0);
    for (const std::string& bytes :
         {std::string("\n\n>>\n"), std::string("activelayout>>\n"), std::string("activelayout>>,\n"),
          std::string("activelayout\n"), std::string("activelayout>>nobody,Klingon\n"), std::string(3, '\0') + "\n",
          "openwindow>>" + std::string(100'000, 'x') + "\n", std::string("activelayout>>torn"),
          std::string(",in two\n")})
        desktop->announce(bytes);
    EXPECT_EQ(currentID(), "xkb:ua");
    desktop->switchKeyboard(FakeHyprland::board, 2);
    EXPECT_EQ(currentID(), "xkb:de+dvorak") << "what comes after them is heard";
}

TEST_P(HyprlandInputSourcesTest, WithoutItThereIsNoService) {
    qputenv("HYPRLAND_INSTANCE_SIGNATURE", "another");
    EXPECT_EQ(HyprlandInputSources::create(), nullptr);
    qunsetenv("HYPRLAND_INSTANCE_SIGNATURE");
    EXPECT_EQ(HyprlandInputSources::create(), nullptr);
}

}  // namespace

}  // namespace quillmere
