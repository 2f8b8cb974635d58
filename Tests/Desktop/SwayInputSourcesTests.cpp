#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Sway/SwayInputSources.h"
#include "Tests/Desktop/ListedSources.h"
#include "Tests/Support/Sway.h"
#include "Tests/Support/SwayKeyboard.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <optional>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

using Ids = std::vector<std::string>;

/// The longest that one call may take, and what a busy machine may add.
constexpr auto longestCall = 400ms;
constexpr auto allowance = 300ms;

class SwayInputSourcesTest : public testing::Test {
protected:
    ~SwayInputSourcesTest() override { qunsetenv("SWAYSOCK"); }

    Environment environment() const { return baseEnvironment(folder.path().string()); }

    /// A desktop with the keyboard of an X server of its own.
    Sway& startWithKeyboard(const std::string& layouts, const std::string& variants = {}) {
        server.emplace(folder.path(), environment(), QSize(640, 480));
        return start({.layouts = layouts, .variants = variants, .display = server->display()});
    }
    /// A desktop without any keyboard.
    Sway& startWithoutKeyboard(const std::string& layouts) { return start({.layouts = layouts}); }

    Sway& start(const Sway::Options& options) {
        sway.emplace(folder.path(), environment(), options);
        qputenv("SWAYSOCK", sway->socket().c_str());
        sources = SwayInputSources::create();
        return *sway;
    }

    Ids ids() const {
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    int select(const char* id) const { return sources->select({.id = id}); }
    std::vector<int> inUse() const { return sway->layoutsInUse(Sway::serverKeyboard); }
    std::vector<int> inUseVirtually() const { return sway->layoutsInUse(Sway::virtualKeyboard); }

    /// Whether one call keeps to its time.
    template <typename Call>
    static bool isInTime(const Call& call) {
        const auto start = std::chrono::steady_clock::now();
        call();
        return std::chrono::steady_clock::now() - start < longestCall + allowance;
    }

    TemporaryFolder folder;
    std::optional<XServer> server;
    std::optional<Sway> sway;
    std::unique_ptr<SwayInputSources> sources;
};

TEST_F(SwayInputSourcesTest, ListsTheLayoutsInTheirOrderWithNamesAndLanguages) {
    startWithKeyboard("us,us,ua", ",dvorak,");
    ASSERT_NE(sources, nullptr);
    expectEnglishDvorakAndUkrainian(sources->sources());
}

TEST_F(SwayInputSourcesTest, LayoutsWithUnusualNamesAreKnownToo) {
    startWithKeyboard("cz,us,ch", "bksl,intl-unicode,fr");
    EXPECT_EQ(ids(), (Ids{"xkb:cz+bksl", "xkb:us+intl-unicode", "xkb:ch+fr"}));
    const std::optional<std::string> name = sources->sources()[0].localizedName;
    // The second is what newer lists of layouts call it.
    EXPECT_TRUE(name == "Czech (with <|> key)" || name == "Czech (extra backslash)") << name.value_or("no name");
}

TEST_F(SwayInputSourcesTest, ALayoutThatTheUserHasMadeIsKnownByItsNameAlone) {
    std::string keymap = SwayKeyboard::keymap("us,ua");
    const std::string name = "English (US)";
    keymap.replace(keymap.find(name), name.size(), "Homemade");
    const std::filesystem::path file = folder.path() / "keymap";
    std::ofstream(file) << keymap;
    startWithKeyboard("us");
    ASSERT_TRUE(sway->command("input type:keyboard xkb_file " + file.string()));
    EXPECT_EQ(ids(), (Ids{"sway:Homemade", "xkb:ua"}));
    EXPECT_EQ(sources->sources()[0].localizedName, "Homemade");
    EXPECT_TRUE(sources->sources()[0].languages.empty());
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(select("sway:Homemade"), 0);
    EXPECT_EQ(inUse(), std::vector{0});
}

TEST_F(SwayInputSourcesTest, GoesThroughAGroupAndRoundItsEnd) {
    startWithKeyboard("us,ua,de");
    EXPECT_EQ(sources->currentID(), "xkb:us");
    for (const auto& [id, index] : {std::pair{"xkb:ua", 1}, {"xkb:de", 2}, {"xkb:us", 0}, {"xkb:ua", 1}}) {
        EXPECT_EQ(select(id), 0) << id;
        EXPECT_EQ(sources->currentID(), id);
        EXPECT_EQ(inUse(), std::vector{index});
    }
    EXPECT_EQ(select("xkb:ua"), 0) << "the current one can be selected again";
}

TEST_F(SwayInputSourcesTest, WhatIsNotThereIsRefusedAndChangesNothing) {
    startWithKeyboard("us,ua");
    ASSERT_EQ(select("xkb:ua"), 0);
    EXPECT_NE(select("xkb:de"), 0);
    EXPECT_NE(select("xkb:us+dvorak"), 0);
    EXPECT_NE(select(""), 0);
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(inUse(), std::vector{1});
}

TEST_F(SwayInputSourcesTest, TheCurrentOneIsTheDesktopsWhoeverHasChosenIt) {
    startWithKeyboard("us,ua,de");
    for (const auto& [index, id] : {std::pair{2, "xkb:de"}, {1, "xkb:ua"}, {0, "xkb:us"}}) {
        ASSERT_TRUE(sway->command("input type:keyboard xkb_switch_layout " + std::to_string(index)));
        EXPECT_EQ(sources->currentID(), id);
    }
}

TEST_F(SwayInputSourcesTest, EveryAnswerKnowsOfTheLastChangeOfTheLayouts) {
    startWithKeyboard("us,ua,de");
    ASSERT_EQ(select("xkb:de"), 0);
    ASSERT_TRUE(sway->command("input type:keyboard xkb_layout \"ua,us\""));
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    EXPECT_EQ(ids(), (Ids{"xkb:ua", "xkb:us"}));
    ASSERT_TRUE(sway->command("input type:keyboard xkb_layout \"fr,ua\""));
    // Without a look at the list first.
    EXPECT_EQ(select("xkb:fr"), 0);
    EXPECT_EQ(inUse(), std::vector{0});
    ASSERT_TRUE(sway->command("input type:keyboard xkb_layout \"ua,fr\""));
    EXPECT_EQ(select("xkb:fr"), 0);
    EXPECT_EQ(inUse(), std::vector{1});
    EXPECT_NE(select("xkb:de"), 0);
}

TEST_F(SwayInputSourcesTest, AKeyboardThatAProgramMakesForItsTextIsNone) {
    startWithKeyboard("us,ua,de");
    // Nameless layouts, as programs that type texts write them.
    const SwayKeyboard typing(sway->waylandDisplay(),
                              "xkb_keymap { xkb_keycodes { include \"evdev\" }; xkb_types { "
                              "include \"complete\" }; xkb_compat { include \"complete\" }; "
                              "xkb_symbols { key <AC01> { [ a ] }; }; };");
    ASSERT_TRUE(sway->inputs().first()["xkb_layout_names"][0].isNull());
    EXPECT_EQ(ids().size(), 3U);
    EXPECT_EQ(select("xkb:de"), 0);
    EXPECT_EQ(inUse(), std::vector{2});
    EXPECT_EQ(sources->currentID(), "xkb:de");
}

TEST_F(SwayInputSourcesTest, AProgramsKeyboardWithMoreLayoutsDoesNotSpeakForTheDesktop) {
    startWithKeyboard("us,ua");
    const SwayKeyboard other(sway->waylandDisplay(), SwayKeyboard::keymap("fr,de,us,ua"));
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
    EXPECT_EQ(select("xkb:ua"), 0);
    EXPECT_EQ(inUse(), std::vector{1});
    EXPECT_EQ(inUseVirtually(), std::vector{0}) << "its second layout is another one";
}

TEST_F(SwayInputSourcesTest, WithoutAnyKeyboardThereIsNothing) {
    startWithoutKeyboard("us,ua");
    ASSERT_NE(sources, nullptr);
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_NE(select("xkb:us"), 0);
}

TEST_F(SwayInputSourcesTest, ADesktopThatIsUsedFromAfarHasItsProgramsKeyboard) {
    startWithoutKeyboard("us");
    const SwayKeyboard remote(sway->waylandDisplay(), SwayKeyboard::keymap("us,ua", ",phonetic"));
    EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua+phonetic"}));
    EXPECT_EQ(select("xkb:ua+phonetic"), 0);
    EXPECT_EQ(inUseVirtually(), std::vector{1});
}

TEST_F(SwayInputSourcesTest, ASwitchReachesEveryKeyboard) {
    startWithoutKeyboard("us,ua,de");
    const std::string keymap = SwayKeyboard::keymap("us,ua,de");
    const SwayKeyboard first(sway->waylandDisplay(), keymap);
    const SwayKeyboard second(sway->waylandDisplay(), keymap);
    EXPECT_EQ(select("xkb:de"), 0);
    EXPECT_EQ(inUseVirtually(), (std::vector{2, 2}));
}

TEST_F(SwayInputSourcesTest, AKeyboardThatComesLaterTakesUpTheLayoutInUse) {
    startWithoutKeyboard("us,ua,de");
    const std::string keymap = SwayKeyboard::keymap("us,ua,de");
    const SwayKeyboard first(sway->waylandDisplay(), keymap);
    ASSERT_EQ(select("xkb:ua"), 0);
    const SwayKeyboard second(sway->waylandDisplay(), keymap);
    // Nobody asks: the event alone brings it about.
    EXPECT_TRUE(waitUntil([&] { return inUseVirtually() == std::vector{1, 1}; }));
    EXPECT_EQ(sources->currentID(), "xkb:ua");
    const SwayKeyboard third(sway->waylandDisplay(), keymap);
    EXPECT_EQ(sources->currentID(), "xkb:ua") << "not the one that the new keyboard starts with";
    EXPECT_EQ(inUseVirtually(), (std::vector{1, 1, 1}));
}

TEST_F(SwayInputSourcesTest, AStoppedCompositorIsWaitedForOnce) {
    startWithKeyboard("us,ua");
    ASSERT_EQ(select("xkb:ua"), 0);
    sway->process().signal(SIGSTOP);
    ASSERT_TRUE(waitUntil([this] { return sway->process().state() == 'T'; }));
    // What a press of a shortcut asks, one after the other.
    EXPECT_TRUE(isInTime([this] {
        EXPECT_EQ(sources->currentID(), std::nullopt);
        EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
        EXPECT_NE(select("xkb:us"), 0);
    }));
    sway->process().signal(SIGCONT);
    EXPECT_TRUE(waitUntil([this] { return sources->currentID() == "xkb:ua"; })) << "nothing was switched late";
    EXPECT_EQ(select("xkb:us"), 0);
    EXPECT_EQ(inUse(), std::vector{0});
}

TEST_F(SwayInputSourcesTest, ADeadCompositorLeavesNothing) {
    startWithKeyboard("us,ua");
    ASSERT_EQ(ids().size(), 2U);
    sway->process().kill();
    EXPECT_TRUE(isInTime([this] { EXPECT_NE(select("xkb:ua"), 0); }));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(sources->currentID(), std::nullopt);
}

TEST_F(SwayInputSourcesTest, WithoutACompositorThereIsNoService) {
    EXPECT_EQ(SwayInputSources::create(), nullptr);
    qputenv("SWAYSOCK", (folder.path() / "nothing").c_str());
    EXPECT_EQ(SwayInputSources::create(), nullptr);
}

TEST_F(SwayInputSourcesTest, TheDesktopsOwnLayoutsAreChosenNotThoseOfItsXwayland) {
    server.emplace(folder.path(), environment(), QSize(640, 480));
    start({.layouts = "us,ua,de", .display = server->display(), .hasXwayland = true});
    qputenv("DISPLAY", sway->xDisplay().c_str());
    qputenv("WAYLAND_DISPLAY", sway->waylandDisplay().c_str());
    ASSERT_FALSE(sway->xDisplay().empty());
    EXPECT_EQ(makeLinuxInputSources()->sources().size(), 3U);
    // A Wayland desktop that the program does not know.
    qunsetenv("SWAYSOCK");
    EXPECT_TRUE(makeLinuxInputSources()->sources().empty());
    EXPECT_EQ(makeLinuxInputSources()->currentID(), std::nullopt);
    qunsetenv("WAYLAND_DISPLAY");
    // An X11 one, with the socket of a compositor that is gone.
    server->setLayouts("us,fr");
    qputenv("DISPLAY", server->display().c_str());
    qputenv("SWAYSOCK", (folder.path() / "nothing").c_str());
    EXPECT_EQ(makeLinuxInputSources()->sources().size(), 2U);
    qunsetenv("DISPLAY");
}

}  // namespace

}  // namespace quillmere::support
