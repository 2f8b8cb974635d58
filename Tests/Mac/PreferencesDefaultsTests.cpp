#include "Quillmere/Platform/Mac/InfoDictionary.h"
#include "Quillmere/Platform/Mac/PreferencesDefaults.h"
#include "QuillmereCore/ConfigStore.h"
#include "QuillmereCore/UpdateStore.h"
#include "Tests/Mac/Doubles/Preferences.h"
#include "Tests/Mac/MacTest.h"

#include <limits>

namespace quillmere {
namespace {

using namespace std::chrono_literals;

class PreferencesDefaultsTest : public MacTest {
protected:
    PreferencesDefaults defaults;
};

TEST_F(PreferencesDefaultsTest, EachTypeIsKeptAsTheSystemsOwnAndComesBack) {
    const std::string bytes("{\0}\xFF", 4);
    const Date date = Date(1'700'000'000s) + 250ms;
    defaults.setData("config", bytes);
    defaults.setBoolean("updateAutomatic", false);
    defaults.setDate("updateLastCheck", date);
    defaults.setString("updateSkipped", "1.4.0 ✓ 🌐");
    EXPECT_EQ(preferences::stored("config")->kind, cf::Kind::data);
    EXPECT_EQ(preferences::stored("updateAutomatic")->kind, cf::Kind::boolean);
    EXPECT_EQ(preferences::stored("updateLastCheck")->kind, cf::Kind::date);
    // Seconds since the first of January 2001.
    EXPECT_DOUBLE_EQ(preferences::stored("updateLastCheck")->number, 721692800.25);
    EXPECT_EQ(preferences::stored("updateSkipped")->kind, cf::Kind::string);
    EXPECT_EQ(defaults.data("config"), bytes);
    EXPECT_EQ(defaults.boolean("updateAutomatic"), false);
    EXPECT_EQ(defaults.date("updateLastCheck"), date);
    EXPECT_EQ(defaults.string("updateSkipped"), "1.4.0 ✓ 🌐");
    defaults.setBoolean("updateAutomatic", true);
    EXPECT_EQ(defaults.boolean("updateAutomatic"), true);
}

TEST_F(PreferencesDefaultsTest, EveryChangeIsOnTheDiskAtOnce) {
    defaults.setData("a", "1");
    EXPECT_TRUE(preferences::areOnDisk());
    defaults.setDate("b", Date());
    EXPECT_TRUE(preferences::areOnDisk());
    defaults.remove("a");
    EXPECT_TRUE(preferences::areOnDisk());
    EXPECT_EQ(preferences::stored("a"), nullptr);
}

TEST_F(PreferencesDefaultsTest, AnotherTypeIsNoValue) {
    defaults.setString("text", "1");
    EXPECT_EQ(defaults.data("text"), std::nullopt);
    EXPECT_EQ(defaults.boolean("text"), std::nullopt);
    EXPECT_EQ(defaults.date("text"), std::nullopt);
    defaults.setData("data", "1");
    EXPECT_EQ(defaults.string("data"), std::nullopt);
    EXPECT_EQ(defaults.string("none"), std::nullopt);
    defaults.remove("none");
}

TEST_F(PreferencesDefaultsTest, ADateThatTheClockCannotHoldIsNoDate) {
    for (const double seconds : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        preferences::store("date", cf::make(cf::Kind::date, {}, seconds));
        EXPECT_EQ(defaults.date("date"), std::nullopt) << seconds;
    }
}

TEST_F(PreferencesDefaultsTest, WhatIsNoTextIsStoredAsNone) {
    defaults.setString("text", "\xff\xfe");
    EXPECT_EQ(defaults.string("text"), "");
}

TEST_F(PreferencesDefaultsTest, TheProgramsOwnStoresReadBackWhatTheyWrite) {
    ConfigStore store(defaults, "config");
    EXPECT_EQ(store.load(), std::nullopt);
    const Config config{true, {{makeUUID(), Shortcut::fn, {english, ukrainian}}}, {}};
    store.save(config);
    EXPECT_EQ(ConfigStore(defaults, "config").load(), config);
    UpdateStore updates(defaults);
    EXPECT_TRUE(updates.automatic());
    preferences::store("updateAutomatic", cf::string("no"));
    EXPECT_TRUE(updates.automatic()) << "another type counts as none";
}

TEST_F(MacTest, TheInformationDictionaryTellsTextsOnly) {
    preferences::inform("QuillmereUpdateFeed", cf::string("https://example.org/feed.json"));
    preferences::inform("LSUIElement", cf::boolean(true));
    const InfoDictionary bundle;
    EXPECT_EQ(bundle.string("QuillmereUpdateFeed"), "https://example.org/feed.json");
    EXPECT_EQ(bundle.string("LSUIElement"), std::nullopt);
    EXPECT_EQ(bundle.string("CFBundleShortVersionString"), std::nullopt);
}

}  // namespace
}  // namespace quillmere
