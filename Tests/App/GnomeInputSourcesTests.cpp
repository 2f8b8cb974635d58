#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtensionSources.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Tests/App/FakeGnome.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What the real desktop does not do at a test's wish; the rest is tried on that
// one.
namespace quillmere {

namespace {

using support::waitUntil;
using namespace std::chrono_literals;

using Ids = std::vector<std::string>;

/// The way without the extension: always there, with a list of its own.
class PlayedSettings final : public GnomeSourceAccess {
public:
    bool isAvailable() override { return true; }
    std::optional<GnomeSources> sources() override { return GnomeSources{.list = list, .current = current}; }
    bool activate(const GnomeSource& source) override {
        activated.push_back(source.id);
        return true;
    }

    std::vector<GnomeListedSource> list{{{"xkb", "de+neo"}, {}, {}}, {{"ibus", "anthy"}, {}, {}}};
    std::size_t current = 0;
    Ids activated;
};

class GnomeInputSourcesTest : public testing::Test {
protected:
    GnomeInputSourcesTest() {
        beginSwitch();
        gnome.setSources(three);
        gnome.startShell();
        gnome.enableExtension();
        connect();
    }

    static inline const std::vector<FakeGnome::Source> three{{"xkb", "us", "English (US)", "eng"},
                                                             {"xkb", "de+neo", "Deutsch (Neo 2)", "deu"},
                                                             {"ibus", "libpinyin", "Intelligent Pinyin", "zh_CN"}};

    void connect() {
        const QDBusConnection connection = bus.connect();
        auto played = std::make_unique<PlayedSettings>();
        settings = played.get();
        std::vector<std::unique_ptr<GnomeSourceAccess>> ways;
        ways.push_back(std::make_unique<GnomeExtensionSources>(connection));
        ways.push_back(std::move(played));
        sources.emplace(connection, std::move(ways));
    }
    Ids ids() {
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    bool waitForIds(const Ids& expected) {
        return waitUntil([&] { return ids() == expected; });
    }
    int select(const char* id) { return sources->select({.id = id}); }
    /// A new turn of the event loop, with the time of a new switch.
    static void beginSwitch() { QCoreApplication::processEvents(); }

    static inline const Ids theExtensions{"xkb:us", "xkb:de+neo", "ibus:libpinyin"};
    static inline const Ids theSettings{"xkb:de+neo", "ibus:anthy"};

    support::TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    FakeGnome gnome{bus.address()};
    PlayedSettings* settings = nullptr;
    std::optional<GnomeInputSources> sources;
};

TEST_F(GnomeInputSourcesTest, LayoutsAndInputMethodsAreOneListWithNamesAndLanguages) {
    const std::vector<InputSourceRecord> list = sources->sources();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[1].id, "xkb:de+neo");
    EXPECT_EQ(list[1].localizedName, "Deutsch (Neo 2)");
    EXPECT_EQ(list[1].languages, Ids{"deu"});
    EXPECT_EQ(list[1].type, InputSourceType::keyboardLayout);
    EXPECT_EQ(list[2].id, "ibus:libpinyin");
    EXPECT_EQ(list[2].localizedName, "Intelligent Pinyin");
    EXPECT_EQ(list[2].languages, Ids{"zh"});
    EXPECT_EQ(list[2].type, InputSourceType::keyboardInputMode);
}

TEST_F(GnomeInputSourcesTest, WhereTheDesktopTellsNoNameTheListOfLayoutsDoes) {
    gnome.disableExtension();
    ASSERT_TRUE(waitForIds(theSettings));
    const std::vector<InputSourceRecord> list = sources->sources();
    EXPECT_EQ(list[0].localizedName, "German (Neo 2)");
    EXPECT_EQ(list[0].languages, Ids{"deu"});
    EXPECT_EQ(list[1].localizedName, std::nullopt);
}

TEST_F(GnomeInputSourcesTest, GoesThroughTheListAndRoundItsEnd) {
    EXPECT_EQ(sources->currentID(), "xkb:us");
    for (const unsigned int next : {1U, 2U, 0U}) {
        EXPECT_EQ(select(theExtensions[next].c_str()), 0);
        EXPECT_EQ(gnome.current(), next);
        EXPECT_EQ(sources->currentID(), theExtensions[next]);
    }
}

TEST_F(GnomeInputSourcesTest, WhatIsNotThereOrDidNothingIsNoSwitch) {
    for (const char* id : {"xkb:fr", "ibus:us", "kde:us", "us", "xkb:", ""})
        EXPECT_NE(select(id), 0) << id;
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(gnome.current(), 0U);
    gnome.setIgnores(true);
    EXPECT_NE(select("xkb:de+neo"), 0);
}

TEST_F(GnomeInputSourcesTest, WithoutASourceNoneIsCurrent) {
    gnome.setSources({});
    gnome.setCurrent(0xFFFFFFFF);
    EXPECT_EQ(sources->currentID(), std::nullopt);
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(GnomeInputSourcesTest, WithoutTheExtensionTheSettingsServeUntilItIsBack) {
    gnome.disableExtension();
    EXPECT_TRUE(waitForIds(theSettings));
    EXPECT_EQ(select("ibus:anthy"), 1) << "the settings say that another is current";
    settings->current = 1;
    EXPECT_EQ(select("ibus:anthy"), 0);
    EXPECT_EQ(settings->activated, (Ids{"anthy", "anthy"}));
    gnome.enableExtension();
    EXPECT_TRUE(waitForIds(theExtensions));
}

TEST_F(GnomeInputSourcesTest, AnExtensionOfAnotherVersionIsNone) {
    gnome.disableExtension();
    ASSERT_TRUE(waitForIds(theSettings));
    gnome.setVersion(2);
    gnome.enableExtension();
    EXPECT_TRUE(support::holdsFor([this] { return ids() == theSettings; }, 200ms));
    connect();
    EXPECT_EQ(ids(), theSettings) << "nor at the start";
}

TEST_F(GnomeInputSourcesTest, FollowsAShellThatComesAndGoes) {
    EXPECT_TRUE(sources->isAvailable());
    gnome.disableExtension();
    gnome.endShell();
    EXPECT_TRUE(waitUntil([this] { return !sources->isAvailable(); }));
    EXPECT_EQ(ids(), Ids{}) << "the settings are nobody's then";
    EXPECT_NE(select("xkb:de+neo"), 0);
    gnome.startShell();
    gnome.enableExtension();
    EXPECT_TRUE(waitForIds(theExtensions));
}

TEST_F(GnomeInputSourcesTest, AShellThatStandsStillIsWaitedForOnce) {
    gnome.standStill();
    beginSwitch();
    const auto start = std::chrono::steady_clock::now();
    for (int press = 0; press < 3; ++press) {
        EXPECT_EQ(sources->currentID(), std::nullopt);
        EXPECT_NE(select("xkb:de+neo"), 0);
        beginSwitch();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, longestSwitch + 300ms);
    EXPECT_EQ(settings->activated, Ids{}) << "its settings would not be read either";
    gnome.goOn();
    EXPECT_TRUE(waitUntil([this] { return sources->currentID() == "xkb:us"; }));
    EXPECT_EQ(select("xkb:de+neo"), 0);
}

}  // namespace

}  // namespace quillmere
